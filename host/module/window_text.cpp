#include "host/module/window_text.h"

namespace host {
namespace {

using Send = LRESULT(WINAPI*)(HWND, UINT, WPARAM, LPARAM);

template <class Text>
Text TextOf(HWND window, Send send) {
  const auto room =
      static_cast<std::size_t>(send(window, WM_GETTEXTLENGTH, 0, 0)) + 1;
  Text text(room, {});
  text.resize(static_cast<std::size_t>(
      send(window, WM_GETTEXT, room, reinterpret_cast<LPARAM>(text.data()))));
  return text;
}

}  // namespace

std::string AnsiTextOf(HWND window) {
  return TextOf<std::string>(window, SendMessageA);
}

std::wstring WideTextOf(HWND window) {
  return TextOf<std::wstring>(window, SendMessageW);
}

}  // namespace host
