#include "host/capview/list_columns.h"

// After windows.h.
#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "host/capview/ui_fonts.h"

namespace host {
namespace {

constexpr int kLast = kRowColumns - 1;
constexpr int kFirstOfTimes = static_cast<int>(RowColumn::kLatency);
static_assert(static_cast<int>(RowColumn::kThroughput) == kFirstOfTimes + 1);
constexpr int kWideEnough = 1200;  // of the list, at text scale 96
constexpr wchar_t kSortedMark[] = L" \u25BE";

bool IsOfTimes(int column) {
  return column == kFirstOfTimes || column == kFirstOfTimes + 1;
}

struct ColumnForm {
  const wchar_t* title;
  int format;
};
constexpr ColumnForm kForms[] = {
    {L"No.", LVCFMT_LEFT},        {L"Finding", LVCFMT_LEFT},
    {L"Time (UTC)", LVCFMT_LEFT}, {L"Since before", LVCFMT_RIGHT},
    {L"Direction", LVCFMT_LEFT},  {L"Length", LVCFMT_RIGHT},
    {L"Latency", LVCFMT_RIGHT},   {L"Throughput", LVCFMT_RIGHT},
    {L"Summary", LVCFMT_LEFT},    {L"Detail", LVCFMT_LEFT},
    {L"Outcome", LVCFMT_LEFT},
};
static_assert(std::size(kForms) == kRowColumns);

}  // namespace

ListColumns::ListColumns(HWND list) : list_(list) {
  LVCOLUMNW column{};
  column.mask = LVCF_FMT | LVCF_TEXT | LVCF_SUBITEM;
  for (const ColumnForm& form : kForms) {
    column.fmt = form.format;
    column.pszText = const_cast<wchar_t*>(form.title);
    ListView_InsertColumn(list_, column.iSubItem, &column);
    ++column.iSubItem;
  }
  Choose({});
}

ListColumns::Choice ListColumns::Chosen() const {
  Choice choice;
  choice.times = wants_times_;
  for (int i = 0; i < kRowColumns; ++i) {
    const int width = i == kLast ? OutcomeWidth() : WidthOf(i);
    choice.widths[static_cast<std::size_t>(i)] =
        MulDiv(width, 96, static_cast<int>(scale_));
  }
  ListView_GetColumnOrderArray(list_, kRowColumns, choice.order.data());
  return choice;
}

void ListColumns::Choose(const Choice& choice) {
  SetWindowRedraw(list_, FALSE);
  wants_times_ = choice.times;
  for (int i = 0; i < kRowColumns; ++i) {
    int width = Scaled(choice.widths[static_cast<std::size_t>(i)], scale_);
    if (IsOfTimes(i)) {
      times_widths_[static_cast<std::size_t>(i - kFirstOfTimes)] = width;
      if (!shows_times_) width = 0;
    }
    ListView_SetColumnWidth(list_, i, width);
  }
  least_last_ = filled_last_ = ListView_GetColumnWidth(list_, kLast);
  SetWindowRedraw(list_, TRUE);
  InvalidateRect(list_, nullptr, TRUE);
  ListView_SetColumnOrderArray(list_, kRowColumns, choice.order.data());
}

void ListColumns::SetScale(unsigned scale) {
  const Choice choice = Chosen();
  scale_ = scale;
  Choose(choice);
}

int ListColumns::WidthOf(int column) const {
  if (IsOfTimes(column) && !shows_times_) {
    return times_widths_[static_cast<std::size_t>(column - kFirstOfTimes)];
  }
  return ListView_GetColumnWidth(list_, column);
}

void ListColumns::SetHasTimes(bool has_times) {
  has_times_ = has_times;
  if (UpdateTimes()) Fill();
}

void ListColumns::WantTimes(bool wanted) {
  wants_times_ = wanted;
  if (UpdateTimes()) Fill();
}

bool ListColumns::UpdateTimes() {
  RECT area;
  GetClientRect(list_, &area);
  const bool is_wide = area.right >= Scaled(kWideEnough, scale_);
  const bool shows = has_times_ && wants_times_.value_or(is_wide);
  if (shows == shows_times_) return false;
  for (int i = 0; i < 2; ++i) {
    int& hidden = times_widths_[static_cast<std::size_t>(i)];
    if (!shows) hidden = ListView_GetColumnWidth(list_, kFirstOfTimes + i);
    ListView_SetColumnWidth(list_, kFirstOfTimes + i, shows ? hidden : 0);
  }
  shows_times_ = shows;
  return true;
}

void ListColumns::MarkSorted(std::optional<RowColumn> column) {
  if (column == sorted_by_) return;
  sorted_by_ = column;
  for (int i = 0; i < kRowColumns; ++i) {
    std::wstring title = kForms[i].title;
    if (column && static_cast<int>(*column) == i) title += kSortedMark;
    LVCOLUMNW head{};
    head.mask = LVCF_TEXT;
    head.pszText = title.data();
    ListView_SetColumn(list_, i, &head);
  }
}

int ListColumns::OutcomeWidth() const {
  const int now = ListView_GetColumnWidth(list_, kLast);
  return now == filled_last_ ? least_last_ : now;
}

void ListColumns::Fill() {
  UpdateTimes();
  RECT area;
  GetClientRect(list_, &area);
  int left = area.right;
  for (int i = 0; i < kLast; ++i) left -= ListView_GetColumnWidth(list_, i);
  least_last_ = OutcomeWidth();
  filled_width_ = area.right;
  filled_last_ = std::max(left, least_last_);
  ListView_SetColumnWidth(list_, kLast, filled_last_);
}

void ListColumns::Refill() {
  RECT area;
  GetClientRect(list_, &area);
  if (area.right != filled_width_) Fill();
}

}  // namespace host
