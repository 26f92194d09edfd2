#include "host/module/window_text.h"

namespace host {

std::wstring WideTextOf(HWND window) {
  const auto room =
      static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) +
      1;
  std::wstring text(room, L'\0');
  text.resize(static_cast<std::size_t>(SendMessageW(
      window, WM_GETTEXT, room, reinterpret_cast<LPARAM>(text.data()))));
  return text;
}

}  // namespace host
