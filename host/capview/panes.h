#ifndef HOST_CAPVIEW_PANES_H_
#define HOST_CAPVIEW_PANES_H_

#include <windows.h>

#include "host/capview/capture_document.h"
#include "host/capview/contexts_pane.h"
#include "host/capview/data_set_pane.h"
#include "host/capview/decode_panes.h"
#include "host/capview/detail_tabs.h"
#include "host/capview/finding_pane.h"
#include "host/capview/pane_layout.h"
#include "host/capview/row_list.h"
#include "host/capview/row_model.h"
#include "host/capview/status_line.h"
#include "host/capview/time_bar_pane.h"
#include "host/capview/top_bar.h"
#include "host/capview/ui_fonts.h"

namespace host {

// Everything that the window consists of for the eye. One more pane is a class
// of its own, a member here in the order of the Tab key, a place in PaneLayout,
// and a line in each of the operations.
struct Panes {
  // Makes them as children of the window. Document and model must outlive them.
  // Throws Failure.
  Panes(HWND window, const CaptureDocument& document, RowModel& model);

  // The fonts stay the caller's.
  void SetFonts(const UiFonts& fonts);
  // All but the status line, which places itself.
  void Place(const PaneLayout& layout);
  // Hands WM_NOTIFY to the pane that it comes from.
  LRESULT Notify(NMHDR* header);
  // Whether the control is white although nobody can write into it.
  bool IsReadOnlyText(HWND control) const;

  TopBar bar;
  FindingPane findings;
  TimeBarPane times;
  RowList rows;
  DetailTabs tabs;  // of the three below
  DecodePanes decode;
  DataSetPane data_set;
  ContextsPane contexts;
  StatusLine status;
};

}  // namespace host

#endif  // HOST_CAPVIEW_PANES_H_
