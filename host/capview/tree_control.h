#ifndef HOST_CAPVIEW_TREE_CONTROL_H_
#define HOST_CAPVIEW_TREE_CONTROL_H_

#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <string>

namespace host {

// A tree view in which lines are named and opened; its own selection is drawn
// so that it can be seen without the focus, too, by DrawTreeSelection().
HWND MakeTree(HWND parent, int id);
// Answers what a tree view tells its parent by WM_NOTIFY, as far as it is about
// drawing.
LRESULT DrawTreeSelection(NMHDR* header);

// A line behind the others below `parent`; `opens`: it has a button to be
// opened by, whether or not there is anything below it yet.
struct TreeLineForm {
  HTREEITEM parent = TVI_ROOT;
  std::wstring text;
  bool opens = false;
  LPARAM data = 0;
};
HTREEITEM AddTreeLine(HWND tree, const TreeLineForm& line);
// Nothing can be opened below it after all.
void SetNothingBelow(HWND tree, HTREEITEM item);
std::wstring TreeLineText(HWND tree, HTREEITEM item);
LPARAM TreeLineData(HWND tree, HTREEITEM item);

}  // namespace host

#endif  // HOST_CAPVIEW_TREE_CONTROL_H_
