#include "host/module/window_text.h"

namespace host {

std::string AnsiTextOf(HWND window) {
  const auto room =
      static_cast<std::size_t>(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0)) +
      1;
  std::string text(room, '\0');
  text.resize(static_cast<std::size_t>(SendMessageA(
      window, WM_GETTEXT, room, reinterpret_cast<LPARAM>(text.data()))));
  return text;
}

}  // namespace host
