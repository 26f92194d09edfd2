#include <windows.h>

// There is no printer: a program that uses the port never asks for one.

BOOL WINAPI TextOutA(HDC, int, int, LPCSTR, int) { return FALSE; }

int WINAPI StartPage(HDC) { return 0; }

int WINAPI EndPage(HDC) { return 0; }
