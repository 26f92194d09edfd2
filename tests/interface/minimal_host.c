/*
 * The smallest host: checks that the DLL's failures stay inside it or arrive
 * as the documented exception, whatever runtime the host was linked with. It
 * is built as C, as C++ with a static runtime and as C++ with the shared one
 * (whose libgcc used to take the DLL's handlers away). Run it in a folder
 * without dictionaries; its argument is the DLL's folder. Exit code 0: all is
 * well; else the number of the failed step.
 */
#include "interface/host_interface.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef __cplusplus
#include <stdexcept>
#endif

#define PACKETS 6
#define SYN 0x02
#define ACK 0x10

static struct {
  uint32_t direction, sequence, acknowledgement;
  uint8_t flags, payload_length;
} const kPackets[PACKETS] = {
    {0, 10, 0, SYN, 0},  {1, 50, 11, SYN | ACK, 0}, {0, 11, 51, ACK, 0},
    {0, 11, 51, ACK, 10}, {1, 51, 21, ACK, 0},
    {1, 51, 21, ACK, 0}, /* made too short for a TCP header */
};
static int32_t packet_count = PACKETS;

static void PutBig32(uint8_t* to, uint32_t value) {
  to[0] = (uint8_t)(value >> 24);
  to[1] = (uint8_t)(value >> 16);
  to[2] = (uint8_t)(value >> 8);
  to[3] = (uint8_t)value;
}

static LRESULT Deliver(DicomPacketRecord* record, int32_t index) {
  static const uint8_t kAbort[10] = {7, 0, 0, 0, 0, 4, 0, 0, 0, 0};
  if (index < 0 || index >= packet_count) return 1;
  memset(record->bytes, 0, 40);
  PutBig32(record->bytes + 4, kPackets[index].sequence);
  PutBig32(record->bytes + 8, kPackets[index].acknowledgement);
  record->bytes[12] = 0x50;
  record->bytes[13] = kPackets[index].flags;
  memcpy(record->bytes + 20, kAbort, sizeof(kAbort));
  record->tcp_bytes = index == 5 ? 13 : 20u + kPackets[index].payload_length;
  record->direction = kPackets[index].direction;
  record->index = index;
  return 0;
}

static LRESULT CALLBACK HostProcedure(HWND window, UINT message, WPARAM wparam,
                                      LPARAM lparam) {
  DicomPacketRecord* const record = (DicomPacketRecord*)lparam;
  if (message != DICOM_HOST_MESSAGE) {
    return DefWindowProcA(window, message, wparam, lparam);
  }
  switch (wparam) {
    case DICOM_COUNT_PACKETS:
      *(int32_t*)lparam = packet_count;
      return 0;
    case DICOM_FETCH_NEXT_PACKET:
      return Deliver(record, record->index + 1);
    case DICOM_FETCH_PACKET:
      return Deliver(record, record->index);
    default:
      return 1;
  }
}

static HWND MakeHostWindow(void) {
  WNDCLASSA window_class;
  memset(&window_class, 0, sizeof(window_class));
  window_class.lpfnWndProc = HostProcedure;
  window_class.cbWndExtra = DICOM_DISPLAY_STATE_INDEX + 4;
  window_class.lpszClassName = "MinimalHost";
  RegisterClassA(&window_class);
  return CreateWindowExA(0, "MinimalHost", "", WS_OVERLAPPEDWINDOW, 0, 0, 100,
                         100, NULL, NULL, NULL, NULL);
}

/* The last step: what leaves the display must come as the documented
 * exception, with a text. */
static LONG CALLBACK EndWell(EXCEPTION_POINTERS* pointers) {
  const EXCEPTION_RECORD* const raised = pointers->ExceptionRecord;
  if (raised->ExceptionCode != DICOM_DECODE_EXCEPTION) {
    return EXCEPTION_CONTINUE_SEARCH;
  }
  printf("raised: %s\n", (const char*)raised->ExceptionInformation[0]);
  fflush(stdout);
  ExitProcess(raised->NumberParameters == 1 ? 0 : 10);
  return EXCEPTION_CONTINUE_SEARCH;
}

static int Require(int step, int holds) {
  if (!holds) {
    printf("step %d failed\n", step);
    exit(step);
  }
  return step;
}

int main(int argc, char** argv) {
  char path[MAX_PATH];
  HMODULE module;
  GetDicomPacketListFunction list;
  DisplayDicomPacketFunction display;
  HWND window;
  int32_t first = 0;
  uint32_t count = 0, first_available = 0, last_available = 0;

#ifdef __cplusplus
  try {
    throw std::runtime_error("the host's own");
  } catch (const std::exception&) {
  }
#endif
  Require(1, argc == 2);
  snprintf(path, sizeof(path), "%s/DicomDecode.dll", argv[1]);
  module = LoadLibraryA(path);
  Require(2, module == NULL && GetLastError() == ERROR_DLL_INIT_FAILED);
  SetCurrentDirectoryA(argv[1]);
  module = LoadLibraryA("DicomDecode.dll");
  Require(3, module != NULL);
  list = (GetDicomPacketListFunction)(void*)GetProcAddress(
      module, "GetDicomPacketList");
  display = (DisplayDicomPacketFunction)(void*)GetProcAddress(
      module, "DisplayDicomPacket");
  window = MakeHostWindow();
  Require(4, list != NULL && display != NULL && window != NULL);
  /* Throws and catches inside: the first failure is not reported. */
  Require(5, list(window, NULL, &first, &count, &first_available,
                  &last_available, 0, 1) == DICOM_LIST_UP_TO_DATE);
  packet_count = 5;
  list(window, NULL, &first, &count, &first_available, &last_available, 0, 1);
  Require(6, last_available == 0);
  AddVectoredExceptionHandler(1, EndWell);
  display(window, NULL, -1, NULL, NULL, 0);
  Require(7, 0);
  return 0;
}
