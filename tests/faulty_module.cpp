// A module with the ten exports that lists each packet with payload as a row,
// and that fails where the environment variable FAULT tells it to:
//   fail@N   the list driver fails at packet N, and reports every third failure
//            in a message box, as the real module does
//   stuck@N  never takes packet N
//   pump@N   lets the host's messages in at packet N, as the real module does in
//            long calls
//   listcrash  the list driver raises an access violation
//   raise@N  the display of row N (from 0) raises the decode exception
//   crash@N  the display of row N raises an access violation
#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "interface/host_interface.h"

namespace {

struct Context {
  int position = -1;
  int rows = 0;
};

std::map<HWND, Context> contexts;
int failures = 0;
bool display_is_busy = false;

bool IsTold(const char* fault, int place) {
  char faults[256] = "";
  GetEnvironmentVariableA("FAULT", faults, sizeof faults);
  const std::string told = " " + std::string(faults) + " ";
  const std::string wanted =
      place < 0 ? fault : std::string(fault) + "@" + std::to_string(place);
  return told.find(" " + wanted + " ") != std::string::npos;
}

void Crash() { RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr); }

// Counts three failures for each box, by steps of 1 and 2.
std::uint32_t Fail(HWND host) {
  if (++failures % 5 != 0) {
    ++failures;
    contexts.erase(host);
    return DICOM_LIST_UP_TO_DATE;
  }
  failures = 0;
  MessageBoxA(host, "Out of Range", "Exception", MB_OK);
  return DICOM_LIST_FAILED;
}

void Pump() {
  MSG message;
  while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
    DispatchMessageA(&message);
  }
}

enum class Step { kTaken, kNoMore, kFailed };

Step TakePacket(HWND host, Context& context, int count) {
  static DicomPacketRecord record;
  const int next = context.position + 1;
  if (next >= count || IsTold("stuck", next)) return Step::kNoMore;
  record.index = context.position;
  record.buffer_size = sizeof record;
  if (SendMessageA(host, DICOM_HOST_MESSAGE, DICOM_FETCH_NEXT_PACKET,
                   reinterpret_cast<LPARAM>(&record)) != 0) {
    return Step::kNoMore;
  }
  context.position = record.index;
  if (IsTold("pump", next)) Pump();
  if (IsTold("fail", next)) return Step::kFailed;
  if (record.tcp_bytes > 20) ++context.rows;
  return Step::kTaken;
}

void FillRow(PacketListRow& row, std::uint32_t position, bool message_view) {
  std::memset(&row, 0, sizeof row);
  row.number = position + 1;
  row.length = 100 * position;
  std::strcpy(row.summary, message_view ? "C-ECHO-RQ" : "P-DATA-TF PDU");
}

HTREEITEM AddLine(HWND tree, HTREEITEM parent, const std::string& text,
                  std::uint32_t offset) {
  auto* bytes = static_cast<DicomByteRangeRecord*>(
      GlobalAlloc(GPTR, sizeof(DicomByteRangeRecord)));
  *bytes = {1, offset, 2};
  TVINSERTSTRUCTA insertion{};
  insertion.hParent = parent;
  insertion.hInsertAfter = TVI_LAST;
  insertion.item.mask = TVIF_TEXT | TVIF_PARAM;
  insertion.item.pszText = const_cast<char*>(text.c_str());
  insertion.item.lParam = reinterpret_cast<LPARAM>(bytes);
  return reinterpret_cast<HTREEITEM>(SendMessageA(
      tree, TVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&insertion)));
}

void RaiseDecodeException() {
  static const char text[] = "Out of Memory";
  const auto argument = reinterpret_cast<ULONG_PTR>(text);
  RaiseException(DICOM_DECODE_EXCEPTION, EXCEPTION_NONCONTINUABLE, 1,
                 &argument);
}

}  // namespace

extern "C" {

int32_t WINAPI GetDicomDllVersion() { return 0x0102; }
void WINAPI DicomRegisterParent(uint32_t) {}
void WINAPI DicomPacketCaptureStart(uint32_t) {}
void WINAPI RefreshDicomDecode(HWND host) { contexts.erase(host); }
void WINAPI DicomDeRegisterParent(HWND host) { contexts.erase(host); }

uint32_t WINAPI GetDicomPacketList(HWND host, PacketListRow* rows,
                                   int32_t* first, uint32_t* wanted,
                                   uint32_t* first_available,
                                   uint32_t* last_available,
                                   uint32_t message_view, uint32_t live) {
  if (IsTold("listcrash", -1)) Crash();
  int count = -1;
  SendMessageA(host, DICOM_HOST_MESSAGE, DICOM_COUNT_PACKETS,
               reinterpret_cast<LPARAM>(&count));
  Context& context = contexts[host];
  Step step = Step::kTaken;
  for (int i = 0; i < 60 && step == Step::kTaken; ++i) {
    step = TakePacket(host, context, count);
  }
  if (step == Step::kFailed) return Fail(host);
  *first_available = 0;
  *last_available = static_cast<uint32_t>(context.rows) - 1;
  if (context.rows == 0) {
    *first = -1;
    *wanted = 0;
  }
  for (uint32_t i = 0; i < *wanted && i < DICOM_ROWS_PER_CALL &&
                       static_cast<int>(i) + *first < context.rows;
       ++i) {
    FillRow(rows[i], static_cast<uint32_t>(*first) + i, message_view != 0);
  }
  return step == Step::kTaken && live == 0 ? DICOM_LIST_CALL_AGAIN
                                           : DICOM_LIST_UP_TO_DATE;
}

void WINAPI DisplayDicomPacket(HWND, HWND tree, int32_t index, const uint32_t*,
                               HWND hex, uint32_t) {
  if (display_is_busy) return;
  display_is_busy = true;
  SendMessageA(tree, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
  SetWindowTextA(hex, "0000  E9  \xE9\r\n");
  const HTREEITEM top = AddLine(tree, nullptr, "Row \xE9\x80", 0);
  const HTREEITEM open = AddLine(tree, top, std::string(200000, 'x'), 7);
  if (IsTold("raise", index)) RaiseDecodeException();
  if (IsTold("crash", index)) Crash();
  AddLine(tree, open, "deepest", 8);
  AddLine(tree, top, "last", 9);
  AddLine(tree, nullptr, "second section", 10);
  display_is_busy = false;
}

BOOL WINAPI ClearDicomDisplay(uint32_t, HWND, HWND) { return TRUE; }
BOOL WINAPI SaveDicomDecodeToFile(HWND) { return TRUE; }
BOOL WINAPI PrintDicomDecode(HWND, uint32_t) { return TRUE; }

}  // extern "C"
