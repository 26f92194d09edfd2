#include "host/module/window_handle.h"

#include "host/text/failure.h"
#include "host/text/system_error.h"

namespace host {

WindowHandle MakeHiddenWindow(const wchar_t* class_name, DWORD style,
                              HWND parent) {
  constexpr int kWidth = 400, kHeight = 300;  // a control measures its lines
  WindowHandle window(CreateWindowW(
      class_name, L"", parent == nullptr ? style | WS_POPUP : style | WS_CHILD,
      0, 0, kWidth, kHeight, parent, nullptr, GetModuleHandleW(nullptr),
      nullptr));
  if (!window) {
    throw Failure("No window can be made (" + SystemErrorText(GetLastError()) +
                  "): under Wine, start with a display, for example by "
                  "tools/with-wine.sh.");
  }
  return window;
}

}  // namespace host
