#ifndef HOST_MODULE_TREE_READER_H_
#define HOST_MODULE_TREE_READER_H_

#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <optional>
#include <vector>

#include "host/rows/decoded_row.h"

namespace host {

// The lines of a tree, and the item of each.
struct ReadLines {
  std::vector<TreeLine> lines;
  std::vector<HTREEITEM> items;
};

// Reads every line of a tree view that the module filled, collapsed ones
// included, in one pass and without a limit to depth or length.
ReadLines ReadTree(HWND tree);

// The bytes that the module has tied to an item, by the item's data; empty for
// the lines without.
std::optional<ByteRange> BytesOfItem(LPARAM item_data);

}  // namespace host

#endif  // HOST_MODULE_TREE_READER_H_
