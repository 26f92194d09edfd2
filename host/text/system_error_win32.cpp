#include <windows.h>

#include "host/text/system_error.h"
#include "host/text/wide_text.h"

namespace host {

std::string SystemErrorText(unsigned long error) {
  wchar_t text[256] = L"";
  DWORD length = FormatMessageW(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
      error, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), text, 256, nullptr);
  while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) {
    --length;
  }
  if (length == 0) return "error " + std::to_string(error);
  return Utf8FromWide({text, length});
}

}  // namespace host
