#include "host/capview/status_line.h"

#include <windows.h>
// After windows.h.
#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <utility>

#include "host/capview/control.h"
#include "host/capview/resource.h"
#include "host/text/number_text.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

// In pixels at 96 dpi.
constexpr int kProgressWidth = 170;
constexpr int kPercentWidth = 50;  // of it, left of the bar
constexpr int kRowsWidth = 190;
constexpr int kBytesWidth = 230;

}  // namespace

StatusLine::StatusLine(HWND parent)
    : window_(
          MakeControl(parent, {STATUSCLASSNAMEW, IDC_STATUS,
                               WS_VISIBLE | SBARS_SIZEGRIP | SBARS_TOOLTIPS})),
      bar_(MakeControl(window_, {PROGRESS_CLASSW, 0})) {}

int StatusLine::Height() const {
  RECT place;
  GetWindowRect(window_, &place);
  return place.bottom - place.top;
}

void StatusLine::SetFonts(const UiFonts& fonts) {
  dpi_ = fonts.dpi;
  SetWindowFont(window_, fonts.chrome.get(), TRUE);
}

void StatusLine::Place() {
  SendMessageW(window_, WM_SIZE, 0, 0);
  PlaceParts();
}

void StatusLine::OnSilence(std::function<std::string()> usual) {
  usual_ = std::move(usual);
}

void StatusLine::Say(const std::string& sentence) {
  said_ = true;
  SetPart(kSentencePart, sentence);
}

void StatusLine::Hush() {
  if (std::exchange(said_, false)) Refresh();
}

void StatusLine::Refresh() {
  if (!said_ && usual_) SetPart(kSentencePart, usual_());
}

// The sentence takes the place of the progress bar when there is none.
void StatusLine::PlaceParts() {
  RECT area;
  GetClientRect(window_, &area);
  const bool counts = !shown_[kRowsPart].empty();  // a capture is open
  const int right = area.right;
  const int bytes =
      counts ? std::max(right - Scaled(kBytesWidth, dpi_), 0) : right;
  const int rows =
      counts ? std::max(bytes - Scaled(kRowsWidth, dpi_), 0) : right;
  const int text =
      std::max(rows - (percent_ ? Scaled(kProgressWidth, dpi_) : 0), 0);
  const std::array<int, 4> ends{text, rows, bytes, -1};
  SendMessageW(window_, SB_SETPARTS, ends.size(),
               reinterpret_cast<LPARAM>(ends.data()));
  RECT place;
  SendMessageW(window_, SB_GETRECT, kProgressPart,
               reinterpret_cast<LPARAM>(&place));
  const int number = Scaled(kPercentWidth, dpi_);
  MoveWindow(bar_, place.left + number, place.top + 2,
             place.right - place.left - number - 4,
             place.bottom - place.top - 4, TRUE);
}

void StatusLine::SetPart(Part part, const std::string& text) {
  std::string& shown = shown_[static_cast<std::size_t>(part)];
  if (shown == text) return;
  const bool comes_or_goes = shown.empty() != text.empty();
  shown = text;
  if (part == kRowsPart && comes_or_goes) PlaceParts();
  const std::wstring wide = WideFromUtf8(text);
  for (const UINT message : {SB_SETTEXTW, SB_SETTIPTEXTW}) {
    SendMessageW(window_, message, static_cast<WPARAM>(part),
                 reinterpret_cast<LPARAM>(wide.c_str()));
  }
}

void StatusLine::SetProgress(std::optional<unsigned> percent) {
  if (percent == percent_) return;
  const bool comes_or_goes = percent.has_value() != percent_.has_value();
  percent_ = percent;
  if (comes_or_goes) PlaceParts();
  SetPart(kProgressPart, percent ? NumberText(*percent) + " %" : std::string());
  ShowWindow(bar_, percent ? SW_SHOW : SW_HIDE);
  if (percent) SendMessageW(bar_, PBM_SETPOS, *percent, 0);
}

}  // namespace host
