#ifndef TESTS_TEST_DICTIONARY_H_
#define TESTS_TEST_DICTIONARY_H_

#include <fstream>
#include <iterator>
#include <string>

#include "dimse/dicom_dictionary.h"

namespace dicom::testing {

constexpr char kDataDicPath[] = "Data.dic";
constexpr char kUidDicPath[] = "Uid.dic";

// Byte for byte.
inline void WriteFileBytes(const char* path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// "" when there is no such file.
inline std::string FileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A dictionary made of these texts, read through the two files.
class TestDictionary {
 public:
  explicit TestDictionary(const std::string& uid_dic,
                          const std::string& data_dic = "")
      : dictionary_(Read(uid_dic, data_dic)) {}

  const DicomDictionary& Get() const { return dictionary_; }

 private:
  static DicomDictionary Read(const std::string& uid_dic,
                              const std::string& data_dic) {
    WriteFileBytes(kDataDicPath, data_dic);
    WriteFileBytes(kUidDicPath, uid_dic);
    return DicomDictionary();
  }

  DicomDictionary dictionary_;
};

}  // namespace dicom::testing

#endif  // TESTS_TEST_DICTIONARY_H_
