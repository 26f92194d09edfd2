#ifndef HOST_CAPTURE_CAPTURE_NAMES_H_
#define HOST_CAPTURE_CAPTURE_NAMES_H_

#include <filesystem>
#include <string>
#include <vector>

namespace host {

// A file that is to be read as a capture, or as a part of one.
struct CaptureInput {
  std::filesystem::path path;
  // It was found in a folder, where there may be files of all kinds; else it
  // was asked for.
  bool in_folder = false;
};

struct CaptureInputs {
  std::vector<CaptureInput> files;
  std::vector<std::string> failures;  // one sentence for each name without any
};

// The files that names stand for: a file for itself, a folder for all files in
// it and in its folders, and a name with * or ? that no file has for all files
// and folders that it matches (shells of Windows leave that to the program). A
// file is answered once. Of several names those that stand for nothing are told
// in `failures`; a single name that is no folder and no pattern is answered as
// it is, and fails when it is opened.
CaptureInputs FindCaptures(const std::vector<std::filesystem::path>& names);

}  // namespace host

#endif  // HOST_CAPTURE_CAPTURE_NAMES_H_
