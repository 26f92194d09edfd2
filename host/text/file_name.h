#ifndef HOST_TEXT_FILE_NAME_H_
#define HOST_TEXT_FILE_NAME_H_

#include <filesystem>
#include <string>
#include <string_view>

namespace host {

// File names are UTF-8 wherever they are texts, on a command line or in a
// sentence, and paths where the system is asked for a file.

// Under Wine a name that begins with one slash is the Unix file.
std::filesystem::path PathFromUtf8(std::string_view name);
// Never throws; what Windows has that is no Unicode becomes the replacement
// character, and another system's bytes stay as they are.
std::string Utf8FromPath(const std::filesystem::path& path);

}  // namespace host

#endif  // HOST_TEXT_FILE_NAME_H_
