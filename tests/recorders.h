#ifndef TESTS_RECORDERS_H_
#define TESTS_RECORDERS_H_

#include <windows.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// What a test sees of the module's dealings with the system, and the faults
// that it plants there. Two implementations: over the stand-in, and over
// Windows itself, where boxes are really opened and texts really drawn.
namespace dicom::testing {

struct ShownBox {
  HWND owner;
  std::string text;
  std::string caption;
  UINT type = MB_OK;
  bool operator==(const ShownBox&) const = default;
};

// While it lives, message boxes are noted and answered at once. At most one at
// a time.
class MessageBoxRecorder {
 public:
  MessageBoxRecorder();
  MessageBoxRecorder(const MessageBoxRecorder&) = delete;
  MessageBoxRecorder& operator=(const MessageBoxRecorder&) = delete;
  ~MessageBoxRecorder();

  const std::vector<ShownBox>& Boxes() const;
  // `action` runs while a box is open, before it is answered.
  void WhileBoxIsOpen(std::function<void()> action);
};

// What every beep answers, and the types of those since the last call.
constexpr BOOL kBeepAnswer = 77;
std::vector<UINT> TakeBeeps();

// A printer device context that notes what is drawn on it. At most one at a
// time.
class PrinterRecorder {
 public:
  PrinterRecorder();
  PrinterRecorder(const PrinterRecorder&) = delete;
  PrinterRecorder& operator=(const PrinterRecorder&) = delete;
  ~PrinterRecorder();

  HDC DeviceContext() const { return dc_; }
  // Lines "X,Y TEXT\n", "end page\n" and "start page\n" in the order of the
  // calls. Ends the recording: ask once.
  std::string Printed();

 private:
  HDC dc_;
};

// GetTickCount answers this much more from now on; between calls it stands
// still.
void AdvanceTicks(DWORD milliseconds);

// Blocks of this program that GlobalAlloc gave and GlobalFree has not got back.
std::size_t GlobalBlocks();

// Forgets those that are left, so that GlobalBlocks() is 0, and frees them
// where that can be known to be safe. The records of diverted lines are such.
void ForgetGlobalBlocks();

// The `count`th GlobalAlloc of the module from now (1: the next) fails, once.
// 0: none does.
void FailGlobalAlloc(unsigned count);

// The text of the Win32 exception by which a failure leaves the display while
// `action` runs; empty when none does.
std::string RaisedText(const std::function<void()>& action);

}  // namespace dicom::testing

#endif  // TESTS_RECORDERS_H_
