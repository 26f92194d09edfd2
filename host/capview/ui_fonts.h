#ifndef HOST_CAPVIEW_UI_FONTS_H_
#define HOST_CAPVIEW_UI_FONTS_H_

#include <windows.h>

#include <memory>

namespace host {

struct FontDelete {
  void operator()(HFONT font) const { DeleteObject(font); }
};
using Font = std::unique_ptr<std::remove_pointer_t<HFONT>, FontDelete>;

// Of a selection in a list or tree that has not the focus. The system's own
// colour for it can hardly be told from white.
inline constexpr COLORREF kRestingText = RGB(0, 0, 0);
inline constexpr COLORREF kRestingGround = RGB(182, 200, 222);

// Dots per inch of the screen that the window is on.
unsigned DpiOf(HWND window);

// For texts in columns; of a screen or a printer with so many dots per inch.
Font MakeFixedFont(int points, unsigned dpi);

// The fonts of the window, made for a screen and a size.
struct UiFonts {
  UiFonts(int points, unsigned dpi);

  Font chrome;  // what surrounds the panes keeps the system's size
  Font pane;
  Font pane_bold;
  Font fixed;
};

}  // namespace host

#endif  // HOST_CAPVIEW_UI_FONTS_H_
