/*
 * The part of Win32 that the module and the host's room for it use, for other
 * systems: same names and values as the platform's header, sizes as on a
 * Windows of this machine's word. Nothing is ever seen: windows, their texts
 * and tree views live in the memory of the one thread that uses them.
 *
 * Where this is less than Windows: windows have no place, no look and no focus;
 * nobody posts messages; message boxes are answered with OK; printing goes
 * nowhere. Each kind of function is a file of its own, so that a program can
 * put functions of its own before them.
 */
#ifndef PORT_WINDOWS_H_
#define PORT_WINDOWS_H_

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __i386__
#define WINAPI __attribute__((stdcall))
#else
#define WINAPI
#endif
#define CALLBACK WINAPI

typedef int BOOL, HFILE;
typedef uint16_t ATOM;
typedef unsigned int UINT;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uintptr_t WPARAM, ULONG_PTR, SIZE_T;
typedef intptr_t LPARAM, LRESULT, LONG_PTR;
typedef char* LPSTR;
typedef const char* LPCSTR;
typedef const wchar_t* LPCWSTR;
typedef void *LPVOID, *HGLOBAL;
typedef const void* LPCVOID;

#define DECLARE_HANDLE(name) typedef struct name##__* name
DECLARE_HANDLE(HWND); /* a small number, never used again */
DECLARE_HANDLE(HINSTANCE);
DECLARE_HANDLE(HMENU);
DECLARE_HANDLE(HDC);
typedef HINSTANCE HMODULE;

#define TRUE 1
#define FALSE 0

/* The process. There is one module, which is linked in: whoever loads it calls
 * its entry point with these reasons. */
#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);
BOOL WINAPI DisableThreadLibraryCalls(HMODULE module);
HMODULE WINAPI GetModuleHandleA(LPCSTR name); /* the program itself */
HMODULE WINAPI GetModuleHandleW(LPCWSTR name);
DWORD WINAPI GetLastError(void); /* errno */
DWORD WINAPI GetTickCount(void);
/* Throws port::RaisedException (port/raised_exception.h). */
void WINAPI RaiseException(DWORD code, DWORD flags, DWORD count,
                           const ULONG_PTR* arguments);

/* Global memory. A block's handle is its address. */
#define GMEM_ZEROINIT 0x0040
HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T bytes);
LPVOID WINAPI GlobalLock(HGLOBAL block);
BOOL WINAPI GlobalUnlock(HGLOBAL block);
HGLOBAL WINAPI GlobalHandle(LPCVOID address);
HGLOBAL WINAPI GlobalFree(HGLOBAL block);

/* Files: an HFILE is a file descriptor. */
UINT WINAPI _lwrite(HFILE file, LPCSTR bytes, UINT count);

/* Texts. */
int WINAPI lstrlenA(LPCSTR text);
LPSTR WINAPI lstrcpynA(LPSTR to, LPCSTR from, int room);

/* Windows. Those of the kind ...W take the same texts as those of the kind
 * ...A, and wide names of classes, which are plain ASCII. */
typedef LRESULT(CALLBACK* WNDPROC)(HWND, UINT, WPARAM, LPARAM);
typedef struct tagWNDCLASSA {
  WNDPROC lpfnWndProc;
  int cbWndExtra;
  HINSTANCE hInstance;
  LPCSTR lpszClassName;
} WNDCLASSA;
typedef struct tagWNDCLASSW {
  WNDPROC lpfnWndProc;
  int cbWndExtra;
  HINSTANCE hInstance;
  LPCWSTR lpszClassName;
} WNDCLASSW;
typedef struct tagMSG {
  HWND hwnd;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
} MSG;

#define WM_DESTROY 0x0002
#define WM_SETREDRAW 0x000B
#define WM_SETTEXT 0x000C
#define WM_GETTEXT 0x000D
#define WM_GETTEXTLENGTH 0x000E
#define WM_QUIT 0x0012
#define EM_LIMITTEXT 0x00C5 /* no text is too long here */
#define WS_POPUP 0x80000000U
#define WS_CHILD 0x40000000U
#define ES_MULTILINE 0x0004U
#define ES_AUTOHSCROLL 0x0080U
#define GWLP_WNDPROC (-4)
#define GWLP_USERDATA (-21)
#define PM_REMOVE 1

ATOM WINAPI RegisterClassA(const WNDCLASSA* window_class);
ATOM WINAPI RegisterClassW(const WNDCLASSW* window_class);
HWND WINAPI CreateWindowExA(DWORD extended_style, LPCSTR class_name,
                            LPCSTR text, DWORD style, int x, int y, int width,
                            int height, HWND parent, HMENU menu,
                            HINSTANCE instance, LPVOID parameter);
HWND WINAPI CreateWindowExW(DWORD extended_style, LPCWSTR class_name,
                            LPCWSTR text, DWORD style, int x, int y, int width,
                            int height, HWND parent, HMENU menu,
                            HINSTANCE instance, LPVOID parameter);
#define CreateWindowW(...) CreateWindowExW(0, __VA_ARGS__)
BOOL WINAPI DestroyWindow(HWND window);
/* As wide as an address. A window's extra memory is counted in bytes. */
LONG_PTR WINAPI GetWindowLongPtrA(HWND window, int index);
LONG_PTR WINAPI SetWindowLongPtrA(HWND window, int index, LONG_PTR value);
#define GetWindowLongPtrW GetWindowLongPtrA
#define SetWindowLongPtrW SetWindowLongPtrA
BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text);
LRESULT WINAPI DefWindowProcA(HWND window, UINT message, WPARAM wparam,
                              LPARAM lparam);
#define DefWindowProcW DefWindowProcA
LRESULT WINAPI SendMessageA(HWND window, UINT message, WPARAM wparam,
                            LPARAM lparam);
#define SendMessageW SendMessageA

/* Posted messages. */
void WINAPI PostQuitMessage(int code);
BOOL WINAPI PeekMessageA(MSG* message, HWND window, UINT first, UINT last,
                         UINT remove);
BOOL WINAPI TranslateMessage(const MSG* message);
LRESULT WINAPI DispatchMessageA(const MSG* message);

/* What a user would see and hear. */
#define MB_OK 0
#define IDOK 1
/* Answers IDOK, behind port::OnMessageBox (port/message_box.h). */
int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);
BOOL WINAPI MessageBeep(UINT type);

/* The printer. */
BOOL WINAPI TextOutA(HDC dc, int x, int y, LPCSTR text, int length);
int WINAPI StartPage(HDC dc);
int WINAPI EndPage(HDC dc);

#ifdef __cplusplus
}
#endif

#endif /* PORT_WINDOWS_H_ */
