#ifndef PORT_TREE_VIEW_H_
#define PORT_TREE_VIEW_H_

#include <windows.h>

namespace port {

// The window procedure of the class "SysTreeView32", whose windows need
// kTreeViewExtraBytes of extra memory. Answers as the control does, as far as
// that can be seen through the messages that commctrl.h declares.
LRESULT CALLBACK TreeViewProcedure(HWND window, UINT message, WPARAM wparam,
                                   LPARAM lparam);
inline constexpr int kTreeViewExtraBytes = sizeof(void*);

}  // namespace port

#endif  // PORT_TREE_VIEW_H_
