#include <windows.h>

#include <cstdlib>

namespace {

// What a 32-bit process can hope for in one piece. What it would not get there
// is refused everywhere, so that all programs show the same.
constexpr SIZE_T kMostBytes = 0x20000000;

}  // namespace

HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T bytes) {
  if (bytes > kMostBytes) return nullptr;
  const SIZE_T room = bytes + (bytes == 0);
  return (flags & GMEM_ZEROINIT) != 0 ? std::calloc(room, 1)
                                      : std::malloc(room);
}

LPVOID WINAPI GlobalLock(HGLOBAL block) { return block; }

BOOL WINAPI GlobalUnlock(HGLOBAL) { return TRUE; }

HGLOBAL WINAPI GlobalHandle(LPCVOID address) {
  return const_cast<LPVOID>(address);
}

HGLOBAL WINAPI GlobalFree(HGLOBAL block) {
  std::free(block);
  return nullptr;
}
