#include "host/capview/row_list.h"

// After windows.h.
#include <windowsx.h>

#include <algorithm>

#include "host/capview/control.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

// Text and ground differ in brightness as much as black and white nearly do, so
// that they can be read in grey; faults are bold besides.
struct RowColors {
  COLORREF text;
  COLORREF ground;
  bool bold;
};
RowColors ColorsOf(RowKind kind) {
  switch (kind) {
    case RowKind::kAssociate:
      return {RGB(0, 0, 0), RGB(221, 235, 250), false};
    case RowKind::kRelease:
      return {RGB(0, 0, 0), RGB(233, 233, 233), false};
    case RowKind::kWarning:
      return {RGB(60, 35, 0), RGB(255, 236, 190), false};
    case RowKind::kFault:
      return {RGB(110, 0, 0), RGB(255, 200, 196), true};
    default:
      return {GetSysColor(COLOR_WINDOWTEXT), GetSysColor(COLOR_WINDOW), false};
  }
}

}  // namespace

RowList::RowList(HWND parent, int id, RowModel& model)
    : model_(model),
      window_(MakeControl(
          parent, {WC_LISTVIEWW, id,
                   WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA |
                       LVS_SINGLESEL | LVS_SHOWSELALWAYS,
                   WS_EX_CLIENTEDGE})),
      columns_(window_) {
  ListView_SetExtendedListViewStyle(
      window_, LVS_EX_FULLROWSELECT | LVS_EX_HEADERDRAGDROP |
                   LVS_EX_DOUBLEBUFFER | LVS_EX_LABELTIP);
}

void RowList::SetFonts(const UiFonts& fonts) {
  bold_ = fonts.pane_bold.get();
  SetWindowFont(window_, fonts.pane.get(), TRUE);
  columns_.SetScale(fonts.text_scale);
}

void RowList::Place(const PaneLayout& layout) {
  MoveControl(window_, layout.list);
  columns_.Fill();
}

void RowList::SetHint(const std::wstring& hint) {
  if (hint_ == hint) return;
  hint_ = hint;
  InvalidateRect(window_, nullptr, TRUE);
}

void RowList::Update() {
  columns_.SetHasTimes(model_.list() == ListKind::kMessages);
  columns_.MarkSorted(model_.sorted_by());
  silent_ = true;
  ListView_SetItemCountEx(window_, model_.ShownCount(),
                          LVSICF_NOSCROLL | LVSICF_NOINVALIDATEALL);
  silent_ = false;
  columns_.Refill();
  InvalidateRect(window_, nullptr, FALSE);
}

// Not by "all items", which some list views visit one by one.
void RowList::Deselect() {
  const auto index = SelectedIndex();
  if (!index) return;
  ListView_SetItemState(window_, static_cast<int>(*index), 0, LVIS_SELECTED);
}

void RowList::Mark(std::optional<std::uint32_t> position) {
  silent_ = true;
  Select(position);
  silent_ = false;
}

void RowList::Select(std::optional<std::uint32_t> position) {
  Deselect();
  if (!position) return;
  const std::uint32_t index = model_.IndexOf(*position);
  if (index >= model_.ShownCount()) return;
  ListView_SetItemState(window_, static_cast<int>(index),
                        LVIS_SELECTED | LVIS_FOCUSED,
                        LVIS_SELECTED | LVIS_FOCUSED);
  ListView_EnsureVisible(window_, static_cast<int>(index), FALSE);
}

bool RowList::IsSelected(std::uint32_t index) const {
  return ListView_GetItemState(window_, static_cast<int>(index),
                               LVIS_SELECTED) != 0;
}

// Not by a search in the list view, which may visit its items one by one.
std::optional<std::uint32_t> RowList::SelectedIndex() const {
  if (!IsSelected(selected_)) return {};
  return selected_;
}

std::optional<std::uint32_t> RowList::Selected() const {
  const auto index = SelectedIndex();
  if (!index) return {};
  return model_.PositionAt(*index);
}

void RowList::Move(int step) {
  const std::int64_t count = model_.ShownCount();
  if (count == 0) return;
  const auto index = SelectedIndex();
  const std::int64_t wanted = index ? std::int64_t{*index} + step : 0;
  Select(model_.PositionAt(static_cast<std::uint32_t>(
      std::clamp<std::int64_t>(wanted, 0, count - 1))));
}

LRESULT RowList::Notify(NMHDR* header) {
  switch (header->code) {
    case LVN_GETDISPINFOW:
      FillText(reinterpret_cast<NMLVDISPINFOW*>(header)->item);
      return 0;
    case LVN_ITEMCHANGED: {
      const auto& change = *reinterpret_cast<NMLISTVIEW*>(header);
      const bool selected = (change.uNewState & LVIS_SELECTED) != 0 &&
                            (change.uOldState & LVIS_SELECTED) == 0;
      if (!selected || change.iItem < 0) return 0;
      selected_ = static_cast<std::uint32_t>(change.iItem);
      if (!silent_ && on_selected_) on_selected_(model_.PositionAt(selected_));
      return 0;
    }
    case LVN_COLUMNCLICK:
      if (on_head_) {
        on_head_(static_cast<RowColumn>(
            reinterpret_cast<NMLISTVIEW*>(header)->iSubItem));
      }
      return 0;
    case NM_CUSTOMDRAW:
      return Draw(*reinterpret_cast<NMLVCUSTOMDRAW*>(header));
    default:
      return 0;
  }
}

void RowList::FillText(LVITEMW& item) {
  if ((item.mask & LVIF_TEXT) == 0) return;
  const std::uint32_t position =
      model_.PositionAt(static_cast<std::uint32_t>(item.iItem));
  text_ = WideFromUtf8(
      model_.Text(position, static_cast<RowColumn>(item.iSubItem)));
  item.pszText = text_.data();  // taken over before the next question
}

LRESULT RowList::Draw(NMLVCUSTOMDRAW& draw) {
  switch (draw.nmcd.dwDrawStage) {
    case CDDS_PREPAINT:
      return model_.ShownCount() > 0 ? CDRF_NOTIFYITEMDRAW
                                     : CDRF_NOTIFYPOSTPAINT;
    case CDDS_ITEMPREPAINT:
      return DrawRow(draw);
    case CDDS_POSTPAINT:
      DrawHint(draw.nmcd.hdc);
      return CDRF_DODEFAULT;
    default:
      return CDRF_DODEFAULT;
  }
}

void RowList::DrawHint(HDC device) const {
  RECT area;
  GetClientRect(window_, &area);
  area.top += (area.bottom - area.top) / 3;
  SetBkMode(device, TRANSPARENT);
  SetTextColor(device, GetSysColor(COLOR_GRAYTEXT));
  DrawTextW(device, hint_.c_str(), static_cast<int>(hint_.size()), &area,
            DT_CENTER | DT_WORDBREAK | DT_NOPREFIX);
}

LRESULT RowList::DrawRow(NMLVCUSTOMDRAW& draw) {
  const auto index = static_cast<std::uint32_t>(draw.nmcd.dwItemSpec);
  const RowColors colors = ColorsOf(model_.Kind(model_.PositionAt(index)));
  draw.clrText = colors.text;
  draw.clrTextBk = colors.ground;
  if (GetFocus() != window_ && IsSelected(index)) {
    draw.nmcd.uItemState &= ~static_cast<UINT>(CDIS_SELECTED);
    draw.clrText = kRestingText;
    draw.clrTextBk = kRestingGround;
  }
  if (!colors.bold) return CDRF_DODEFAULT;
  SelectObject(draw.nmcd.hdc, bold_);
  return CDRF_NEWFONT;
}

}  // namespace host
