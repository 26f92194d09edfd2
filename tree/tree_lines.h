#ifndef TREE_TREE_LINES_H_
#define TREE_TREE_LINES_H_

#include <windows.h>
#include <commctrl.h>

#include <cstdint>

#include "interface/host_interface.h"
#include "tree/global_block.h"

namespace dicom {

// Where the lines of one display go. All of it stays the host's.
struct LineTarget {
  HWND host_window;  // its display state may send the lines elsewhere
  HWND tree_window;
  const std::uint32_t* image_table;  // null: every line has image 0
};

// The item data of a tree item: which bytes of the hex window's buffer its line
// describes, clamped to what the host highlights. The host reads it, ClearTree
// frees it. Null when there is no memory; the line is then shown without a
// range.
GlobalBlock<DicomByteRangeRecord> MakeByteRange(std::uint32_t section,
                                                std::uint32_t offset,
                                                std::uint32_t length);

// Both insert a line and answer its item, which then owns `record`; null, and
// the record freed, when the tree view refuses. While the host prints or saves
// they send the line there and answer the marker 1000, which stands for a
// parent like any item. `image_entry` is an entry of the image table: the last
// one serves for all that are higher. `text` is read during the call only.

// A line without a parent.
HTREEITEM InsertTopLine(const LineTarget& target, const char* text,
                        std::int32_t image_entry,
                        GlobalBlock<DicomByteRangeRecord> record);

// The last line below `parent`, which may be null when its own insertion
// failed.
HTREEITEM InsertTreeLine(const LineTarget& target, HTREEITEM parent,
                         const char* text, std::int32_t image_entry,
                         GlobalBlock<DicomByteRangeRecord> record);

// Expands or collapses what is below the item. Sends nothing while the host
// prints or saves.
void ExpandTreeLine(const LineTarget& target, HTREEITEM item, bool expand);

// Frees every item's record and removes all items, whatever made them. Needs
// no memory for a tree of ours, however many lines it has.
void ClearTree(HWND tree_window);

}  // namespace dicom

#endif  // TREE_TREE_LINES_H_
