#include <windows.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "port/raised_exception.h"

HMODULE WINAPI GetModuleHandleA(LPCSTR) {
  return reinterpret_cast<HMODULE>(std::uintptr_t{0x400000});
}

HMODULE WINAPI GetModuleHandleW(LPCWSTR) { return GetModuleHandleA(nullptr); }

BOOL WINAPI DisableThreadLibraryCalls(HMODULE) { return TRUE; }

DWORD WINAPI GetLastError() { return static_cast<DWORD>(errno); }

void WINAPI RaiseException(DWORD code, DWORD, DWORD count,
                           const ULONG_PTR* arguments) {
  throw port::RaisedException{code, count > 0 ? arguments[0] : 0};
}

UINT WINAPI _lwrite(HFILE file, LPCSTR bytes, UINT count) {
  constexpr UINT kFailed = ~0U;
  for (UINT written = 0; written < count;) {
    const auto more = ::write(file, bytes + written, count - written);
    if (more < 0 && errno != EINTR) return kFailed;
    written += static_cast<UINT>(std::max<decltype(more)>(more, 0));
  }
  return count;
}

int WINAPI lstrlenA(LPCSTR text) { return static_cast<int>(std::strlen(text)); }

LPSTR WINAPI lstrcpynA(LPSTR to, LPCSTR from, int room) {
  if (room <= 0) return to;
  const std::size_t length =
      ::strnlen(from, static_cast<std::size_t>(room) - 1);
  std::memcpy(to, from, length);
  to[length] = '\0';
  return to;
}
