/*
 * What the tests ask of Win32 beyond what the port has; for the 32-bit test
 * builds only. recorders_port.cpp implements it.
 */
#ifndef TESTS_PORT_WINDOWS_H_
#define TESTS_PORT_WINDOWS_H_

#include_next <windows.h>

#ifdef __cplusplus
extern "C" {
#endif

#define WM_APP 0x8000
#define WS_OVERLAPPED 0U
#define GWL_WNDPROC GWLP_WNDPROC
#define GWL_USERDATA GWLP_USERDATA
#define GetWindowLongA GetWindowLongPtrA
#define SetWindowLongA SetWindowLongPtrA
int WINAPI GetWindowTextA(HWND window, LPSTR text, int size);
int WINAPI GetWindowTextLengthA(HWND window);
LRESULT WINAPI CallWindowProcA(WNDPROC procedure, HWND window, UINT message,
                               WPARAM wparam, LPARAM lparam);
BOOL WINAPI PostMessageA(HWND window, UINT message, WPARAM wparam,
                         LPARAM lparam);
#define InitCommonControls() InitCommonControlsEx(nullptr)
HFILE WINAPI _lcreat(LPCSTR path, int attributes);
HFILE WINAPI _lclose(HFILE file);

#ifdef __cplusplus
}
#endif

#endif /* TESTS_PORT_WINDOWS_H_ */
