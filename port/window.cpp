#include <windows.h>
#include <commctrl.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "port/tree_view.h"

namespace port {
namespace {

struct WindowClass {
  WNDPROC procedure;
  int extra_bytes;
};

struct Window {
  WNDPROC procedure;
  HWND parent;
  std::vector<std::uint8_t> extra;
  std::string text;
  LONG_PTR user_data = 0;
};

// One instance, as the functions of Win32 have no object to hang on. Never
// destroyed: static objects may still call when the process ends.
struct Desktop {
  std::map<std::string, WindowClass> classes{
      {"EDIT", {DefWindowProcA, 0}},
      {"STATIC", {DefWindowProcA, 0}},
      {WC_TREEVIEWA, {TreeViewProcedure, kTreeViewExtraBytes}}};
  std::map<HWND, std::shared_ptr<Window>> windows;
  // 32 bits do for it: hosts hand the module a window's number as such.
  std::uint32_t last_window = 0x10000;
};

Desktop& TheDesktop() {
  static auto* const desktop = new Desktop;
  return *desktop;
}

// Held by the caller, since the window may be destroyed while it handles a
// message.
std::shared_ptr<Window> FindWindow(HWND handle) {
  const auto& windows = TheDesktop().windows;
  const auto found = windows.find(handle);
  return found == windows.end() ? nullptr : found->second;
}

// The place that a GetWindowLongPtr index names; null for an index that the
// window has not, and for no window.
void* WindowLong(Window* window, int index) {
  if (window == nullptr) return nullptr;
  if (index == GWLP_WNDPROC) return &window->procedure;
  if (index == GWLP_USERDATA) return &window->user_data;
  const auto at = static_cast<std::size_t>(index);
  return index >= 0 && at + sizeof(LONG_PTR) <= window->extra.size()
             ? &window->extra[at]
             : nullptr;
}

std::string Narrow(LPCWSTR text) {
  std::string narrow;
  for (; *text != L'\0'; ++text) narrow += static_cast<char>(*text);
  return narrow;
}

// WM_GETTEXT's answer: the characters that found room.
LRESULT CopyText(const std::string& text, WPARAM room, char* to) {
  if (room == 0) return 0;
  const std::size_t length = text.copy(to, room - 1);
  to[length] = '\0';
  return static_cast<LRESULT>(length);
}

}  // namespace
}  // namespace port

using port::FindWindow;
using port::TheDesktop;

ATOM WINAPI RegisterClassA(const WNDCLASSA* window_class) {
  return TheDesktop()
      .classes
      .insert({window_class->lpszClassName,
               {window_class->lpfnWndProc, window_class->cbWndExtra}})
      .second;
}

ATOM WINAPI RegisterClassW(const WNDCLASSW* window_class) {
  const std::string name = port::Narrow(window_class->lpszClassName);
  const WNDCLASSA narrow{window_class->lpfnWndProc, window_class->cbWndExtra,
                         window_class->hInstance, name.c_str()};
  return RegisterClassA(&narrow);
}

HWND WINAPI CreateWindowExA(DWORD, LPCSTR class_name, LPCSTR text, DWORD, int,
                            int, int, int, HWND parent, HMENU, HINSTANCE,
                            LPVOID) {
  auto& desktop = TheDesktop();
  const auto& window_class = desktop.classes.at(class_name);
  const auto handle =
      reinterpret_cast<HWND>(std::uintptr_t{desktop.last_window += 2});
  desktop.windows[handle] = std::make_shared<port::Window>(
      port::Window{window_class.procedure, parent,
                   std::vector<std::uint8_t>(
                       static_cast<std::size_t>(window_class.extra_bytes)),
                   text});
  return handle;
}

HWND WINAPI CreateWindowExW(DWORD extended_style, LPCWSTR class_name,
                            LPCWSTR text, DWORD style, int x, int y, int width,
                            int height, HWND parent, HMENU menu,
                            HINSTANCE instance, LPVOID parameter) {
  return CreateWindowExA(extended_style, port::Narrow(class_name).c_str(),
                         port::Narrow(text).c_str(), style, x, y, width, height,
                         parent, menu, instance, parameter);
}

BOOL WINAPI DestroyWindow(HWND handle) {
  if (!FindWindow(handle)) return FALSE;
  auto& windows = TheDesktop().windows;
  SendMessageA(handle, WM_DESTROY, 0, 0);
  std::vector<HWND> children;
  for (const auto& [child, window] : windows) {
    if (window->parent == handle) children.push_back(child);
  }
  for (HWND child : children) DestroyWindow(child);
  windows.erase(handle);
  return TRUE;
}

LONG_PTR WINAPI GetWindowLongPtrA(HWND handle, int index) {
  LONG_PTR value = 0;
  const void* const place = port::WindowLong(FindWindow(handle).get(), index);
  if (place != nullptr) std::memcpy(&value, place, sizeof(value));
  return value;
}

LONG_PTR WINAPI SetWindowLongPtrA(HWND handle, int index, LONG_PTR value) {
  const LONG_PTR before = GetWindowLongPtrA(handle, index);
  void* const place = port::WindowLong(FindWindow(handle).get(), index);
  if (place != nullptr) std::memcpy(place, &value, sizeof(value));
  return before;
}

BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text) {
  return static_cast<BOOL>(
      SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)));
}

LRESULT WINAPI DefWindowProcA(HWND handle, UINT message, WPARAM wparam,
                              LPARAM lparam) {
  const auto window = FindWindow(handle);
  if (!window) return 0;
  switch (message) {
    case WM_SETTEXT:
      window->text = reinterpret_cast<LPCSTR>(lparam);
      return TRUE;
    case WM_GETTEXTLENGTH:
      return static_cast<LRESULT>(window->text.size());
    case WM_GETTEXT:
      return port::CopyText(window->text, wparam,
                            reinterpret_cast<LPSTR>(lparam));
    default:
      return 0;
  }
}

LRESULT WINAPI SendMessageA(HWND handle, UINT message, WPARAM wparam,
                            LPARAM lparam) {
  const auto window = FindWindow(handle);
  return window ? window->procedure(handle, message, wparam, lparam) : 0;
}
