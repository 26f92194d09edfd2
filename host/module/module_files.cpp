#include "host/module/module_files.h"

#include <filesystem>
#include <fstream>

#include "host/text/failure.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

std::string DictionaryLine(const std::wstring& folder, const wchar_t* name) {
  std::ifstream file(std::filesystem::path(folder + L"\\" + name));
  std::size_t lines = 0;
  for (std::string line; std::getline(file, line);) lines += !line.empty();
  return Utf8FromWide(name) + " " + std::to_string(lines) + " lines\n";
}

}  // namespace

std::wstring ModuleBesideProgram() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(),
                                 static_cast<DWORD>(path.size())));
  return path.substr(0, path.find_last_of(L'\\')) + L"\\DicomDecode.dll";
}

std::string ModuleVersionText(Module& module) {
  std::int32_t version = 0;
  if (const auto failure = module.Version(&version)) {
    throw Failure(Utf8FromWide(module.Path()) + " does not tell its version (" +
                  failure->text + "); name another file with --module");
  }
  return Utf8FromWide(module.Path()) + " " + std::to_string(version >> 8) +
         "." + std::to_string(version & 0xFF) + "\n" +
         DictionaryLine(module.Folder(), L"Data.dic") +
         DictionaryLine(module.Folder(), L"Uid.dic");
}

}  // namespace host
