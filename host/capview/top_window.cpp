#include "host/capview/top_window.h"

#include <algorithm>

#include "host/capview/resource.h"
#include "host/capview/ui_fonts.h"
#include "host/text/failure.h"

namespace host {
namespace {

constexpr wchar_t kClassName[] = L"DicomCaptureView";
constexpr SIZE kUsualSize{1180, 760};  // at 96 dpi

void RegisterClassOnce(WNDPROC procedure) {
  WNDCLASSEXW window_class{};
  window_class.cbSize = sizeof window_class;
  window_class.lpfnWndProc = procedure;
  window_class.hInstance = GetModuleHandleW(nullptr);
  window_class.hIcon =
      LoadIconW(window_class.hInstance, MAKEINTRESOURCEW(IDI_CAPVIEW));
  window_class.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  window_class.hbrBackground =
      reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
  window_class.lpszMenuName = MAKEINTRESOURCEW(IDR_MENU);
  window_class.lpszClassName = kClassName;
  RegisterClassExW(&window_class);  // fails harmlessly from the second time on
}

// The usual size where the screen has room for it.
SIZE FirstSize() {
  RECT area{};
  SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
  const unsigned dpi = DpiOf(nullptr);
  return {std::min<LONG>(Scaled(kUsualSize.cx, dpi), area.right - area.left),
          std::min<LONG>(Scaled(kUsualSize.cy, dpi), area.bottom - area.top)};
}

}  // namespace

WindowHandle MakeTopWindow(WNDPROC procedure, const RECT& place) {
  RegisterClassOnce(procedure);
  const bool placed = !IsRectEmpty(&place);
  const SIZE kept{place.right - place.left, place.bottom - place.top};
  const SIZE size = placed ? kept : FirstSize();
  WindowHandle window(CreateWindowExW(
      WS_EX_ACCEPTFILES | WS_EX_CONTROLPARENT, kClassName, L"capview",
      WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
      placed ? place.left : CW_USEDEFAULT, placed ? place.top : CW_USEDEFAULT,
      size.cx, size.cy, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr));
  if (!window) {
    throw Failure("No window can be made: start with a display.");
  }
  return window;
}

}  // namespace host
