#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <new>
#include <unordered_set>
#include <utility>

#include "interface/host_interface.h"
#include "port/raised_exception.h"
#include "tests/recorders.h"

// Functions of the port are in a library: those of the same names here are
// taken in their place, a whole file of them at a time.
namespace dicom::testing {
namespace {

std::vector<ShownBox> shown_boxes;
std::function<void()> box_action;
bool boxes_are_noted = false;
std::vector<UINT> beeps;
std::string printed;  // "X,Y TEXT\n", "start page\n", ...
DWORD ticks = 1000;
// That GlobalAlloc gave and GlobalFree has not got back. A free of anything
// else ends the process. Never destroyed: what is left at the end is known here
// and no leak.
auto& global_blocks = *new std::unordered_set<void*>;
unsigned allocations_to_failure = 0;
std::deque<MSG> messages;
bool quit_posted = false;
int quit_code = 0;

}  // namespace

MessageBoxRecorder::MessageBoxRecorder() {
  shown_boxes.clear();
  box_action = nullptr;
  boxes_are_noted = true;
}

MessageBoxRecorder::~MessageBoxRecorder() {
  box_action = nullptr;
  boxes_are_noted = false;
}

const std::vector<ShownBox>& MessageBoxRecorder::Boxes() const {
  return shown_boxes;
}

void MessageBoxRecorder::WhileBoxIsOpen(std::function<void()> action) {
  box_action = std::move(action);
}

std::vector<UINT> TakeBeeps() { return std::exchange(beeps, {}); }

PrinterRecorder::PrinterRecorder() : dc_(reinterpret_cast<HDC>(0x1234)) {
  printed.clear();
}

PrinterRecorder::~PrinterRecorder() = default;

std::string PrinterRecorder::Printed() { return printed; }

void AdvanceTicks(DWORD milliseconds) { ticks += milliseconds; }

std::size_t GlobalBlocks() { return global_blocks.size(); }

void ForgetGlobalBlocks() {
  for (void* const block : global_blocks) std::free(block);
  global_blocks.clear();
}

void FailGlobalAlloc(unsigned count) { allocations_to_failure = count; }

std::string RaisedText(const std::function<void()>& action) {
  try {
    action();
  } catch (const port::RaisedException& raised) {
    if (raised.code != DICOM_DECODE_EXCEPTION) return "another exception";
    return reinterpret_cast<const char*>(raised.argument);
  }
  return "";
}

}  // namespace dicom::testing

using namespace dicom::testing;  // NOLINT: the system's names are global

int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
  if (boxes_are_noted) shown_boxes.push_back({owner, text, caption, type});
  if (box_action) box_action();
  return IDOK;
}

BOOL WINAPI MessageBeep(UINT type) {
  beeps.push_back(type);
  return kBeepAnswer;
}

DWORD WINAPI GetTickCount() { return ticks; }

HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T bytes) {
  constexpr SIZE_T kMostBytes = 0x20000000;  // as the port has it
  const bool fails =
      allocations_to_failure > 0 && --allocations_to_failure == 0;
  void* const address =
      fails || bytes > kMostBytes ? nullptr : std::malloc(bytes + (bytes == 0));
  if (address == nullptr) return nullptr;
  std::memset(address, flags & GMEM_ZEROINIT ? 0 : 0xCD, bytes);
  try {
    global_blocks.insert(address);
  } catch (const std::bad_alloc&) {
    std::free(address);
    return nullptr;
  }
  return address;
}

LPVOID WINAPI GlobalLock(HGLOBAL block) {
  return global_blocks.count(block) ? block : nullptr;
}

BOOL WINAPI GlobalUnlock(HGLOBAL block) { return GlobalLock(block) != nullptr; }

HGLOBAL WINAPI GlobalHandle(LPCVOID address) {
  return GlobalLock(const_cast<void*>(address));
}

HGLOBAL WINAPI GlobalFree(HGLOBAL block) {
  if (block != nullptr && global_blocks.erase(block) == 0) {
    std::fprintf(stderr, "GlobalFree: %p is not an allocated block\n", block);
    std::abort();
  }
  std::free(block);
  return nullptr;
}

BOOL WINAPI PostMessageA(HWND window, UINT message, WPARAM wparam,
                         LPARAM lparam) {
  messages.push_back({window, message, wparam, lparam});
  return TRUE;
}

void WINAPI PostQuitMessage(int code) {
  quit_posted = true;
  quit_code = code;
}

BOOL WINAPI PeekMessageA(MSG* message, HWND, UINT, UINT, UINT) {
  if (!messages.empty()) {
    *message = messages.front();
    messages.pop_front();
    return TRUE;
  }
  // Comes when nothing else waits.
  *message = {nullptr, WM_QUIT, static_cast<WPARAM>(quit_code), 0};
  return std::exchange(quit_posted, false);
}

BOOL WINAPI TranslateMessage(const MSG*) { return FALSE; }

LRESULT WINAPI DispatchMessageA(const MSG* message) {
  return SendMessageA(message->hwnd, message->message, message->wParam,
                      message->lParam);
}

BOOL WINAPI TextOutA(HDC, int x, int y, LPCSTR text, int length) {
  printed += std::to_string(x) + "," + std::to_string(y) + " " +
             std::string(text, static_cast<unsigned>(length)) + "\n";
  return TRUE;
}

int WINAPI StartPage(HDC) {
  printed += "start page\n";
  return 1;
}

int WINAPI EndPage(HDC) {
  printed += "end page\n";
  return 1;
}

// What only the tests ask for.

int WINAPI GetWindowTextA(HWND window, LPSTR text, int size) {
  return static_cast<int>(SendMessageA(window, WM_GETTEXT,
                                       static_cast<WPARAM>(size),
                                       reinterpret_cast<LPARAM>(text)));
}

int WINAPI GetWindowTextLengthA(HWND window) {
  return static_cast<int>(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0));
}

LRESULT WINAPI CallWindowProcA(WNDPROC procedure, HWND window, UINT message,
                               WPARAM wparam, LPARAM lparam) {
  return procedure(window, message, wparam, lparam);
}

HFILE WINAPI _lcreat(LPCSTR path, int) {
  return ::open(path, O_RDWR | O_CREAT | O_TRUNC, 0666);
}

HFILE WINAPI _lclose(HFILE file) { return ::close(file); }
