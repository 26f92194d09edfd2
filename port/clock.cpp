#include <windows.h>

#include <chrono>

DWORD WINAPI GetTickCount() {
  using std::chrono::milliseconds, std::chrono::steady_clock;
  const auto now = steady_clock::now().time_since_epoch();
  return static_cast<DWORD>(
      std::chrono::duration_cast<milliseconds>(now).count());
}
