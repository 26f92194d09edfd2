#ifndef TESTS_WIN32_STAND_IN_H_
#define TESTS_WIN32_STAND_IN_H_

#include <windows.h>

#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

#include "tests/recorders.h"

// What recorders_stand_in.cpp sees and sets behind the stand-in for Win32.
namespace stand_in {

// What RaiseException throws, for want of structured exceptions. `argument` is
// 0 without one.
struct RaisedException {
  DWORD code;
  ULONG_PTR argument;
};

struct Recorded {
  std::vector<dicom::testing::ShownBox> boxes;
  std::function<void()> box_shown;  // runs while a box is open; may be empty
  std::string printed;              // "X,Y TEXT\n", "start page\n", ...
  DWORD ticks = 1000;
  // That GlobalAlloc gave and GlobalFree has not got back. A free of anything
  // else ends the process.
  std::unordered_set<void*> blocks;
  unsigned allocations_to_failure = 0;  // 1: the next GlobalAlloc fails
};
Recorded& Records();

// The window procedure of the class "SysTreeView32". Answers as the control
// does, as far as that can be seen through the messages that commctrl.h
// declares.
LRESULT CALLBACK TreeViewProcedure(HWND window, UINT message, WPARAM wparam,
                                   LPARAM lparam);

}  // namespace stand_in

#endif  // TESTS_WIN32_STAND_IN_H_
