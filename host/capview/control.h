#ifndef HOST_CAPVIEW_CONTROL_H_
#define HOST_CAPVIEW_CONTROL_H_

#include <windows.h>

#include <string>

namespace host {

// What a control of the window is when it begins.
struct ControlForm {
  const wchar_t* class_name;
  int id;           // IDC_..., by which the parent knows it
  DWORD style = 0;  // beside WS_CHILD
  DWORD edge = 0;   // an extended style: WS_EX_CLIENTEDGE or none
  const wchar_t* text = L"";
};

// Makes a control without a place yet. The parent destroys it with itself:
// whoever holds the answer does not own it, and must not use it longer than the
// parent lives. Throws Failure when the system makes none.
HWND MakeControl(HWND parent, const ControlForm& form);

// `place` in the parent's client area.
void MoveControl(HWND control, const RECT& place);

}  // namespace host

#endif  // HOST_CAPVIEW_CONTROL_H_
