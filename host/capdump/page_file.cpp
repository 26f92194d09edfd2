#include "host/capdump/page_file.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <span>

#include "host/capdump/options.h"
#include "host/objects/new_file.h"
#include "host/text/file_name.h"

namespace host {

void WritePageFile(const std::string& name,
                   const std::function<void(const Sink&)>& write) {
  const std::filesystem::path path = PathFromUtf8(name);
  std::string extension = Utf8FromPath(path.extension());
  std::ranges::transform(extension, extension.begin(), [](unsigned char c) {
    return static_cast<char>(std::tolower(c));
  });
  if (extension != ".html" && extension != ".htm") {
    throw UsageError("The page cannot be named " + name +
                     ": name a file that ends in .html with --report.");
  }
  const std::filesystem::path folder =
      path.has_parent_path() ? path.parent_path() : ".";
  NewFile file(folder);
  write([&file](std::string_view text) {
    file.Write(
        {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  });
  file.ReplaceAs(path.filename());
}

}  // namespace host
