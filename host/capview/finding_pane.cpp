#include "host/capview/finding_pane.h"

// After windows.h.
#include <windowsx.h>

#include <algorithm>
#include <string>

#include "host/capview/control.h"
#include "host/capview/owned_handles.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr int kMostLines = 5;   // that are seen at once
constexpr int kEdgePixels = 4;  // of the frame, above and below
constexpr int kSidePixels = 8;  // of frame and text, on both sides together
constexpr wchar_t kMargin[] = L"        ";
constexpr wchar_t kAdviceMargin[] = L"    \u2192 ";

std::wstring TextOf(const Finding& finding, const FrameNames& names) {
  std::string line(SeverityText(finding.severity));
  line += ": " + finding.sentence;
  if (finding.first_frame != 0) {
    line += " (frame " + names.Text(finding.first_frame) + ")";
  }
  return WideFromUtf8(line);
}

// How much of the text fits into the width, up to a blank if there is one.
std::size_t FittingOf(HDC device, const std::wstring& text, LONG width) {
  SIZE size{};
  int fitting = 0;
  GetTextExtentExPointW(device, text.c_str(), static_cast<int>(text.size()),
                        width, &fitting, nullptr, &size);
  const auto count = static_cast<std::size_t>(std::max(fitting, 1));
  if (count >= text.size()) return text.size();
  const std::size_t blank = text.rfind(L' ', count);
  return blank == text.npos || blank == 0 ? count : blank;
}

}  // namespace

FindingPane::FindingPane(HWND parent, int id)
    : window_(MakeControl(parent, {.class_name = L"LISTBOX",
                                   .id = id,
                                   .style = WS_TABSTOP | WS_VSCROLL |
                                            LBS_NOTIFY | LBS_NOINTEGRALHEIGHT,
                                   .edge = WS_EX_CLIENTEDGE})) {}

void FindingPane::SetFonts(const UiFonts& fonts) {
  SetWindowFont(window_, fonts.pane.get(), TRUE);
  line_height_ = ListBox_GetItemHeight(window_, 0);
  width_ = 0;
}

int FindingPane::HeightIn(int width) {
  if (entries_.empty()) return 0;
  if (width != width_) Break(width);
  return std::min(ListBox_GetCount(window_), kMostLines) * line_height_ +
         kEdgePixels;
}

void FindingPane::Place(const RECT& place) {
  MoveControl(window_, place);
  ShowWindow(window_, entries_.empty() ? SW_HIDE : SW_SHOWNA);
}

void FindingPane::Show(const std::vector<Finding>& findings,
                       const std::string& verdict, const FrameNames& names) {
  const auto selected = Selected();
  const std::wstring text = selected ? entries_[*selected].text : L"";
  entries_.clear();
  if (!verdict.empty()) entries_.push_back({{}, WideFromUtf8(verdict), {}});
  for (std::size_t i = 0; i < findings.size(); ++i) {
    entries_.push_back({i, TextOf(findings[i], names),
                        WideFromUtf8(std::string(AdviceOf(findings[i])))});
  }
  Break(width_);
  const auto same = std::ranges::find(entries_, text, &Entry::text);
  if (selected && same != entries_.end()) {
    Select(static_cast<std::size_t>(same - entries_.begin()));
  }
}

void FindingPane::Select(std::size_t entry) {
  const auto entry_of = [this](int line) {
    return static_cast<std::size_t>(ListBox_GetItemData(window_, line));
  };
  int line = 0;
  while (line < ListBox_GetCount(window_) && entry_of(line) != entry) ++line;
  ListBox_SetCurSel(window_, line);
}

void FindingPane::Break(int width) {
  const auto selected = Selected();
  width_ = width;
  SetWindowRedraw(window_, FALSE);
  ListBox_ResetContent(window_);
  const WindowDevice device = DeviceOf(window_);
  const SelectedObject font =
      host::Select(device.get(), GetWindowFont(window_));
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    BreakText(device.get(), entries_[i].text, i, L"");
    BreakText(device.get(), entries_[i].advice, i, kAdviceMargin);
  }
  if (selected && *selected < entries_.size()) Select(*selected);
  SetWindowRedraw(window_, TRUE);
}

void FindingPane::BreakText(HDC device, const std::wstring& text,
                            std::size_t entry, const wchar_t* margin) {
  const LONG room = width_ - kSidePixels - GetSystemMetrics(SM_CXVSCROLL);
  std::wstring rest = text;
  for (std::wstring before = margin; !rest.empty(); before = kMargin) {
    const std::size_t count = FittingOf(
        device, rest, std::max(room - SizeOfText(device, before).cx, 1L));
    const int line =
        ListBox_AddString(window_, (before + rest.substr(0, count)).c_str());
    ListBox_SetItemData(window_, line, entry);
    rest.erase(0, std::max(rest.find_first_not_of(L' ', count), count));
  }
}

std::optional<std::size_t> FindingPane::Selected() const {
  const int line = ListBox_GetCurSel(window_);
  if (line < 0) return {};
  return static_cast<std::size_t>(ListBox_GetItemData(window_, line));
}

void FindingPane::Notify(int code) {
  if (code == LBN_DBLCLK) Choose();
}

void FindingPane::Choose() {
  const auto entry = Selected();
  if (!entry || !on_chosen_) return;
  if (const auto finding = entries_[*entry].finding) on_chosen_(*finding);
}

}  // namespace host
