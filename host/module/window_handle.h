#ifndef HOST_MODULE_WINDOW_HANDLE_H_
#define HOST_MODULE_WINDOW_HANDLE_H_

#include <windows.h>

#include <memory>
#include <type_traits>

namespace host {

struct WindowDestroyer {
  void operator()(HWND window) const { DestroyWindow(window); }
};
// A window, with its children, that goes with its owner; on the thread that
// made it.
using WindowHandle =
    std::unique_ptr<std::remove_pointer_t<HWND>, WindowDestroyer>;

// Makes a window that is not shown; one without a parent is a pop-up. Throws
// Failure where there is no display.
WindowHandle MakeHiddenWindow(const wchar_t* class_name, DWORD style,
                              HWND parent = nullptr);

}  // namespace host

#endif  // HOST_MODULE_WINDOW_HANDLE_H_
