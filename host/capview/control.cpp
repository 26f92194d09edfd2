#include "host/capview/control.h"

// After windows.h.
#include <commctrl.h>

#include "host/capview/ui_fonts.h"
#include "host/text/failure.h"
#include "host/text/system_error.h"

namespace host {

HWND MakeControl(HWND parent, const ControlForm& form) {
  const HWND control = CreateWindowExW(
      form.edge, form.class_name, form.text, WS_CHILD | form.style, 0, 0, 0, 0,
      parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(form.id)),
      GetModuleHandleW(nullptr), nullptr);
  if (control == nullptr) {
    throw Failure("A part of the window cannot be made (" +
                  SystemErrorText(GetLastError()) +
                  "): close other programs and try again.");
  }
  return control;
}

void MoveControl(HWND control, const RECT& place) {
  MoveWindow(control, place.left, place.top, place.right - place.left,
             place.bottom - place.top, TRUE);
}

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

}  // namespace host
