#ifndef HOST_CAPVIEW_UI_FONTS_H_
#define HOST_CAPVIEW_UI_FONTS_H_

#include <windows.h>

#include <string>

#include "host/capview/owned_handles.h"

namespace host {

// Of a selection in a list or tree that has not the focus. The system's own
// colour for it can hardly be told from white.
inline constexpr COLORREF kRestingText = RGB(0, 0, 0);
inline constexpr COLORREF kRestingGround = RGB(182, 200, 222);

inline constexpr int kUsualPoints = 9;

// Dots per inch of the screen that the window is on; null: of the first screen.
unsigned DpiOf(HWND window);
// Pixels at 96 dots per inch, in pixels at `dpi`.
int Scaled(int pixels, unsigned dpi);

// In the device's font, in pixels.
SIZE SizeOfText(HDC device, const std::wstring& text);

// For texts in columns; of a screen or a printer with so many dots per inch.
Font MakeFixedFont(int points, unsigned dpi);

// The fonts of the window. The controls that were given them must get others
// before these go.
struct UiFonts {
  // `points` is the size of what the panes show, `dpi` the screen's.
  UiFonts(int points, unsigned dpi);

  // What surrounds the panes keeps the system's size.
  Font chrome;
  Font pane;
  Font pane_bold;
  Font fixed;
  unsigned dpi;
  // Of widths that go with the panes' texts: 96 where a pixel is 1/96 inch and
  // the panes have their usual font.
  unsigned text_scale;
};

}  // namespace host

#endif  // HOST_CAPVIEW_UI_FONTS_H_
