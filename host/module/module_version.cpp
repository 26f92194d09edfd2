#include "host/module/module_version.h"

#include <filesystem>
#include <fstream>

#include "host/text/file_name.h"

namespace host {
namespace {

std::string DictionaryLine(const std::filesystem::path& folder,
                           const char* name) {
  std::ifstream file(folder / name);
  std::size_t lines = 0;
  for (std::string line; std::getline(file, line);) lines += !line.empty();
  return name + (" " + std::to_string(lines)) + " lines\n";
}

}  // namespace

std::string ModuleVersionText(Module& module) {
  const std::int32_t version = module.Version();
  const std::filesystem::path folder = module.DictionaryFolder();
  return Utf8FromPath(module.path()) + " " + std::to_string(version >> 8) + "." +
         std::to_string(version & 0xFF) + "\n" +
         DictionaryLine(folder, "Data.dic") +
         DictionaryLine(folder, "Uid.dic");
}

}  // namespace host
