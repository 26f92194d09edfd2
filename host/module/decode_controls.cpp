#include "host/module/decode_controls.h"

// After windows.h.
#include <commctrl.h>

#include "host/module/tree_reader.h"
#include "host/module/window_text.h"

namespace host {

DecodeControls::DecodeControls(HexWindow hex_window) : hex_window_(hex_window) {
  INITCOMMONCONTROLSEX controls{sizeof controls, ICC_TREEVIEW_CLASSES};
  InitCommonControlsEx(&controls);
  parent_ = MakeHiddenWindow(WC_STATICW, 0);
  const auto add = [this](const wchar_t* class_name, DWORD style) {
    return MakeHiddenWindow(class_name, style, parent_.get()).release();
  };
  windows_.tree = add(WC_TREEVIEWW, TVS_HASLINES | TVS_HASBUTTONS);
  // Without ES_AUTOHSCROLL the control would wrap a long dump line by line.
  windows_.hex = hex_window == HexWindow::kEdit
                     ? add(WC_EDITW, ES_MULTILINE | ES_AUTOHSCROLL)
                     : add(WC_STATICW, 0);
  SendMessageW(windows_.hex, EM_LIMITTEXT, 0x7FFFFFFE, 0);
  SendMessageW(windows_.tree, WM_SETREDRAW, FALSE, 0);
}

void DecodeControls::ForgetHex() { SetWindowTextA(windows_.hex, ""); }

std::vector<TreeLine> DecodeControls::Tree() const {
  return ReadTree(windows_.tree).lines;
}

std::optional<std::string> DecodeControls::Hex() const {
  if (hex_window_ != HexWindow::kEdit) return {};
  return AnsiTextOf(windows_.hex);
}

}  // namespace host
