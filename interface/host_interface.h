/*
 * The interface between DicomDecode.dll and the network analyzer that loads it. A host's author
 * needs no other file; it compiles as C and as C++, for 32-bit Windows.
 *
 * All calls come on the thread that owns the host window. Records are little-endian with fixed
 * offsets. Handles, the row array, the image table and the display state stay the host's.
 */
#ifndef INTERFACE_HOST_INTERFACE_H_
#define INTERFACE_HOST_INTERFACE_H_

#include <stddef.h>
#include <stdint.h>
#include <windows.h>

#ifdef __cplusplus
extern "C" {
#define DICOM_HOST_ASSERT(condition) static_assert(condition, #condition)
#else
#define DICOM_HOST_ASSERT(condition) _Static_assert(condition, #condition)
#endif

/*
 * The message by which the module asks the host window for packets. wParam is one of the codes;
 * the answer is 0 for success, anything else for "refused".
 */
#define DICOM_HOST_MESSAGE 3035
#define DICOM_FETCH_PACKET 150      /* lParam: DicomPacketRecord*; the packet of record->index */
#define DICOM_FETCH_NEXT_PACKET 151 /* lParam: DicomPacketRecord*; the packet after record->index */
#define DICOM_COUNT_PACKETS 153     /* lParam: int32_t*, preset to -1; receives the packet count */

#define DICOM_PACKET_RECORD_SIZE 16000
#define DICOM_PACKET_BYTES 15976

/* One captured packet. Packets are numbered from 0; they begin at the TCP header. */
typedef struct DicomPacketRecord {
  int32_t index;        /* in: asked for (150) or last seen (151, -1: none); out: delivered */
  uint32_t buffer_size; /* in: always 16000 */
  uint32_t tcp_bytes;   /* out: number of bytes delivered, at most 15976 */
  uint32_t direction;   /* out: 0 for one side of the connection, not 0 for the other */
  uint8_t reserved[8];  /* the host's; the module neither reads nor clears them */
  uint8_t bytes[DICOM_PACKET_BYTES]; /* out: from the first byte of the TCP header */
} DicomPacketRecord;
DICOM_HOST_ASSERT(offsetof(DicomPacketRecord, tcp_bytes) == 8);
DICOM_HOST_ASSERT(offsetof(DicomPacketRecord, direction) == 12);
DICOM_HOST_ASSERT(offsetof(DicomPacketRecord, bytes) == 24);
DICOM_HOST_ASSERT(sizeof(DicomPacketRecord) == DICOM_PACKET_RECORD_SIZE);

/*
 * One row of the packet list, as GetDicomPacketList fills it. A row has a position, which counts
 * from 0 and is what a host asks for, and a number to be shown. Numbers count from 1 over both
 * directions, in the order in which PDUs or messages begin; rows come in the order in which they
 * end, and a message may be listed more than once.
 *
 * The number 0 stands for what had no beginning: bytes behind a PDU header that a segment's end
 * cut, message data before any command. At the end of the capture the list is closed, once for each
 * direction; a direction without a message then puts one of number 0, empty, in the place of the
 * first message row.
 */
#pragma pack(push, 1)
typedef struct PacketListRow {
  uint32_t number;       /* of the PDU or message; 0: see above */
  uint32_t direction;    /* 0 or 1 */
  uint32_t reserved1;    /* 0 */
  uint32_t reserved2;    /* 0 */
  uint32_t length;       /* bytes of it that were seen */
  uint16_t reserved3;    /* 0 */
  char summary[81];      /* PDU name or DIMSE command, terminated */
  char detail[81];       /* message ID text, terminated; empty in the PDU view */
} PacketListRow;
#pragma pack(pop)
DICOM_HOST_ASSERT(offsetof(PacketListRow, length) == 16);
DICOM_HOST_ASSERT(offsetof(PacketListRow, summary) == 22);
DICOM_HOST_ASSERT(offsetof(PacketListRow, detail) == 103);
DICOM_HOST_ASSERT(sizeof(PacketListRow) == 184);

#define DICOM_ROWS_PER_CALL 40 /* rows that one GetDicomPacketList writes at most */

/* Codes in the low 16 bits of GetDicomPacketList's answer; the high 16 bits are the progress in
 * per cent. */
#define DICOM_LIST_FAILED 0     /* the count was refused, or a failure was shown to the user */
#define DICOM_LIST_UP_TO_DATE 1 /* nothing more for now */
#define DICOM_LIST_CALL_AGAIN 2 /* more packets remain */

/*
 * The item data (lParam) of every tree item: the bytes that the line describes, as a range of the
 * bytes in the hex window. Global memory of the module, freed when the tree is cleared; may be
 * null. Ranges end at DICOM_HIGHLIGHT_LIMIT.
 */
typedef struct DicomByteRangeRecord {
  uint32_t section; /* 1, 2, ...; 8 for the lines of a hex dump section */
  uint32_t offset;
  uint32_t length;
} DicomByteRangeRecord;
DICOM_HOST_ASSERT(sizeof(DicomByteRangeRecord) == 12);
#define DICOM_HIGHLIGHT_LIMIT 13808

/*
 * HostDisplayState: a block of the host's, whose address the host window keeps in its extra window
 * memory at byte index 36 (GetWindowLongA(hostWindow, 36)). Fields by byte offset:
 */
#define DICOM_DISPLAY_STATE_INDEX 36
#define DICOM_STATE_SHOW_MESSAGE_DATA 108    /* uint32_t; 0 leaves out optional hex dump sections */
#define DICOM_STATE_OUTPUT_MODE 3602         /* char: '7' prints, '8' saves, else the tree */
#define DICOM_STATE_LINE_HEIGHT 3606         /* int32_t, printing: device units between lines */
#define DICOM_STATE_LINES_PER_PAGE 3610      /* int32_t, printing */
#define DICOM_STATE_CURRENT_LINE 3614        /* int32_t, printing: counted from 1; module advances */
#define DICOM_STATE_FILE_HANDLE 3622         /* HFILE, saving: written with _lwrite */
#define DICOM_STATE_PRINTER_DC 3626          /* HDC, printing */
#define DICOM_STATE_SECTION_EXPAND_MASK 3638 /* uint32_t; bit 8 expands hex dump sections */
#define DICOM_STATE_SIZE 3642                /* bytes that the block has at least */

#define DICOM_IMAGE_TABLE_ENTRIES 14 /* TreeImageTable: image indices, uint32_t each */

/*
 * When a failure leaves DisplayDicomPacket, the module raises this Win32 exception with one
 * argument, the address of the failure's text (zero-terminated, in the module). The module then
 * refuses every further display: free the library and load it again.
 */
#define DICOM_DECODE_EXCEPTION 0xE0444344u

/* The ten exports: stdcall, with undecorated names. */
typedef int32_t(WINAPI* GetDicomDllVersionFunction)(void); /* (major << 8) + minor */
typedef void(WINAPI* DicomRegisterParentFunction)(uint32_t parent);      /* does nothing */
typedef void(WINAPI* DicomPacketCaptureStartFunction)(uint32_t parent);  /* does nothing */
/* Forgets all that is known of the window's capture; the next list call reads it anew. */
typedef void(WINAPI* RefreshDicomDecodeFunction)(HWND host_window);
typedef void(WINAPI* DicomDeRegisterParentFunction)(HWND host_window); /* the same */
/*
 * Reads at most 60 further segments and copies at most 40 rows.
 * first_index: in/out, position of the first row; -1 on return when the list is empty.
 * row_count: in/out, rows wanted; clamped to the list, not to 40.
 * first_available, last_available: out; 0 and the number of records - 1.
 * message_view: 0 lists PDUs, else DIMSE messages. live: not 0 while the capture still grows.
 */
typedef uint32_t(WINAPI* GetDicomPacketListFunction)(HWND host_window, PacketListRow* rows,
                                                     int32_t* first_index, uint32_t* row_count,
                                                     uint32_t* first_available,
                                                     uint32_t* last_available,
                                                     uint32_t message_view, uint32_t live);
/* Shows the PDU or message at position `index` of the list. image_table: 14 entries. */
typedef void(WINAPI* DisplayDicomPacketFunction)(HWND host_window, HWND tree_window, int32_t index,
                                                 const uint32_t* image_table, HWND hex_window,
                                                 uint32_t message_view);
/* Frees and removes all tree items and empties the hex window; SetWindowTextA's answer. */
typedef BOOL(WINAPI* ClearDicomDisplayFunction)(uint32_t unused, HWND tree_window, HWND hex_window);
/* Both refuse with a message box; MessageBeep's answer. */
typedef BOOL(WINAPI* SaveDicomDecodeToFileFunction)(HWND owner);
typedef BOOL(WINAPI* PrintDicomDecodeFunction)(HWND owner, uint32_t unused);

#undef DICOM_HOST_ASSERT
#ifdef __cplusplus
}
#endif

#endif /* INTERFACE_HOST_INTERFACE_H_ */
