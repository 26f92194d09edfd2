#ifndef HOST_OBJECTS_FILE_META_H_
#define HOST_OBJECTS_FILE_META_H_

#include <cstdint>
#include <string>
#include <vector>

namespace host {

// What a DICOM file says about itself before its data set.
struct FileMeta {
  std::string sop_class;
  std::string sop_instance;
  std::string transfer_syntax;
  std::string source_ae_title;  // who sent the object; empty when not known
};

// The preamble of zeros, "DICM" and the file meta information, DICOM PS3.10
// section 7.1, with this program as the implementation.
std::vector<std::uint8_t> FileHead(const FileMeta& meta);

}  // namespace host

#endif  // HOST_OBJECTS_FILE_META_H_
