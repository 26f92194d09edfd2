#ifndef TESTS_WIN32_STAND_IN_H_
#define TESTS_WIN32_STAND_IN_H_

#include <windows.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// What tests can see and set behind the stand-in for Win32. Tests that also run
// on Windows go through tests/recorders.h.
namespace stand_in {

// What RaiseException throws, for want of structured exceptions. `argument` is
// 0 without one.
struct RaisedException {
  DWORD code;
  ULONG_PTR argument;
};

struct MessageBox {
  HWND owner;
  std::string text;
  std::string caption;
  UINT type;
};

// Everything that the calls of one process record. Tests may empty the lists.
struct Recorded {
  std::vector<MessageBox> boxes;
  std::function<void()> box_shown;  // runs while a box is open; may be empty
  unsigned beeps = 0;
  std::vector<std::string> printer;  // "X,Y TEXT", "start page", "end page"
};
Recorded& Records();

// GetTickCount answers `now`, and `step` more with each call.
void SetTicks(DWORD now, DWORD step = 0);
void AdvanceTicks(DWORD milliseconds);

// Blocks that GlobalAlloc gave and GlobalFree has not got back. A free of
// anything else than such a block ends the process.
std::size_t GlobalBlocks();

// Frees them all.
void FreeGlobalBlocks();

// The `count`th GlobalAlloc from now (1: the next) answers null, once. 0: none
// does.
void FailGlobalAlloc(unsigned count);

}  // namespace stand_in

#endif  // TESTS_WIN32_STAND_IN_H_
