#include "tests/win32/stand_in.h"

#include <commctrl.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <new>
#include <utility>

namespace stand_in {
namespace {

struct WindowClass {
  WNDPROC procedure;
  std::size_t extra_bytes;
};

struct Window {
  WNDPROC procedure;
  HWND parent;
  std::vector<std::uint8_t> extra;
  std::string text;
  LONG user_data = 0;
};

// One instance, as the functions of Win32 have no object to hang on. Never
// destroyed: the module's own static objects may still call when the process
// ends.
struct World {
  std::map<std::string, WindowClass> classes{
      {"EDIT", {DefWindowProcA, 0}}, {WC_TREEVIEWA, {TreeViewProcedure, 0}}};
  std::map<HWND, std::shared_ptr<Window>> windows;
  std::uintptr_t last_window = 0x10000;
  std::deque<MSG> messages;
  bool quit_posted = false;
  int quit_code = 0;
  Recorded records;
};

World& TheWorld() {
  static World* const world = new World;
  return *world;
}

// Held by the caller, since the window may be destroyed while it handles a
// message.
std::shared_ptr<Window> FindWindow(HWND handle) {
  const auto found = TheWorld().windows.find(handle);
  return found == TheWorld().windows.end() ? nullptr : found->second;
}

// The four bytes that a GetWindowLong index names; null for an index that the
// window has not, and for no window.
void* WindowLong(Window* window, int index) {
  if (window == nullptr) return nullptr;
  if (index == GWL_WNDPROC) return &window->procedure;
  if (index == GWL_USERDATA) return &window->user_data;
  const auto at = static_cast<unsigned>(index);
  return index >= 0 && at + sizeof(LONG) <= window->extra.size()
             ? &window->extra[at]
             : nullptr;
}

}  // namespace

Recorded& Records() { return TheWorld().records; }

}  // namespace stand_in

using stand_in::FindWindow;
using stand_in::Records;
using stand_in::TheWorld;

// Process.

HMODULE WINAPI GetModuleHandleA(LPCSTR) {
  return reinterpret_cast<HMODULE>(0x400000);
}

void WINAPI RaiseException(DWORD code, DWORD, DWORD count,
                           const ULONG_PTR* arguments) {
  throw stand_in::RaisedException{code, count > 0 ? arguments[0] : 0};
}

DWORD WINAPI GetTickCount() { return Records().ticks; }

// Global memory. A block's handle is its address.

HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T bytes) {
  constexpr SIZE_T kMostBytes =
      0x20000000;  // what a 32-bit process can hope for in one piece
  auto& records = Records();
  const bool fails = records.allocations_to_failure > 0 &&
                     --records.allocations_to_failure == 0;
  void* const address =
      fails || bytes > kMostBytes ? nullptr : std::malloc(bytes + (bytes == 0));
  if (address == nullptr) return nullptr;
  std::memset(address, flags & GMEM_ZEROINIT ? 0 : 0xCD, bytes);
  try {
    records.blocks.insert(address);
  } catch (const std::bad_alloc&) {
    std::free(address);
    return nullptr;
  }
  return address;
}

LPVOID WINAPI GlobalLock(HGLOBAL block) {
  return Records().blocks.count(block) ? block : nullptr;
}

BOOL WINAPI GlobalUnlock(HGLOBAL block) { return GlobalLock(block) != nullptr; }

HGLOBAL WINAPI GlobalHandle(LPCVOID address) {
  return GlobalLock(const_cast<void*>(address));
}

HGLOBAL WINAPI GlobalFree(HGLOBAL block) {
  if (block != nullptr && Records().blocks.erase(block) == 0) {
    std::fprintf(stderr, "GlobalFree: %p is not an allocated block\n", block);
    std::abort();
  }
  std::free(block);
  return nullptr;
}

// Files.

HFILE WINAPI _lcreat(LPCSTR path, int) {
  return ::open(path, O_RDWR | O_CREAT | O_TRUNC, 0666);
}

UINT WINAPI _lwrite(HFILE file, LPCSTR bytes, UINT count) {
  return static_cast<UINT>(::write(file, bytes, count));
}

HFILE WINAPI _lclose(HFILE file) { return ::close(file); }

// Windows.

ATOM WINAPI RegisterClassA(const WNDCLASSA* window_class) {
  const auto extra_bytes = static_cast<std::size_t>(window_class->cbWndExtra);
  return TheWorld()
      .classes
      .insert({window_class->lpszClassName,
               {window_class->lpfnWndProc, extra_bytes}})
      .second;
}

HWND WINAPI CreateWindowExA(DWORD, LPCSTR class_name, LPCSTR text, DWORD, int,
                            int, int, int, HWND parent, HMENU, HINSTANCE,
                            LPVOID) {
  auto& world = TheWorld();
  const auto& window_class = world.classes.at(class_name);
  const auto handle =
      reinterpret_cast<HWND>(world.last_window += 2);  // never used again
  world.windows[handle] = std::make_shared<stand_in::Window>(stand_in::Window{
      window_class.procedure, parent,
      std::vector<std::uint8_t>(window_class.extra_bytes), text});
  return handle;
}

BOOL WINAPI DestroyWindow(HWND handle) {
  if (!FindWindow(handle)) return FALSE;
  auto& windows = TheWorld().windows;
  SendMessageA(handle, WM_DESTROY, 0, 0);
  std::vector<HWND> children;
  for (const auto& [child, window] : windows) {
    if (window->parent == handle) children.push_back(child);
  }
  for (HWND child : children) DestroyWindow(child);
  windows.erase(handle);
  return TRUE;
}

LONG WINAPI GetWindowLongA(HWND handle, int index) {
  LONG value = 0;
  const void* const place =
      stand_in::WindowLong(FindWindow(handle).get(), index);
  if (place != nullptr) std::memcpy(&value, place, sizeof(value));
  return value;
}

LONG WINAPI SetWindowLongA(HWND handle, int index, LONG value) {
  const LONG before = GetWindowLongA(handle, index);
  void* const place = stand_in::WindowLong(FindWindow(handle).get(), index);
  if (place != nullptr) std::memcpy(place, &value, sizeof(value));
  return before;
}

BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text) {
  return static_cast<BOOL>(
      SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)));
}

int WINAPI GetWindowTextA(HWND handle, LPSTR text, int size) {
  const auto window = FindWindow(handle);
  const std::size_t length =
      window->text.copy(text, static_cast<std::size_t>(size - 1));
  text[length] = '\0';
  return static_cast<int>(length);
}

int WINAPI GetWindowTextLengthA(HWND window) {
  return static_cast<int>(FindWindow(window)->text.size());
}

LRESULT WINAPI DefWindowProcA(HWND handle, UINT message, WPARAM,
                              LPARAM lparam) {
  const auto window = FindWindow(handle);
  if (!window || message != WM_SETTEXT) return 0;
  window->text = reinterpret_cast<LPCSTR>(lparam);
  return TRUE;
}

LRESULT WINAPI CallWindowProcA(WNDPROC procedure, HWND window, UINT message,
                               WPARAM wparam, LPARAM lparam) {
  return procedure(window, message, wparam, lparam);
}

LRESULT WINAPI SendMessageA(HWND handle, UINT message, WPARAM wparam,
                            LPARAM lparam) {
  const auto window = FindWindow(handle);
  return window ? window->procedure(handle, message, wparam, lparam) : 0;
}

BOOL WINAPI PostMessageA(HWND window, UINT message, WPARAM wparam,
                         LPARAM lparam) {
  TheWorld().messages.push_back({window, message, wparam, lparam});
  return TRUE;
}

void WINAPI PostQuitMessage(int code) {
  TheWorld().quit_posted = true;
  TheWorld().quit_code = code;
}

BOOL WINAPI PeekMessageA(MSG* message, HWND, UINT, UINT, UINT) {
  auto& world = TheWorld();
  if (!world.messages.empty()) {
    *message = world.messages.front();
    world.messages.pop_front();
    return TRUE;
  }
  // Comes when nothing else waits.
  *message = {nullptr, WM_QUIT, static_cast<WPARAM>(world.quit_code), 0};
  return std::exchange(world.quit_posted, false);
}

BOOL WINAPI TranslateMessage(const MSG*) { return FALSE; }

LRESULT WINAPI DispatchMessageA(const MSG* message) {
  return SendMessageA(message->hwnd, message->message, message->wParam,
                      message->lParam);
}

// The user and the printer.

int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT) {
  Records().boxes.push_back({owner, text, caption});
  if (Records().box_shown) Records().box_shown();
  return IDOK;
}

BOOL WINAPI MessageBeep(UINT) { return TRUE; }

BOOL WINAPI TextOutA(HDC, int x, int y, LPCSTR text, int length) {
  Records().printed += std::to_string(x) + "," + std::to_string(y) + " " +
                       std::string(text, static_cast<unsigned>(length)) + "\n";
  return TRUE;
}

int WINAPI StartPage(HDC) {
  Records().printed += "start page\n";
  return 1;
}

int WINAPI EndPage(HDC) {
  Records().printed += "end page\n";
  return 1;
}
