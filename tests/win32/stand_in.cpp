#include "stand_in.h"

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
#include <unordered_map>
#include <utility>

#include "tree_view.h"

namespace stand_in {
namespace {

struct WindowClass {
  WNDPROC procedure;
  std::size_t extra_bytes;
};

struct Window {
  WNDPROC procedure;
  HWND parent;
  LONG style;
  LONG user_data = 0;
  std::vector<std::uint8_t> extra;
  std::string text;
};

struct GlobalBlock {
  SIZE_T size;
  bool moveable;
};

// One instance, as the functions of Win32 have no object to hang on. Never
// destroyed: the module's own static objects may still call when the process
// ends.
struct World {
  World();

  DWORD last_error = 0;
  DWORD ticks = 1000;
  DWORD tick_step = 0;
  std::map<std::string, WindowClass> classes;
  std::map<HWND, std::shared_ptr<Window>> windows;
  std::uintptr_t last_window = 0x10000;
  std::deque<MSG> messages;
  bool quit_posted = false;
  int quit_code = 0;
  std::unordered_map<const void*, GlobalBlock> blocks;  // by address
  unsigned allocations_to_failure = 0;
  Recorded records;
};

World& TheWorld() {
  static World* const world = new World;
  return *world;
}

World::World() {
  classes["EDIT"] = {DefWindowProcA, 0};
  classes[WC_TREEVIEWA] = {TreeViewProcedure, 0};
}

template <class T>
T Fail(DWORD error, T answer) {
  TheWorld().last_error = error;
  return answer;
}

// Held by the caller, since the window may be destroyed while it handles a
// message.
std::shared_ptr<Window> FindWindow(HWND handle) {
  const auto found = TheWorld().windows.find(handle);
  if (found != TheWorld().windows.end()) return found->second;
  return Fail(ERROR_INVALID_WINDOW_HANDLE, std::shared_ptr<Window>());
}

// The four bytes that a GetWindowLong index names; null for an index that the
// window has not.
void* WindowLong(Window& window, int index) {
  switch (index) {
    case GWL_WNDPROC:
      return &window.procedure;
    case GWL_STYLE:
      return &window.style;
    case GWL_USERDATA:
      return &window.user_data;
  }
  if (index < 0 ||
      static_cast<unsigned>(index) + sizeof(LONG) > window.extra.size()) {
    return Fail(ERROR_INVALID_INDEX, nullptr);
  }
  return &window.extra[static_cast<unsigned>(index)];
}

// A moveable block's handle is not its address, but near it.
constexpr std::uintptr_t kMoveable = 2;

void* BlockAddress(HGLOBAL handle) {
  return reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(handle) &
                                 ~kMoveable);
}

}  // namespace

Recorded& Records() { return TheWorld().records; }

void SetTicks(DWORD now, DWORD step) {
  TheWorld().ticks = now;
  TheWorld().tick_step = step;
}

void AdvanceTicks(DWORD milliseconds) { TheWorld().ticks += milliseconds; }

std::size_t GlobalBlocks() { return TheWorld().blocks.size(); }

void FreeGlobalBlocks() {
  for (const auto& [address, block] : TheWorld().blocks) {
    std::free(const_cast<void*>(address));
  }
  TheWorld().blocks.clear();
}

void FailGlobalAlloc(unsigned count) {
  TheWorld().allocations_to_failure = count;
}

}  // namespace stand_in

using stand_in::FindWindow;
using stand_in::TheWorld;

// Process.

void WINAPI SetLastError(DWORD code) { TheWorld().last_error = code; }

DWORD WINAPI GetLastError() { return TheWorld().last_error; }

HMODULE WINAPI GetModuleHandleA(LPCSTR name) {
  return name == nullptr ? reinterpret_cast<HMODULE>(0x400000) : nullptr;
}

BOOL WINAPI DisableThreadLibraryCalls(HMODULE) { return TRUE; }

void WINAPI RaiseException(DWORD code, DWORD, DWORD count,
                           const ULONG_PTR* arguments) {
  throw stand_in::RaisedException{code, count > 0 ? arguments[0] : 0};
}

DWORD WINAPI GetTickCount() {
  const DWORD now = TheWorld().ticks;
  TheWorld().ticks += TheWorld().tick_step;
  return now;
}

// Global memory.

HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T bytes) {
  constexpr SIZE_T kMostBytes =
      0x20000000;  // what a 32-bit process can hope for in one piece
  auto& world = TheWorld();
  const bool fails =
      world.allocations_to_failure > 0 && --world.allocations_to_failure == 0;
  void* const address =
      fails || bytes > kMostBytes ? nullptr : std::malloc(bytes + (bytes == 0));
  if (address == nullptr)
    return stand_in::Fail(ERROR_NOT_ENOUGH_MEMORY, nullptr);
  std::memset(address, flags & GMEM_ZEROINIT ? 0 : 0xCD, bytes);
  const bool moveable = flags & GMEM_MOVEABLE;
  try {
    world.blocks[address] = {bytes, moveable};
  } catch (const std::bad_alloc&) {
    std::free(address);
    return stand_in::Fail(ERROR_NOT_ENOUGH_MEMORY, nullptr);
  }
  return static_cast<char*>(address) + (moveable ? stand_in::kMoveable : 0);
}

LPVOID WINAPI GlobalLock(HGLOBAL block) {
  void* const address = stand_in::BlockAddress(block);
  return TheWorld().blocks.count(address) ? address : nullptr;
}

BOOL WINAPI GlobalUnlock(HGLOBAL block) { return GlobalLock(block) != nullptr; }

HGLOBAL WINAPI GlobalHandle(LPCVOID address) {
  const auto found = TheWorld().blocks.find(address);
  if (found == TheWorld().blocks.end()) return nullptr;
  return static_cast<char*>(const_cast<void*>(address)) +
         (found->second.moveable ? stand_in::kMoveable : 0);
}

HGLOBAL WINAPI GlobalFree(HGLOBAL block) {
  if (block == nullptr) return nullptr;
  void* const address = stand_in::BlockAddress(block);
  if (TheWorld().blocks.erase(address) == 0) {
    std::fprintf(stderr, "GlobalFree: %p is not an allocated block\n", block);
    std::abort();
  }
  std::free(address);
  return nullptr;
}

// Texts and files.

int WINAPI lstrlenA(LPCSTR text) {
  return text ? static_cast<int>(std::strlen(text)) : 0;
}

LPSTR WINAPI lstrcpyA(LPSTR to, LPCSTR from) { return std::strcpy(to, from); }

LPSTR WINAPI lstrcatA(LPSTR to, LPCSTR from) { return std::strcat(to, from); }

int wsprintfA(LPSTR to, LPCSTR format, ...) {
  constexpr std::size_t kMostBytes = 1024;  // the platform's own limit
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(to, kMostBytes, format, arguments);
  va_end(arguments);
  return length;
}

HFILE WINAPI _lcreat(LPCSTR path, int) {
  return ::open(path, O_RDWR | O_CREAT | O_TRUNC, 0666);
}

HFILE WINAPI _lopen(LPCSTR path, int mode) {
  constexpr int kFlags[] = {O_RDONLY, O_WRONLY, O_RDWR};
  return ::open(path, kFlags[mode % 3]);
}

UINT WINAPI _lread(HFILE file, LPVOID bytes, UINT count) {
  return static_cast<UINT>(::read(file, bytes, count));
}

UINT WINAPI _lwrite(HFILE file, LPCSTR bytes, UINT count) {
  return static_cast<UINT>(::write(file, bytes, count));
}

HFILE WINAPI _lclose(HFILE file) {
  return ::close(file) == 0 ? 0 : HFILE_ERROR;
}

// Windows.

ATOM WINAPI RegisterClassA(const WNDCLASSA* window_class) {
  auto& classes = TheWorld().classes;
  const bool added =
      classes
          .insert({window_class->lpszClassName,
                   {window_class->lpfnWndProc,
                    static_cast<std::size_t>(window_class->cbWndExtra)}})
          .second;
  if (!added) return stand_in::Fail(ERROR_CLASS_ALREADY_EXISTS, ATOM{0});
  return static_cast<ATOM>(0xC000 + classes.size());
}

HWND WINAPI CreateWindowExA(DWORD, LPCSTR class_name, LPCSTR text, DWORD style,
                            int, int, int, int, HWND parent, HMENU, HINSTANCE,
                            LPVOID) {
  auto& world = TheWorld();
  const auto found = world.classes.find(class_name);
  if (found == world.classes.end()) {
    return stand_in::Fail(ERROR_CANNOT_FIND_WND_CLASS, HWND{nullptr});
  }
  auto window = std::make_shared<stand_in::Window>();
  window->procedure = found->second.procedure;
  window->parent = parent;
  window->style = static_cast<LONG>(style);
  window->extra.resize(found->second.extra_bytes);
  window->text = text ? text : "";
  const auto handle =
      reinterpret_cast<HWND>(world.last_window += 2);  // never used again
  world.windows[handle] = std::move(window);
  SendMessageA(handle, WM_CREATE, 0, 0);
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

BOOL WINAPI IsWindow(HWND handle) {
  return TheWorld().windows.count(handle) != 0;
}

LONG WINAPI GetWindowLongA(HWND handle, int index) {
  const auto window = FindWindow(handle);
  void* const place = window ? stand_in::WindowLong(*window, index) : nullptr;
  LONG value = 0;
  if (place != nullptr) std::memcpy(&value, place, sizeof(value));
  return value;
}

LONG WINAPI SetWindowLongA(HWND handle, int index, LONG value) {
  const LONG before = GetWindowLongA(handle, index);
  const auto window = FindWindow(handle);
  void* const place = window ? stand_in::WindowLong(*window, index) : nullptr;
  if (place != nullptr) std::memcpy(place, &value, sizeof(value));
  return before;
}

BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text) {
  return static_cast<BOOL>(
      SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)));
}

int WINAPI GetWindowTextA(HWND window, LPSTR text, int size) {
  return static_cast<int>(SendMessageA(window, WM_GETTEXT,
                                       static_cast<WPARAM>(size),
                                       reinterpret_cast<LPARAM>(text)));
}

int WINAPI GetWindowTextLengthA(HWND window) {
  return static_cast<int>(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0));
}

LRESULT WINAPI DefWindowProcA(HWND handle, UINT message, WPARAM wparam,
                              LPARAM lparam) {
  const auto window = FindWindow(handle);
  if (!window) return 0;
  switch (message) {
    case WM_SETTEXT:
      window->text = lparam ? reinterpret_cast<LPCSTR>(lparam) : "";
      return TRUE;
    case WM_GETTEXTLENGTH:
      return static_cast<LRESULT>(window->text.size());
    case WM_GETTEXT: {
      if (wparam == 0) return 0;
      const std::size_t length =
          window->text.copy(reinterpret_cast<LPSTR>(lparam), wparam - 1);
      reinterpret_cast<LPSTR>(lparam)[length] = '\0';
      return static_cast<LRESULT>(length);
    }
    case WM_CLOSE:
      DestroyWindow(handle);
      return 0;
  }
  return 0;
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
  if (window != nullptr && !FindWindow(window)) return FALSE;
  TheWorld().messages.push_back(
      {window, message, wparam, lparam, TheWorld().ticks, {0, 0}});
  return TRUE;
}

void WINAPI PostQuitMessage(int code) {
  TheWorld().quit_posted = true;
  TheWorld().quit_code = code;
}

BOOL WINAPI PeekMessageA(MSG* message, HWND window, UINT first, UINT last,
                         UINT remove) {
  auto& world = TheWorld();
  for (auto it = world.messages.begin(); it != world.messages.end(); ++it) {
    if (window != nullptr && it->hwnd != window) continue;
    if ((first != 0 || last != 0) &&
        (it->message < first || it->message > last))
      continue;
    *message = *it;
    if (remove & PM_REMOVE) world.messages.erase(it);
    return TRUE;
  }
  if (!world.quit_posted) return FALSE;
  // Comes when nothing else waits, whatever the filter.
  *message = {nullptr, WM_QUIT,     static_cast<WPARAM>(world.quit_code),
              0,       world.ticks, {0, 0}};
  if (remove & PM_REMOVE) world.quit_posted = false;
  return TRUE;
}

BOOL WINAPI TranslateMessage(const MSG*) { return FALSE; }

LRESULT WINAPI DispatchMessageA(const MSG* message) {
  return SendMessageA(message->hwnd, message->message, message->wParam,
                      message->lParam);
}

// The user and the printer.

int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
  auto& records = stand_in::Records();
  records.boxes.push_back({owner, text, caption, type});
  if (records.box_shown) records.box_shown();
  return IDOK;
}

BOOL WINAPI MessageBeep(UINT) {
  ++stand_in::Records().beeps;
  return TRUE;
}

BOOL WINAPI TextOutA(HDC, int x, int y, LPCSTR text, int length) {
  stand_in::Records().printer.push_back(
      std::to_string(x) + "," + std::to_string(y) + " " +
      std::string(text, static_cast<unsigned>(length)));
  return TRUE;
}

int WINAPI StartPage(HDC) {
  stand_in::Records().printer.push_back("start page");
  return 1;
}

int WINAPI EndPage(HDC) {
  stand_in::Records().printer.push_back("end page");
  return 1;
}
