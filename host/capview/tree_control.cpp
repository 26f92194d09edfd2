#include "host/capview/tree_control.h"

#include "host/capview/control.h"
#include "host/capview/ui_fonts.h"

namespace host {

HWND MakeTree(HWND parent, int id) {
  return MakeControl(
      parent, {WC_TREEVIEWW, id,
               WS_VISIBLE | WS_TABSTOP | TVS_HASLINES | TVS_HASBUTTONS |
                   TVS_LINESATROOT | TVS_SHOWSELALWAYS | TVS_DISABLEDRAGDROP,
               WS_EX_CLIENTEDGE});
}

LRESULT DrawTreeSelection(NMHDR* header) {
  if (header->code != NM_CUSTOMDRAW) return 0;
  auto& draw = *reinterpret_cast<NMTVCUSTOMDRAW*>(header);
  if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
  if ((draw.nmcd.uItemState & CDIS_SELECTED) != 0 &&
      GetFocus() != header->hwndFrom) {
    draw.clrText = kRestingText;
    draw.clrTextBk = kRestingGround;
  }
  return CDRF_DODEFAULT;
}

HTREEITEM AddTreeLine(HWND tree, const TreeLineForm& line) {
  TVINSERTSTRUCTW insert{};
  insert.hParent = line.parent;
  insert.hInsertAfter = TVI_LAST;
  insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_CHILDREN;
  insert.item.pszText = const_cast<wchar_t*>(line.text.c_str());
  insert.item.cChildren = line.opens ? 1 : 0;
  insert.item.lParam = line.data;
  return TreeView_InsertItem(tree, &insert);
}

void SetNothingBelow(HWND tree, HTREEITEM item) {
  TVITEMW change{};
  change.mask = TVIF_CHILDREN;
  change.hItem = item;
  TreeView_SetItem(tree, &change);
}

std::wstring TreeLineText(HWND tree, HTREEITEM item) {
  constexpr int kMostText = 4096;
  std::wstring text(kMostText, L'\0');
  TVITEMW request{};
  request.mask = TVIF_TEXT;
  request.hItem = item;
  request.pszText = text.data();
  request.cchTextMax = kMostText;
  if (!TreeView_GetItem(tree, &request)) return {};
  return request.pszText;
}

LPARAM TreeLineData(HWND tree, HTREEITEM item) {
  TVITEMW request{};
  request.mask = TVIF_PARAM;
  request.hItem = item;
  TreeView_GetItem(tree, &request);
  return request.lParam;
}

}  // namespace host
