#include "host/text/file_name.h"

namespace host {

std::filesystem::path PathFromUtf8(std::string_view name) { return name; }

std::string Utf8FromPath(const std::filesystem::path& path) {
  return path.native();
}

}  // namespace host
