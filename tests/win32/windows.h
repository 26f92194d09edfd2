/*
 * The part of Win32 that the module and its tests use, for builds on other
 * systems: same names, sizes and values as the platform's header, for 32-bit
 * targets. stand_in.cpp implements it in memory; stand_in.h lets the
 * recorders look behind it.
 */
#ifndef TESTS_WIN32_WINDOWS_H_
#define TESTS_WIN32_WINDOWS_H_

#ifdef __cplusplus
extern "C" {
#endif

#define WINAPI __attribute__((stdcall))
#define CALLBACK WINAPI

typedef int BOOL;
typedef unsigned short ATOM;
typedef unsigned int UINT, WPARAM;
typedef unsigned long DWORD, ULONG_PTR, SIZE_T;
typedef long LONG, LPARAM, LRESULT;
typedef char* LPSTR;
typedef const char* LPCSTR;
typedef void *LPVOID, *HGLOBAL;
typedef const void* LPCVOID;
typedef int HFILE;

#define DECLARE_HANDLE(name) typedef struct name##__* name
DECLARE_HANDLE(HWND);
DECLARE_HANDLE(HINSTANCE);
DECLARE_HANDLE(HMENU);
DECLARE_HANDLE(HDC);
typedef HINSTANCE HMODULE;

#define TRUE 1
#define FALSE 0

HMODULE WINAPI GetModuleHandleA(LPCSTR name); /* the program itself */
/* Throws stand_in::RaisedException. */
void WINAPI RaiseException(DWORD code, DWORD flags, DWORD count,
                           const ULONG_PTR* arguments);
DWORD WINAPI GetTickCount(void);

/* Global memory. */
#define GMEM_ZEROINIT 0x0040
HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T bytes);
LPVOID WINAPI GlobalLock(HGLOBAL block);
BOOL WINAPI GlobalUnlock(HGLOBAL block);
HGLOBAL WINAPI GlobalHandle(LPCVOID address);
HGLOBAL WINAPI GlobalFree(HGLOBAL block);

/* Files. */
HFILE WINAPI _lcreat(LPCSTR path, int attributes);
UINT WINAPI _lwrite(HFILE file, LPCSTR bytes, UINT count);
HFILE WINAPI _lclose(HFILE file);

/* Windows. */
typedef LRESULT(CALLBACK* WNDPROC)(HWND, UINT, WPARAM, LPARAM);
typedef struct tagWNDCLASSA {
  WNDPROC lpfnWndProc;
  int cbWndExtra;
  HINSTANCE hInstance;
  LPCSTR lpszClassName;
} WNDCLASSA;
typedef struct tagMSG {
  HWND hwnd;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
} MSG;

#define WM_DESTROY 0x0002
#define WM_SETTEXT 0x000C
#define WM_QUIT 0x0012
#define WM_APP 0x8000
#define WS_OVERLAPPED 0x00000000L
#define WS_CHILD 0x40000000L
#define ES_MULTILINE 0x0004L
#define ES_AUTOHSCROLL 0x0080L
#define GWL_WNDPROC (-4)
#define GWL_USERDATA (-21)
#define PM_REMOVE 1

ATOM WINAPI RegisterClassA(const WNDCLASSA* window_class);
HWND WINAPI CreateWindowExA(DWORD extended_style, LPCSTR class_name,
                            LPCSTR text, DWORD style, int x, int y, int width,
                            int height, HWND parent, HMENU menu,
                            HINSTANCE instance, LPVOID parameter);
BOOL WINAPI DestroyWindow(HWND window);
LONG WINAPI GetWindowLongA(HWND window, int index);
LONG WINAPI SetWindowLongA(HWND window, int index, LONG value);
BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text);
int WINAPI GetWindowTextA(HWND window, LPSTR text, int size);
int WINAPI GetWindowTextLengthA(HWND window);
LRESULT WINAPI DefWindowProcA(HWND window, UINT message, WPARAM wparam,
                              LPARAM lparam);
LRESULT WINAPI CallWindowProcA(WNDPROC procedure, HWND window, UINT message,
                               WPARAM wparam, LPARAM lparam);
LRESULT WINAPI SendMessageA(HWND window, UINT message, WPARAM wparam,
                            LPARAM lparam);
BOOL WINAPI PostMessageA(HWND window, UINT message, WPARAM wparam,
                         LPARAM lparam);
void WINAPI PostQuitMessage(int code);
BOOL WINAPI PeekMessageA(MSG* message, HWND window, UINT first, UINT last,
                         UINT remove);
BOOL WINAPI TranslateMessage(const MSG* message);
LRESULT WINAPI DispatchMessageA(const MSG* message);

/* What the user sees and hears, and the printer: recorded. */
#define MB_OK 0
#define IDOK 1
int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);
BOOL WINAPI MessageBeep(UINT type);
BOOL WINAPI TextOutA(HDC dc, int x, int y, LPCSTR text, int length);
int WINAPI StartPage(HDC dc);
int WINAPI EndPage(HDC dc);

#ifdef __cplusplus
}
#endif

#endif /* TESTS_WIN32_WINDOWS_H_ */
