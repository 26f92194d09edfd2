#ifndef PORT_MESSAGE_BOX_H_
#define PORT_MESSAGE_BOX_H_

#include <windows.h>

#include <functional>

namespace port {

// Told of every message box while it is open; texts are the caller's.
using MessageBoxListener =
    std::function<void(HWND owner, const char* text, const char* caption)>;

// The one who is told from now on; nobody when it is empty.
void OnMessageBox(MessageBoxListener listener);

}  // namespace port

#endif  // PORT_MESSAGE_BOX_H_
