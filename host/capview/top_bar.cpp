#include "host/capview/top_bar.h"

// After windows.h.
#include <commctrl.h>
#include <windowsx.h>

#include "host/capview/control.h"
#include "host/capview/resource.h"
#include "host/module/window_text.h"

namespace host {
namespace {

constexpr DWORD kSwitch =
    WS_VISIBLE | WS_TABSTOP | BS_RADIOBUTTON | BS_PUSHLIKE;

}  // namespace

// The order is that of the Tab key.
TopBar::TopBar(HWND parent, const CaptureDocument& document)
    : connections_(parent, IDC_CONNECTIONS, document),
      pdus_(MakeControl(
          parent, {WC_BUTTONW, IDC_PDUS, kSwitch | WS_GROUP, 0, L"PDUs"})),
      messages_(MakeControl(
          parent, {WC_BUTTONW, IDC_MESSAGES, kSwitch, 0, L"Messages"})),
      filter_label_(MakeControl(
          parent, {WC_STATICW, IDC_FILTER_LABEL,
                   WS_VISIBLE | SS_CENTERIMAGE | SS_RIGHT, 0, L"Fi&lter:"})),
      filter_(MakeControl(parent, {WC_EDITW, IDC_FILTER,
                                   WS_VISIBLE | WS_TABSTOP | ES_AUTOHSCROLL,
                                   WS_EX_CLIENTEDGE})) {
  SendMessageW(filter_, EM_SETCUEBANNER, TRUE,
               reinterpret_cast<LPARAM>(L"text, dir:> or dir:<"));
}

void TopBar::SetFonts(const UiFonts& fonts) {
  connections_.SetFonts(fonts);
  for (const HWND control : {pdus_, messages_, filter_label_, filter_}) {
    SetWindowFont(control, fonts.chrome.get(), TRUE);
  }
}

void TopBar::Place(const PaneLayout& layout) {
  MoveControl(connections_.Handle(), layout.connections);
  MoveControl(pdus_, layout.pdus);
  MoveControl(messages_, layout.messages);
  MoveControl(filter_label_, layout.filter_label);
  MoveControl(filter_, layout.filter);
}

void TopBar::ShowList(ListKind list) {
  Button_SetCheck(pdus_, list == ListKind::kPdus ? BST_CHECKED : BST_UNCHECKED);
  Button_SetCheck(messages_,
                  list == ListKind::kMessages ? BST_CHECKED : BST_UNCHECKED);
}

std::wstring TopBar::FilterText() const { return WideTextOf(filter_); }

void TopBar::ClearFilter() { SetWindowTextW(filter_, L""); }

void TopBar::FocusFilter() {
  SetFocus(filter_);
  Edit_SetSel(filter_, 0, -1);
}

}  // namespace host
