#include "host/capview/pane_sizes.h"

#include <windowsx.h>

#include <algorithm>
#include <utility>

namespace host {

PaneSizes::PaneSizes(HWND window, Panes& panes, const Choice& choice)
    : window_(window), panes_(panes), choice_(choice) {
  MakeFonts();
}

// The old fonts go when no control has them any more.
void PaneSizes::MakeFonts() {
  auto fonts = std::make_unique<UiFonts>(choice_.font_points, DpiOf(window_));
  panes_.SetFonts(*fonts);
  fonts_ = std::move(fonts);
}

PaneLayout PaneSizes::Layout() const {
  RECT area;
  GetClientRect(window_, &area);
  return PaneLayout({area.right, area.bottom - panes_.status.Height()},
                    fonts_->dpi, choice_.shares,
                    {panes_.findings.HeightIn(area.right),
                     panes_.times.Height(), panes_.tabs.Height()});
}

void PaneSizes::Place() {
  if (IsIconic(window_)) return;
  panes_.status.Place();
  panes_.Place(Layout());
}

void PaneSizes::ChangeDpi() { MakeFonts(); }

void PaneSizes::ChangeFont(int by_points) {
  choice_.font_points = std::clamp(choice_.font_points + by_points,
                                   Choice::kLeastPoints, Choice::kMostPoints);
  MakeFonts();
  Place();
}

void PaneSizes::MoveSplitter(Splitter splitter, int by_percent) {
  choice_.shares.Set(splitter, choice_.shares.Of(splitter) + by_percent);
  Place();
}

std::optional<LRESULT> PaneSizes::AnswerMouse(UINT message, LPARAM data) {
  const POINT point{GET_X_LPARAM(data), GET_Y_LPARAM(data)};
  switch (message) {
    case WM_SETCURSOR:
      if (LOWORD(data) != HTCLIENT || !ShowsCursor()) return {};
      return TRUE;
    case WM_LBUTTONDOWN:
      dragged_ = Layout().SplitterAt(point);
      if (dragged_) SetCapture(window_);
      return 0;
    case WM_MOUSEMOVE:
      if (dragged_) {
        choice_.shares.Set(*dragged_, Layout().ShareAt(*dragged_, point));
        Place();
      }
      return 0;
    case WM_LBUTTONUP:
      dragged_.reset();
      ReleaseCapture();
      return 0;
    case WM_CAPTURECHANGED:
      dragged_.reset();
      return 0;
    default:
      return {};
  }
}

bool PaneSizes::ShowsCursor() const {
  POINT point;
  GetCursorPos(&point);
  ScreenToClient(window_, &point);
  const auto splitter = Layout().SplitterAt(point);
  if (!splitter) return false;
  SetCursor(LoadCursorW(
      nullptr, *splitter == Splitter::kBelowList ? IDC_SIZENS : IDC_SIZEWE));
  return true;
}

}  // namespace host
