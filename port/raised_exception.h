#ifndef PORT_RAISED_EXCEPTION_H_
#define PORT_RAISED_EXCEPTION_H_

#include <windows.h>

namespace port {

// What RaiseException throws, for want of structured exceptions: whoever guards
// a call catches it. `argument` is the first one, 0 without any.
struct RaisedException {
  DWORD code;
  ULONG_PTR argument;
};

}  // namespace port

#endif  // PORT_RAISED_EXCEPTION_H_
