#ifndef TREE_TREE_OUTPUT_H_
#define TREE_TREE_OUTPUT_H_

#include <windows.h>
#include <commctrl.h>

#include <cstdint>

#include "tree/global_block.h"

namespace dicom {

// The item data of every tree item: which bytes of the hex window's buffer its
// line describes. The host reads it; ClearTree frees it. A locked GlobalAlloc
// block.
struct ByteRangeRecord {
  std::uint32_t section;
  std::uint32_t offset;
  std::uint32_t length;
};
static_assert(sizeof(ByteRangeRecord) == 12);

// A new record, clamped to what the host highlights; null when there is no
// memory, and the line is then shown without a range.
GlobalBlock<ByteRangeRecord> MakeByteRange(std::uint32_t section,
                                           std::uint32_t offset,
                                           std::uint32_t length);

// Inserts a line and answers its item, which then owns `record` (null, and the
// record freed, when the tree view refuses); or, while the host prints or
// saves, sends the line there and answers the marker 1000. An `image_index` is
// an image, not an entry of a TreeImageTable.
HTREEITEM InsertTreeLine(HWND host_window, HTREEITEM parent_item,
                         const char* text, HTREEITEM insert_after,
                         std::uint32_t image_index, HWND tree_window,
                         GlobalBlock<ByteRangeRecord> record);

// `code` is TVE_EXPAND or TVE_COLLAPSE. Answers 1, sending nothing, while the
// host prints or saves.
LRESULT ExpandTreeLine(HWND host_window, HWND tree_window, HTREEITEM item,
                       UINT code);

// Frees every item's record and removes all items; answers what the removal
// answered.
LRESULT ClearTree(HWND tree_window);

// Replaces the hex window's text with a dump of the bytes, 16 a line.
// Answers 1.
std::uint32_t ShowHexDump(HWND hex_window, const std::uint8_t* bytes,
                          std::uint32_t length);

// Adds `caption` as a top line with a hex dump of `length` bytes below it, one
// line for 16 bytes. `bytes` points at the first dumped byte, `offset` is its
// place in the hex window's buffer. A section that is `optional` is left out
// when the host shows no message data. Answers 0 when `length` is less than 1,
// else 1.
std::uint32_t AddHexDumpSection(HWND host_window, HWND tree_window,
                                const std::uint8_t* bytes, std::uint32_t offset,
                                std::int32_t length, const char* caption,
                                std::uint32_t optional,
                                const std::uint32_t* image_table);

// Entry `entry` of the host's image table: 0 without a table, entry 13 for
// anything above.
std::uint32_t TreeImage(const std::uint32_t* image_table, std::int32_t entry);

}  // namespace dicom

#endif  // TREE_TREE_OUTPUT_H_
