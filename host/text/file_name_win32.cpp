#include <windows.h>

#include "host/text/file_name.h"
#include "host/text/wide_text.h"

namespace host {

std::filesystem::path PathFromUtf8(std::string_view name) {
  std::wstring wide = WideFromUtf8(name);
  const bool unix_root =
      name.size() > 1 && name[0] == '/' && name[1] != '/' && name[1] != '\\';
  const bool wine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"),
                                   "wine_get_version") != nullptr;
  if (unix_root && wine) wide.insert(0, L"Z:");  // Wine's drive for "/"
  return wide;
}

std::string Utf8FromPath(const std::filesystem::path& path) {
  return Utf8FromWide(path.native());
}

}  // namespace host
