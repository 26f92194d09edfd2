#ifndef TESTS_WIN32_TREE_VIEW_H_
#define TESTS_WIN32_TREE_VIEW_H_

#include <commctrl.h>

namespace stand_in {

// The window procedure of the class "SysTreeView32". Answers as the control
// does, as far as that can be seen through the messages that commctrl.h
// declares.
LRESULT CALLBACK TreeViewProcedure(HWND window, UINT message, WPARAM wparam,
                                   LPARAM lparam);

}  // namespace stand_in

#endif  // TESTS_WIN32_TREE_VIEW_H_
