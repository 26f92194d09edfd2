#ifndef HOST_OBJECTS_OBJECT_NAME_H_
#define HOST_OBJECTS_OBJECT_NAME_H_

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "host/objects/new_file.h"

namespace host {

// A text as a file name that every system takes, without its extension: other
// characters than letters, digits, ".", "-" and "_" become "_", names that
// Windows keeps for devices get a "_" before them, and long ones are cut.
std::string SafeFileName(std::string_view text);

// Gives files their names in one folder, each another one.
class FileNames {
 public:
  // Keeps the file as `name` with this extension, or as "name-2", "name-3"
  // where there is a file of the name. Answers the name. Throws Failure as
  // NewFile does. Many files of one name cost no more than others.
  std::string Keep(NewFile& file, const std::string& name,
                   std::string_view extension);

 private:
  std::map<std::string, std::uint32_t> next_;  // number to try, by name
};

}  // namespace host

#endif  // HOST_OBJECTS_OBJECT_NAME_H_
