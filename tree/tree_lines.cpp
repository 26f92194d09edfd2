#include "tree/tree_lines.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory_resource>
#include <string>
#include <vector>

#include "tree/display_state.h"

namespace dicom {
namespace {

// What a diverted line answers instead of a tree item.
const HTREEITEM kDivertedItem =
    reinterpret_cast<HTREEITEM>(std::uintptr_t{1000});

struct Place {
  HTREEITEM parent;
  HTREEITEM insert_after;
};

void PrintLine(const HostDisplayState& state, const std::string& line) {
  // Unsigned, because the host's numbers may be anything.
  const auto y = static_cast<std::uint32_t>(state.LineHeight()) *
                 static_cast<std::uint32_t>(state.CurrentLine());
  ::TextOutA(state.PrinterDc(), 0, static_cast<int>(y), line.c_str(),
             static_cast<int>(line.size()));
  const auto next = static_cast<std::int32_t>(
      static_cast<std::uint32_t>(state.CurrentLine()) + 1);
  state.SetCurrentLine(next);
  if (next <= state.LinesPerPage()) return;
  state.SetCurrentLine(1);
  ::EndPage(state.PrinterDc());
  ::StartPage(state.PrinterDc());
}

// Sends the line to the host's printer or file. False when the host does
// neither, and the line belongs in the tree.
bool DivertLine(HWND host_window, const char* text, HTREEITEM parent) {
  const HostDisplayState state(host_window);
  if (!state.DivertsLines()) return false;
  // Deliberate: one step of indentation, however deep the line is.
  std::string line = parent != nullptr ? "    " : "";
  line += text;
  if (state.Prints()) {
    PrintLine(state, line);
  } else {
    line += "\r\n";
    ::_lwrite(state.File(), line.c_str(), static_cast<UINT>(line.size()));
  }
  return true;
}

// The host may end its printing between two lines: the marker then names no
// item of the tree.
HTREEITEM ItemOrNone(HTREEITEM item) {
  return item == kDivertedItem ? nullptr : item;
}

std::uint32_t TreeImage(const std::uint32_t* image_table, std::int32_t entry) {
  constexpr std::uint32_t kLastEntry = DICOM_IMAGE_TABLE_ENTRIES - 1;
  if (image_table == nullptr) return 0;
  return image_table[std::min(static_cast<std::uint32_t>(entry), kLastEntry)];
}

HTREEITEM Insert(const LineTarget& target, const Place& place, const char* text,
                 std::int32_t image_entry,
                 GlobalBlock<DicomByteRangeRecord> record) {
  if (DivertLine(target.host_window, text, place.parent)) {
    // Deliberate: the record of a diverted line is not freed.
    static_cast<void>(record.release());
    return kDivertedItem;
  }
  const std::uint32_t image = TreeImage(target.image_table, image_entry);
  TVINSERTSTRUCTA insertion{};
  insertion.hParent = ItemOrNone(place.parent);
  insertion.hInsertAfter = place.insert_after;
  insertion.item.mask =
      TVIF_TEXT | TVIF_IMAGE | TVIF_PARAM | TVIF_SELECTEDIMAGE;
  insertion.item.pszText = const_cast<char*>(text);  // read only
  insertion.item.cchTextMax = static_cast<int>(std::strlen(text));
  insertion.item.iImage = static_cast<int>(image);
  insertion.item.iSelectedImage = static_cast<int>(image);
  insertion.item.lParam = reinterpret_cast<LPARAM>(record.get());
  const auto item = reinterpret_cast<HTREEITEM>(
      ::SendMessageA(target.tree_window, TVM_INSERTITEMA, 0,
                     reinterpret_cast<LPARAM>(&insertion)));
  if (item != nullptr) static_cast<void>(record.release());
  return item;
}

HTREEITEM NextItem(HWND tree_window, WPARAM relation, HTREEITEM item) {
  return reinterpret_cast<HTREEITEM>(::SendMessageA(
      tree_window, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

void FreeItemRecord(HWND tree_window, HTREEITEM handle) {
  TVITEMA item{};
  item.mask = TVIF_PARAM;
  item.hItem = handle;
  ::SendMessageA(tree_window, TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item));
  if (item.lParam == 0) return;
  GlobalBlockFree()(reinterpret_cast<void*>(item.lParam));
  item.lParam = 0;
  ::SendMessageA(tree_window, TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&item));
}

}  // namespace

GlobalBlock<DicomByteRangeRecord> MakeByteRange(std::uint32_t section,
                                                std::uint32_t offset,
                                                std::uint32_t length) {
  if (offset >= DICOM_HIGHLIGHT_LIMIT) {
    offset = 0;
    length = 0;
  }
  // Subtracts, since the sum may wrap.
  length = std::min(length, DICOM_HIGHLIGHT_LIMIT - offset);
  auto record = AllocateGlobalBlock<DicomByteRangeRecord>();
  if (record != nullptr) *record = {section, offset, length};
  return record;
}

HTREEITEM InsertTopLine(const LineTarget& target, const char* text,
                        std::int32_t image_entry,
                        GlobalBlock<DicomByteRangeRecord> record) {
  // Deliberate: top lines are inserted after TVI_ROOT, not TVI_LAST.
  return Insert(target, {nullptr, TVI_ROOT}, text, image_entry,
                std::move(record));
}

HTREEITEM InsertTreeLine(const LineTarget& target, HTREEITEM parent,
                         const char* text, std::int32_t image_entry,
                         GlobalBlock<DicomByteRangeRecord> record) {
  return Insert(target, {parent, TVI_LAST}, text, image_entry,
                std::move(record));
}

void ExpandTreeLine(const LineTarget& target, HTREEITEM item, bool expand) {
  if (HostDisplayState(target.host_window).DivertsLines()) return;
  ::SendMessageA(target.tree_window, TVM_EXPAND,
                 expand ? TVE_EXPAND : TVE_COLLAPSE,
                 reinterpret_cast<LPARAM>(ItemOrNone(item)));
}

void ClearTree(HWND tree_window) {
  // No recursion: a tree may be any depth. Our own are never deeper than this
  // first room, so that clearing them needs no memory.
  std::array<HTREEITEM, 32> room;
  std::pmr::monotonic_buffer_resource resource(room.data(), sizeof(room));
  std::pmr::vector<HTREEITEM> parents(&resource);
  parents.reserve(room.size());
  HTREEITEM item = NextItem(tree_window, TVGN_ROOT, nullptr);
  while (item != nullptr) {
    FreeItemRecord(tree_window, item);
    HTREEITEM next = NextItem(tree_window, TVGN_CHILD, item);
    if (next != nullptr) {
      parents.push_back(item);
    } else {
      next = NextItem(tree_window, TVGN_NEXT, item);
    }
    while (next == nullptr && !parents.empty()) {
      next = NextItem(tree_window, TVGN_NEXT, parents.back());
      parents.pop_back();
    }
    item = next;
  }
  ::SendMessageA(tree_window, TVM_DELETEITEM, 0,
                 reinterpret_cast<LPARAM>(TVI_ROOT));
}

}  // namespace dicom
