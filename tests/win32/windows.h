/*
 * The part of Win32 that the module and its tests use, for builds on other
 * systems: same names, sizes and values as the platform's header, for 32-bit
 * targets. stand_in.cpp implements it in memory; stand_in.h lets tests look
 * behind it.
 */
#ifndef TESTS_WIN32_WINDOWS_H_
#define TESTS_WIN32_WINDOWS_H_

#include <stdarg.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#define WINAPI __attribute__((stdcall))
#define CALLBACK WINAPI
#define APIENTRY WINAPI
#define CONST const

typedef int BOOL;
typedef unsigned char BYTE;
typedef unsigned short WORD, ATOM;
typedef unsigned int UINT, WPARAM, UINT_PTR;
typedef int INT, INT_PTR;
typedef unsigned long DWORD, ULONG, ULONG_PTR, DWORD_PTR, SIZE_T, COLORREF;
typedef long LONG, LONG_PTR, LPARAM, LRESULT;
typedef char CHAR, *LPSTR;
typedef const char* LPCSTR;
typedef void VOID, *LPVOID, *HANDLE, *HGLOBAL;
typedef const void* LPCVOID;
typedef int HFILE;

#define DECLARE_HANDLE(name) typedef struct name##__* name
DECLARE_HANDLE(HWND);
DECLARE_HANDLE(HINSTANCE);
DECLARE_HANDLE(HMENU);
DECLARE_HANDLE(HICON);
DECLARE_HANDLE(HBRUSH);
DECLARE_HANDLE(HDC);
typedef HINSTANCE HMODULE;
typedef HICON HCURSOR;

#define TRUE 1
#define FALSE 0
#define ERROR_NOT_ENOUGH_MEMORY 8L
#define ERROR_INVALID_WINDOW_HANDLE 1400L
#define ERROR_CANNOT_FIND_WND_CLASS 1407L
#define ERROR_CLASS_ALREADY_EXISTS 1410L
#define ERROR_INVALID_INDEX 1413L
#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define EXCEPTION_NONCONTINUABLE 1

void WINAPI SetLastError(DWORD code);
DWORD WINAPI GetLastError(void);
HMODULE WINAPI
GetModuleHandleA(LPCSTR name); /* null but for the program itself */
BOOL WINAPI DisableThreadLibraryCalls(HMODULE module);
/* Throws stand_in::RaisedException. */
void WINAPI RaiseException(DWORD code, DWORD flags, DWORD count,
                           const ULONG_PTR* arguments);
DWORD WINAPI GetTickCount(void);

/* Global memory. */
#define GMEM_FIXED 0x0000
#define GMEM_MOVEABLE 0x0002
#define GMEM_ZEROINIT 0x0040
#define GHND (GMEM_MOVEABLE | GMEM_ZEROINIT)
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)
HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T bytes);
LPVOID WINAPI GlobalLock(HGLOBAL block);
BOOL WINAPI GlobalUnlock(HGLOBAL block);
HGLOBAL WINAPI GlobalHandle(LPCVOID address);
HGLOBAL WINAPI GlobalFree(HGLOBAL block);

/* Texts and files. */
#define HFILE_ERROR ((HFILE)-1)
#define OF_READ 0
#define OF_WRITE 1
#define OF_READWRITE 2
int WINAPI lstrlenA(LPCSTR text);
LPSTR WINAPI lstrcpyA(LPSTR to, LPCSTR from);
LPSTR WINAPI lstrcatA(LPSTR to, LPCSTR from);
int wsprintfA(LPSTR to, LPCSTR format, ...);
HFILE WINAPI _lcreat(LPCSTR path, int attributes);
HFILE WINAPI _lopen(LPCSTR path, int mode);
UINT WINAPI _lread(HFILE file, LPVOID bytes, UINT count);
UINT WINAPI _lwrite(HFILE file, LPCSTR bytes, UINT count);
HFILE WINAPI _lclose(HFILE file);

/* Windows. */
typedef LRESULT(CALLBACK* WNDPROC)(HWND, UINT, WPARAM, LPARAM);
typedef struct tagWNDCLASSA {
  UINT style;
  WNDPROC lpfnWndProc;
  int cbClsExtra;
  int cbWndExtra;
  HINSTANCE hInstance;
  HICON hIcon;
  HCURSOR hCursor;
  HBRUSH hbrBackground;
  LPCSTR lpszMenuName;
  LPCSTR lpszClassName;
} WNDCLASSA;
typedef struct tagPOINT {
  LONG x, y;
} POINT;
typedef struct tagMSG {
  HWND hwnd;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
  DWORD time;
  POINT pt;
} MSG;

#define WM_NULL 0x0000
#define WM_CREATE 0x0001
#define WM_DESTROY 0x0002
#define WM_SETREDRAW 0x000B
#define WM_SETTEXT 0x000C
#define WM_GETTEXT 0x000D
#define WM_GETTEXTLENGTH 0x000E
#define WM_CLOSE 0x0010
#define WM_QUIT 0x0012
#define WM_TIMER 0x0113
#define WM_USER 0x0400
#define WM_APP 0x8000
#define WS_OVERLAPPED 0x00000000L
#define WS_CHILD 0x40000000L
#define WS_VISIBLE 0x10000000L
#define WS_POPUP 0x80000000L
#define ES_MULTILINE 0x0004L
#define ES_AUTOHSCROLL 0x0080L
#define GWL_WNDPROC (-4)
#define GWL_STYLE (-16)
#define GWL_USERDATA (-21)
#define PM_NOREMOVE 0
#define PM_REMOVE 1

ATOM WINAPI RegisterClassA(const WNDCLASSA* window_class);
HWND WINAPI CreateWindowExA(DWORD extended_style, LPCSTR class_name,
                            LPCSTR text, DWORD style, int x, int y, int width,
                            int height, HWND parent, HMENU menu,
                            HINSTANCE instance, LPVOID parameter);
BOOL WINAPI DestroyWindow(HWND window);
BOOL WINAPI IsWindow(HWND window);
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
