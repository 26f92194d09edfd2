#include "host/capview/list_columns.h"

// After windows.h.
#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <iterator>

#include "host/capview/ui_fonts.h"

namespace host {
namespace {

constexpr int kLast = kRowColumns - 1;

struct ColumnForm {
  const wchar_t* title;
  int format;
};
constexpr ColumnForm kForms[] = {
    {L"No.", LVCFMT_LEFT},        {L"Finding", LVCFMT_LEFT},
    {L"Time (UTC)", LVCFMT_LEFT}, {L"Since before", LVCFMT_RIGHT},
    {L"Direction", LVCFMT_LEFT},  {L"Length", LVCFMT_RIGHT},
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
  for (int i = 0; i < kRowColumns; ++i) {
    const int width =
        i == kLast ? OutcomeWidth() : ListView_GetColumnWidth(list_, i);
    choice.widths[static_cast<std::size_t>(i)] =
        MulDiv(width, 96, static_cast<int>(scale_));
  }
  ListView_GetColumnOrderArray(list_, kRowColumns, choice.order.data());
  return choice;
}

void ListColumns::Choose(const Choice& choice) {
  SetWindowRedraw(list_, FALSE);
  for (int i = 0; i < kRowColumns; ++i) {
    ListView_SetColumnWidth(
        list_, i, Scaled(choice.widths[static_cast<std::size_t>(i)], scale_));
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

int ListColumns::OutcomeWidth() const {
  const int now = ListView_GetColumnWidth(list_, kLast);
  return now == filled_last_ ? least_last_ : now;
}

void ListColumns::Fill() {
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
