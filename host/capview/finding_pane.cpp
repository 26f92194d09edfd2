#include "host/capview/finding_pane.h"

// After windows.h.
#include <windowsx.h>

#include <algorithm>
#include <string>

#include "host/capview/control.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr int kMostLines = 4;   // that are seen at once
constexpr int kEdgePixels = 4;  // of the frame, above and below
// Of one line, behind which the reader of the whole uses capdump.
constexpr int kMostWidth = 4000;

std::wstring LineOf(const Finding& finding) {
  std::string line(SeverityText(finding.severity));
  line += ": " + finding.sentence;
  if (finding.first_frame != 0) {
    line += " (frame " + std::to_string(finding.first_frame) + ")";
  }
  return WideFromUtf8(line);
}

}  // namespace

FindingPane::FindingPane(HWND parent, int id)
    : window_(
          MakeControl(parent, {.class_name = L"LISTBOX",
                               .id = id,
                               .style = WS_TABSTOP | WS_VSCROLL | WS_HSCROLL |
                                        LBS_NOTIFY | LBS_NOINTEGRALHEIGHT,
                               .edge = WS_EX_CLIENTEDGE})) {
  SendMessageW(window_, LB_SETHORIZONTALEXTENT, kMostWidth, 0);
}

void FindingPane::SetFonts(const UiFonts& fonts) {
  SetWindowFont(window_, fonts.pane.get(), TRUE);
  line_height_ = ListBox_GetItemHeight(window_, 0);
}

int FindingPane::Height() const {
  if (count_ == 0) return 0;
  return std::min(count_, kMostLines) * line_height_ + kEdgePixels +
         GetSystemMetrics(SM_CYHSCROLL);
}

void FindingPane::Place(const RECT& place) {
  MoveControl(window_, place);
  ShowWindow(window_, count_ > 0 ? SW_SHOWNA : SW_HIDE);
}

void FindingPane::Show(const std::vector<Finding>& findings) {
  ListBox_ResetContent(window_);
  for (const Finding& finding : findings) {
    ListBox_AddString(window_, LineOf(finding).c_str());
  }
  count_ = static_cast<int>(findings.size());
}

void FindingPane::Notify(int code) {
  if (code == LBN_DBLCLK) Choose();
}

void FindingPane::Choose() {
  const int selected = ListBox_GetCurSel(window_);
  if (selected >= 0 && on_chosen_) {
    on_chosen_(static_cast<std::size_t>(selected));
  }
}

}  // namespace host
