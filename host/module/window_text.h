#ifndef HOST_MODULE_WINDOW_TEXT_H_
#define HOST_MODULE_WINDOW_TEXT_H_

#include <windows.h>

#include <string>

namespace host {

// The whole text of a window of this process, whatever its length.

// As the module wrote it: bytes of code page 1252.
std::string AnsiTextOf(HWND window);
// As a person typed it; only where there are people, on Windows.
std::wstring WideTextOf(HWND window);

}  // namespace host

#endif  // HOST_MODULE_WINDOW_TEXT_H_
