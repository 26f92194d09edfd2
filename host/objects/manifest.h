#ifndef HOST_OBJECTS_MANIFEST_H_
#define HOST_OBJECTS_MANIFEST_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/objects/message_data.h"
#include "host/text/time_text.h"

namespace host {

// What is told of one exported data set: a row of the manifest. Texts are
// UTF-8; what is not known is empty.
struct ExportedObject {
  std::string file;  // its name in the folder; empty when nothing was written
  std::size_t connection = 0;      // both count from 0
  std::optional<std::size_t> row;  // in the module's message list
  std::string command;             // "C-STORE-RQ"
  std::uint32_t first_frame = 0;   // as their file counts them
  std::uint32_t last_frame = 0;
  std::string first_file;  // of these frames; empty if the capture is one file
  std::string last_file;
  Nanoseconds first_time = 0;
  Nanoseconds last_time = 0;
  std::string calling_ae_title;
  std::string called_ae_title;
  std::string sop_class;
  std::string sop_class_name;
  std::string sop_instance;
  std::string transfer_syntax;
  std::string transfer_syntax_name;
  std::string transfer_syntax_origin;
  std::uint64_t bytes = 0;        // of the data set as sent
  std::string sha256;             // of these bytes
  std::string incomplete;         // why it is; empty when it is whole
  std::vector<DataRange> filled;  // lost bytes that were filled with zero
  std::string status;             // of the answer: "0000h Success"
  std::string same_content_as;    // an earlier file with the same UID and bytes
};

// A line with the columns' names, then one a row, RFC 4180.
std::string ManifestCsv(const std::vector<ExportedObject>& objects);
// An array with an object a row.
std::string ManifestJson(const std::vector<ExportedObject>& objects);

}  // namespace host

#endif  // HOST_OBJECTS_MANIFEST_H_
