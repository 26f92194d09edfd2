#ifndef HOST_CAPVIEW_TOP_WINDOW_H_
#define HOST_CAPVIEW_TOP_WINDOW_H_

#include <windows.h>

#include "host/module/window_handle.h"

namespace host {

// Makes the program's window, empty and hidden yet, with the menu of
// capview.rc. `procedure` gets its messages from the first one on. `place` is
// that of the last time, in pixels of the screen; empty: where the system
// likes, in the usual size. Throws Failure where there is no display.
WindowHandle MakeTopWindow(WNDPROC procedure, const RECT& place);

}  // namespace host

#endif  // HOST_CAPVIEW_TOP_WINDOW_H_
