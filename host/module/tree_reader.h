#ifndef HOST_MODULE_TREE_READER_H_
#define HOST_MODULE_TREE_READER_H_

#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <vector>

#include "host/rows/decoded_row.h"

namespace host {

// Reads every line of a tree view that the module filled, collapsed ones
// included, in one pass and without a limit to depth or length. `items`
// receives the item of each line unless it is null.
std::vector<TreeLine> ReadTree(HWND tree,
                               std::vector<HTREEITEM>* items = nullptr);

}  // namespace host

#endif  // HOST_MODULE_TREE_READER_H_
