#include <windows.h>

// Nobody posts anything, so the queue is always empty.

void WINAPI PostQuitMessage(int) {}

BOOL WINAPI PeekMessageA(MSG*, HWND, UINT, UINT, UINT) { return FALSE; }

BOOL WINAPI TranslateMessage(const MSG*) { return FALSE; }

LRESULT WINAPI DispatchMessageA(const MSG* message) {
  return SendMessageA(message->hwnd, message->message, message->wParam,
                      message->lParam);
}
