#include <windows.h>

#include "host/capture/pipe_wait.h"

namespace host {

// A pipe cannot be waited for, only asked.
std::optional<bool> StandardInputHasMore(std::chrono::milliseconds most) {
  constexpr std::chrono::milliseconds kBetween{20};
  const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  while (true) {
    DWORD count = 0;
    if (!::PeekNamedPipe(input, nullptr, 0, nullptr, &count, nullptr)) {
      // Wine does not know of the pipes of its own system.
      if (::GetLastError() == ERROR_NOT_SUPPORTED) return {};
      return true;  // it has ended, or is no pipe
    }
    if (count != 0) return true;
    if (most <= std::chrono::milliseconds::zero()) return false;
    ::Sleep(static_cast<DWORD>(kBetween.count()));
    most -= kBetween;
  }
}

}  // namespace host
