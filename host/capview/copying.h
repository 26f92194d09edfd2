#ifndef HOST_CAPVIEW_COPYING_H_
#define HOST_CAPVIEW_COPYING_H_

#include <windows.h>

#include "host/capview/panes.h"
#include "host/capview/row_model.h"

namespace host {

// Copies what the person has selected to the clipboard, for the window `owner`;
// nothing happens when nothing is selected. All throw Failure while another
// program has the clipboard.

// Of the pane that has the focus: the row's cells, with tabs between, the text
// of an edit control; of the line in the tab in every other case.
void CopyLine(HWND owner, Panes& panes, RowModel& model);
// Of the line in the tab that is in sight.
void CopyPart(HWND owner, const Panes& panes, LinePart part);

}  // namespace host

#endif  // HOST_CAPVIEW_COPYING_H_
