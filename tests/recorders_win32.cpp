#include <cstring>
#include <utility>

#include "host/module/guarded_call.h"
#include "tests/recorders.h"

// Calls of this program go through import pointers. Defining some of them here
// puts a function of ours before the system's: it notes the call and makes it.
namespace dicom::testing {
namespace {

std::vector<ShownBox> shown_boxes;
std::function<void()> box_action;
HHOOK box_hook;
UINT box_type;  // of the box that is open
std::vector<UINT> beeps;
DWORD tick_count = 1000;
std::size_t global_blocks;
unsigned allocations_to_failure;

template <class Function>
Function* SystemFunction(const char* library, const char* name) {
  void* const address =
      reinterpret_cast<void*>(::GetProcAddress(::LoadLibraryA(library), name));
  return reinterpret_cast<Function*>(address);
}

HGLOBAL WINAPI CountedGlobalAlloc(UINT flags, SIZE_T bytes) {
  static auto* const alloc =
      SystemFunction<HGLOBAL WINAPI(UINT, SIZE_T)>("kernel32", "GlobalAlloc");
  const bool fails =
      allocations_to_failure > 0 && --allocations_to_failure == 0;
  const HGLOBAL block = fails ? nullptr : alloc(flags, bytes);
  global_blocks += block != nullptr;
  return block;
}

HGLOBAL WINAPI CountedGlobalFree(HGLOBAL block) {
  static auto* const free =
      SystemFunction<HGLOBAL WINAPI(HGLOBAL)>("kernel32", "GlobalFree");
  global_blocks -= block != nullptr;
  return free(block);
}

int WINAPI NotedBox(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
  static auto* const box =
      SystemFunction<int WINAPI(HWND, LPCSTR, LPCSTR, UINT)>("user32",
                                                             "MessageBoxA");
  box_type = type;
  return box(owner, text, caption, type);
}

BOOL WINAPI NotedBeep(UINT type) {
  beeps.push_back(type);
  return kBeepAnswer;
}

DWORD WINAPI AdvancedTickCount() { return tick_count; }

// A metafile has no pages: comments stand for them.
int NotePage(HDC dc, const char* call) {
  ::GdiComment(dc, static_cast<UINT>(std::strlen(call)),
               reinterpret_cast<const BYTE*>(call));
  return 1;
}

int WINAPI NotedStartPage(HDC dc) { return NotePage(dc, "start page"); }
int WINAPI NotedEndPage(HDC dc) { return NotePage(dc, "end page"); }

LRESULT CALLBACK BoxHook(int code, WPARAM window, LPARAM details) {
  char class_name[8] = {};
  const HWND box = reinterpret_cast<HWND>(window);
  if (code != HCBT_ACTIVATE || !::GetClassNameA(box, class_name, 8) ||
      std::strcmp(class_name, "#32770") != 0) {  // dialogs
    return ::CallNextHookEx(box_hook, code, window, details);
  }
  constexpr int kTextOfBox = 0xFFFF;
  char caption[256] = {}, text[1024] = {};
  ::GetWindowTextA(box, caption, sizeof(caption));
  ::GetDlgItemTextA(box, kTextOfBox, text, sizeof(text));
  shown_boxes.push_back({::GetWindow(box, GW_OWNER), text, caption, box_type});
  if (box_action) box_action();
  ::PostMessageA(box, WM_COMMAND, IDOK, 0);
  return 0;
}

int CALLBACK NoteRecord(HDC, HANDLETABLE*, const ENHMETARECORD* record, int,
                        LPARAM printed) {
  auto& text = *reinterpret_cast<std::string*>(printed);
  const auto* const bytes = reinterpret_cast<const char*>(record);
  if (record->iType == EMR_GDICOMMENT) {
    const auto& comment = *reinterpret_cast<const EMRGDICOMMENT*>(record);
    text.append(reinterpret_cast<const char*>(comment.Data), comment.cbData);
    text += "\n";
  } else if (record->iType == EMR_EXTTEXTOUTW) {
    const auto& drawn =
        reinterpret_cast<const EMREXTTEXTOUTW*>(record)->emrtext;
    const auto* const wide =
        reinterpret_cast<const wchar_t*>(bytes + drawn.offString);
    std::string line(drawn.nChars, '?');
    ::WideCharToMultiByte(CP_ACP, 0, wide, static_cast<int>(drawn.nChars),
                          line.data(), static_cast<int>(line.size()), nullptr,
                          nullptr);
    text += std::to_string(drawn.ptlReference.x) + "," +
            std::to_string(drawn.ptlReference.y) + " " + line + "\n";
  }
  return 1;
}

}  // namespace

extern "C" {
[[gnu::used]] extern void* const import_global_alloc asm(
    "__imp__GlobalAlloc@8") = reinterpret_cast<void*>(&CountedGlobalAlloc);
[[gnu::used]] extern void* const import_global_free asm("__imp__GlobalFree@4") =
    reinterpret_cast<void*>(&CountedGlobalFree);
[[gnu::used]] extern void* const import_message_box asm(
    "__imp__MessageBoxA@16") = reinterpret_cast<void*>(&NotedBox);
[[gnu::used]] extern void* const import_message_beep asm(
    "__imp__MessageBeep@4") = reinterpret_cast<void*>(&NotedBeep);
[[gnu::used]] extern void* const import_tick_count asm(
    "__imp__GetTickCount@0") = reinterpret_cast<void*>(&AdvancedTickCount);
[[gnu::used]] extern void* const import_start_page asm("__imp__StartPage@4") =
    reinterpret_cast<void*>(&NotedStartPage);
[[gnu::used]] extern void* const import_end_page asm("__imp__EndPage@4") =
    reinterpret_cast<void*>(&NotedEndPage);
}

MessageBoxRecorder::MessageBoxRecorder() {
  shown_boxes.clear();
  box_action = nullptr;
  box_hook =
      ::SetWindowsHookExA(WH_CBT, &BoxHook, nullptr, ::GetCurrentThreadId());
}

MessageBoxRecorder::~MessageBoxRecorder() {
  ::UnhookWindowsHookEx(box_hook);
  box_action = nullptr;
}

const std::vector<ShownBox>& MessageBoxRecorder::Boxes() const {
  return shown_boxes;
}

void MessageBoxRecorder::WhileBoxIsOpen(std::function<void()> action) {
  box_action = std::move(action);
}

std::vector<UINT> TakeBeeps() { return std::exchange(beeps, {}); }

PrinterRecorder::PrinterRecorder()
    : dc_(::CreateEnhMetaFileA(nullptr, nullptr, nullptr, nullptr)) {}

PrinterRecorder::~PrinterRecorder() {
  if (dc_ != nullptr) ::DeleteEnhMetaFile(::CloseEnhMetaFile(dc_));
}

std::string PrinterRecorder::Printed() {
  std::string printed;
  const HENHMETAFILE file = ::CloseEnhMetaFile(dc_);
  dc_ = nullptr;
  ::EnumEnhMetaFile(nullptr, file, &NoteRecord, &printed, nullptr);
  ::DeleteEnhMetaFile(file);
  return printed;
}

void AdvanceTicks(DWORD milliseconds) { tick_count += milliseconds; }

std::size_t GlobalBlocks() { return global_blocks; }

void ForgetGlobalBlocks() { global_blocks = 0; }

void FailGlobalAlloc(unsigned count) { allocations_to_failure = count; }

std::string RaisedText(const std::function<void()>& action) {
  const std::optional<host::CallFailure> failure =
      host::Guarded([&] { action(); });
  return failure ? failure->text : "";
}

}  // namespace dicom::testing
