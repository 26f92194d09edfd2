#ifndef HOST_CAPVIEW_TREE_FIND_H_
#define HOST_CAPVIEW_TREE_FIND_H_

#include <windows.h>

#include <string>

#include "host/capview/detail_tabs.h"
#include "host/capview/status_line.h"

namespace host {

// Finds a text in the lines of the tab that is in sight, again and again the
// same one. What is not there is said in the status line.
class TreeFind {
 public:
  // Tabs and status line must outlive this; `owner` is asked for the text.
  TreeFind(HWND owner, const DetailTabs& tabs, StatusLine& status);

  // Asks the person for a text and finds it.
  void Ask();
  // The next line with the text, or the one before; asks when there is no text
  // yet.
  void Again(bool backwards);

  // Finds the text in the next decode that is shown, if it is not empty.
  void WhenShown(const std::wstring& text);
  // A decode is shown.
  void Shown();

 private:
  HWND owner_;
  const DetailTabs& tabs_;
  StatusLine& status_;
  std::wstring text_;
  bool waits_ = false;  // for a decode
};

}  // namespace host

#endif  // HOST_CAPVIEW_TREE_FIND_H_
