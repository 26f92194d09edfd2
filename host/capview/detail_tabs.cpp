#include "host/capview/detail_tabs.h"

// After windows.h.
#include <commctrl.h>
#include <windowsx.h>

#include "host/capview/control.h"

namespace host {
namespace {

constexpr const wchar_t* kTitles[kDetailTabs] = {L"Decode", L"Data set",
                                                 L"Contexts"};

}  // namespace

DetailTabs::DetailTabs(HWND parent, int id)
    : window_(
          MakeControl(parent, {WC_TABCONTROLW, id, WS_VISIBLE | WS_TABSTOP})) {
  TCITEMW item{};
  item.mask = TCIF_TEXT;
  for (std::size_t i = 0; i < kDetailTabs; ++i) {
    item.pszText = const_cast<wchar_t*>(kTitles[i]);
    TabCtrl_InsertItem(window_, static_cast<int>(i), &item);
  }
}

void DetailTabs::SetViews(const Views& views) {
  views_ = views;
  for (DetailView* const view : views_) view->SetVisible(view == &Active());
}

void DetailTabs::SetFonts(const UiFonts& fonts) {
  SetWindowFont(window_, fonts.chrome.get(), TRUE);
}

int DetailTabs::Height() const {
  RECT item{};
  TabCtrl_GetItemRect(window_, 0, &item);
  return item.bottom;
}

void DetailTabs::Place(const PaneLayout& layout) {
  MoveControl(window_, layout.tabs);
}

void DetailTabs::Choose(DetailTab tab) {
  TabCtrl_SetCurSel(window_, static_cast<int>(tab));
  if (tab == chosen_) return;
  const bool has_focus = GetFocus() == Active().Handle();
  Active().SetVisible(false);
  chosen_ = tab;
  Active().SetVisible(true);
  if (has_focus) SetFocus(Active().Handle());
  bool& shows_row = shows_row_[static_cast<std::size_t>(tab)];
  if (!std::exchange(shows_row, true)) Active().ShowRow(row_);
}

void DetailTabs::ShowRow(const std::optional<RowRef>& row) {
  row_ = row;
  shows_row_.fill(false);
  shows_row_[static_cast<std::size_t>(chosen_)] = true;
  Active().ShowRow(row);
}

LRESULT DetailTabs::Notify(const NMHDR* header) const {
  if (header->code == TCN_SELCHANGE && on_clicked_) {
    on_clicked_(static_cast<DetailTab>(TabCtrl_GetCurSel(window_)));
  }
  return 0;
}

}  // namespace host
