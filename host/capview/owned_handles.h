#ifndef HOST_CAPVIEW_OWNED_HANDLES_H_
#define HOST_CAPVIEW_OWNED_HANDLES_H_

#include <windows.h>
// After windows.h.
#include <objbase.h>

#include <memory>
#include <type_traits>

namespace host {

// An owner for each kind of Win32 handle that the window has to give back; it
// does so in the way that the kind wants. A handle that somebody else owns,
// such as a control, which its parent destroys, stays a plain HWND, HFONT or
// HDC.

struct GlobalMemoryFree {
  void operator()(HGLOBAL block) const { GlobalFree(block); }
};
// A block that is handed over to the system, or that it has handed over.
using GlobalMemory =
    std::unique_ptr<std::remove_pointer_t<HGLOBAL>, GlobalMemoryFree>;

struct LocalMemoryFree {
  void operator()(void* block) const { LocalFree(block); }
};
// What some functions of the system answer.
template <class T>
using LocalMemory = std::unique_ptr<T, LocalMemoryFree>;

struct TaskMemoryFree {
  void operator()(void* block) const { CoTaskMemFree(block); }
};
// What the shell answers.
template <class T>
using TaskMemory = std::unique_ptr<T, TaskMemoryFree>;

struct ClipboardClose {
  void operator()(HWND) const { CloseClipboard(); }
};
using OpenedClipboard =
    std::unique_ptr<std::remove_pointer_t<HWND>, ClipboardClose>;
// For `owner`, until the answer goes; null while another program has it.
inline OpenedClipboard OpenClipboardFor(HWND owner) {
  return OpenedClipboard(OpenClipboard(owner) ? owner : nullptr);
}

struct ObjectDelete {
  void operator()(HGDIOBJ object) const { DeleteObject(object); }
};
// Must not be selected into a device any more when they go.
using Font = std::unique_ptr<std::remove_pointer_t<HFONT>, ObjectDelete>;
using Brush = std::unique_ptr<std::remove_pointer_t<HBRUSH>, ObjectDelete>;
using Pen = std::unique_ptr<std::remove_pointer_t<HPEN>, ObjectDelete>;
using Bitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, ObjectDelete>;

struct DeviceDelete {
  void operator()(HDC device) const { DeleteDC(device); }
};
using Printer = std::unique_ptr<std::remove_pointer_t<HDC>, DeviceDelete>;
// To draw into a bitmap that is selected into it.
using MemoryDevice = std::unique_ptr<std::remove_pointer_t<HDC>, DeviceDelete>;

struct DeviceRelease {
  HWND window;
  void operator()(HDC device) const { ReleaseDC(window, device); }
};
using WindowDevice = std::unique_ptr<std::remove_pointer_t<HDC>, DeviceRelease>;
// To draw into the window's client area, or to measure; null: the screen. To be
// let go before the next message is waited for.
inline WindowDevice DeviceOf(HWND window) {
  return WindowDevice(GetDC(window), DeviceRelease{window});
}

struct ObjectDeselect {
  HDC device;
  void operator()(HGDIOBJ before) const { SelectObject(device, before); }
};
using SelectedObject =
    std::unique_ptr<std::remove_pointer_t<HGDIOBJ>, ObjectDeselect>;
// The device draws with the object until the answer goes, which has to be
// before either of the two does.
inline SelectedObject Select(HDC device, HGDIOBJ object) {
  return SelectedObject(SelectObject(device, object), ObjectDeselect{device});
}

}  // namespace host

#endif  // HOST_CAPVIEW_OWNED_HANDLES_H_
