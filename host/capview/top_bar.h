#ifndef HOST_CAPVIEW_TOP_BAR_H_
#define HOST_CAPVIEW_TOP_BAR_H_

#include <windows.h>

#include <string>

#include "host/capview/capture_document.h"
#include "host/capview/connection_chooser.h"
#include "host/capview/pane_layout.h"
#include "host/capview/ui_fonts.h"

namespace host {

// The controls above the rows, by which the person chooses what is listed: the
// connection, PDUs or messages, the filter. The buttons are commands, IDC_PDUS
// and IDC_MESSAGES; a change of the filter comes to the parent as EN_CHANGE.
class TopBar {
 public:
  // The document must outlive the bar. Throws Failure.
  TopBar(HWND parent, const CaptureDocument& document);

  void SetFonts(const UiFonts& fonts);
  void Place(const PaneLayout& layout);

  // Chooses among the connections, whose messages go to it.
  ConnectionChooser& Connections() { return connections_; }
  // Which of the two buttons is pressed.
  void ShowList(ListKind list);

  // The edit control; the parent's.
  HWND Filter() const { return filter_; }
  // As it was typed; empty lets every row pass.
  std::wstring FilterText() const;
  // The parent is told, as of any change.
  void ClearFilter();
  // With all of its text selected, to type another.
  void FocusFilter();

 private:
  ConnectionChooser connections_;
  HWND pdus_;
  HWND messages_;
  HWND filter_label_;
  HWND filter_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_TOP_BAR_H_
