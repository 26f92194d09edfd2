#include "host/capview/status_line.h"

#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <algorithm>

#include "host/capview/resource.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr int kProgressPart = 1;
constexpr int kRowsPart = 2;
constexpr int kProgressWidth = 170;  // at 96 dpi, as the two below
constexpr int kRowsWidth = 190;
constexpr int kBytesWidth = 230;

}  // namespace

StatusLine::StatusLine(HWND parent)
    : window_(
          CreateWindowW(STATUSCLASSNAMEW, L"",
                        WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP | SBARS_TOOLTIPS,
                        0, 0, 0, 0, parent, reinterpret_cast<HMENU>(IDC_STATUS),
                        GetModuleHandleW(nullptr), nullptr)) {
  bar_ = CreateWindowW(PROGRESS_CLASSW, L"", WS_CHILD, 0, 0, 0, 0, window_,
                       nullptr, GetModuleHandleW(nullptr), nullptr);
}

int StatusLine::Height() const {
  RECT place;
  GetWindowRect(window_, &place);
  return place.bottom - place.top;
}

void StatusLine::SetFont(HFONT font) {
  SendMessageW(window_, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
}

void StatusLine::Place(unsigned dpi) {
  dpi_ = dpi;
  SendMessageW(window_, WM_SIZE, 0, 0);
  PlaceParts();
}

// The sentence takes the place of the progress bar when there is none.
void StatusLine::PlaceParts() {
  RECT area;
  GetClientRect(window_, &area);
  const auto scaled = [this](int width) {
    return MulDiv(width, static_cast<int>(dpi_), 96);
  };
  const bool counts = !shown_[kRowsPart].empty();  // a capture is open
  const int right = area.right;
  const int bytes = counts ? std::max(right - scaled(kBytesWidth), 0) : right;
  const int rows = counts ? std::max(bytes - scaled(kRowsWidth), 0) : right;
  const int text = std::max(rows - (percent_ ? scaled(kProgressWidth) : 0), 0);
  const int ends[kParts] = {text, rows, bytes, -1};
  SendMessageW(window_, SB_SETPARTS, kParts, reinterpret_cast<LPARAM>(ends));
  RECT place;
  SendMessageW(window_, SB_GETRECT, kProgressPart,
               reinterpret_cast<LPARAM>(&place));
  const int number = scaled(50);  // the percentage stands left of the bar
  MoveWindow(bar_, place.left + number, place.top + 2,
             place.right - place.left - number - 4,
             place.bottom - place.top - 4, TRUE);
}

void StatusLine::SetPart(int part, const std::string& utf8) {
  if (shown_[part] == utf8) return;
  const bool comes_or_goes = shown_[part].empty() != utf8.empty();
  shown_[part] = utf8;
  if (part == kRowsPart && comes_or_goes) PlaceParts();
  const std::wstring text = WideFromUtf8(utf8);
  for (const UINT message : {SB_SETTEXTW, SB_SETTIPTEXTW}) {
    SendMessageW(window_, message, static_cast<WPARAM>(part),
                 reinterpret_cast<LPARAM>(text.c_str()));
  }
}

void StatusLine::SetProgress(std::optional<unsigned> percent) {
  if (percent == percent_) return;
  const bool comes_or_goes = percent.has_value() != percent_.has_value();
  percent_ = percent;
  if (comes_or_goes) PlaceParts();
  SetPart(kProgressPart,
          percent ? std::to_string(*percent) + " %" : std::string());
  ShowWindow(bar_, percent ? SW_SHOW : SW_HIDE);
  if (percent) SendMessageW(bar_, PBM_SETPOS, *percent, 0);
}

}  // namespace host
