#include "host/capview/control.h"

#include "host/text/failure.h"
#include "host/text/system_error.h"

namespace host {

HWND MakeControl(HWND parent, const ControlForm& form) {
  const HWND control = CreateWindowExW(
      form.edge, form.class_name, form.text, WS_CHILD | form.style, 0, 0, 0, 0,
      parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(form.id)),
      GetModuleHandleW(nullptr), nullptr);
  if (control == nullptr) {
    throw Failure("A part of the window cannot be made (" +
                  SystemErrorText(GetLastError()) +
                  "): close other programs and try again.");
  }
  return control;
}

void MoveControl(HWND control, const RECT& place) {
  MoveWindow(control, place.left, place.top, place.right - place.left,
             place.bottom - place.top, TRUE);
}

}  // namespace host
