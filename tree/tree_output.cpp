#include "tree/tree_output.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory_resource>
#include <string>
#include <vector>

#include "tree/host_display_state.h"

namespace dicom {
namespace {

// The block in which the host says how it shows decodes. Its address is in the
// host window's extra memory; a window without one behaves as an all-zero
// block.
class HostDisplayState {
 public:
  explicit HostDisplayState(HWND host_window)
      : block_(reinterpret_cast<char*>(
            ::GetWindowLongA(host_window, kDisplayStateIndex))) {}

  bool ShowsMessageData() const {
    return Field<std::uint32_t>(kStateShowMessageData) != 0;
  }
  bool Prints() const { return OutputMode() == '7'; }
  bool Saves() const { return OutputMode() == '8'; }
  std::int32_t LineHeight() const {
    return Field<std::int32_t>(kStateLineHeight);
  }
  std::int32_t LinesPerPage() const {
    return Field<std::int32_t>(kStateLinesPerPage);
  }
  std::int32_t CurrentLine() const {
    return Field<std::int32_t>(kStateCurrentLine);
  }
  HFILE File() const { return Field<HFILE>(kStateFileHandle); }
  HDC PrinterDc() const { return Field<HDC>(kStatePrinterDc); }
  std::uint32_t SectionExpandMask() const {
    return Field<std::uint32_t>(kStateSectionExpandMask);
  }

  // For a host that prints, whose block therefore exists.
  void SetCurrentLine(std::int32_t line) const {
    std::memcpy(block_ + kStateCurrentLine, &line, sizeof(line));
  }

 private:
  char OutputMode() const { return Field<char>(kStateOutputMode); }

  template <class T>
  T Field(std::size_t offset) const {
    T value{};
    if (block_ != nullptr) std::memcpy(&value, block_ + offset, sizeof(value));
    return value;
  }

  char* block_;
};

// What a diverted line answers instead of a tree item.
const HTREEITEM kDivertedItem = reinterpret_cast<HTREEITEM>(1000);

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
bool DivertLine(HWND host_window, const char* text, HTREEITEM parent_item) {
  const HostDisplayState state(host_window);
  if (!state.Prints() && !state.Saves()) return false;
  // Deliberate: one step of indentation, however deep the line is.
  std::string line = parent_item != nullptr ? "    " : "";
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

constexpr char kHexDigits[] = "0123456789ABCDEF";
constexpr std::uint32_t kRowBytes = 16;
constexpr std::size_t kRowCharacters = 74;
constexpr std::size_t kHexColumn = 6;
constexpr std::size_t kSecondHalfGap = 1;  // a blank between bytes 7 and 8
constexpr std::size_t kCharacterColumn = 58;

// "%.04lX" at the start of the row: more digits only where four do not do.
void WriteRowOffset(char* row, std::uint32_t offset) {
  int digits = 4;
  while (digits < 8 && (offset >> 4 * digits) != 0) ++digits;
  while (digits-- > 0) *row++ = kHexDigits[offset >> 4 * digits & 0xF];
}

// Writes the 74 characters that show up to 16 bytes, without an end.
void WriteHexRow(char* row, std::uint32_t offset, const std::uint8_t* bytes,
                 std::uint32_t count) {
  std::memset(row, ' ', kRowCharacters);
  WriteRowOffset(row, offset);
  for (std::uint32_t i = 0; i < count; ++i) {
    char* const pair =
        row + kHexColumn + 3 * i + (i < kRowBytes / 2 ? 0 : kSecondHalfGap);
    pair[0] = kHexDigits[bytes[i] >> 4];
    pair[1] = kHexDigits[bytes[i] & 0xF];
    // Deliberate: bytes from 127 on are shown as themselves.
    row[kCharacterColumn + i] =
        bytes[i] < ' ' ? '.' : static_cast<char>(bytes[i]);
  }
}

// The whole dump, every row with its line end. Room for five characters a byte
// and some rows more is enough.
void WriteHexDump(char* text, const std::uint8_t* bytes, std::uint32_t length) {
  std::uint32_t count = 0;
  for (std::uint32_t offset = 0; offset < length; offset += count) {
    count = std::min(kRowBytes, length - offset);
    WriteHexRow(text, offset, bytes + offset, count);
    text += kRowCharacters;
    *text++ = '\r';
    *text++ = '\n';
  }
}

// Deliberate: every hex dump section is number 8, with the same images and the
// same expand bit, however many sections come before it.
constexpr std::uint32_t kHexSection = 8;
constexpr std::int32_t kHexCaptionImage = 6;
constexpr std::int32_t kHexRowImage = 13;
constexpr std::uint32_t kHexSectionExpandBit = 1u << kHexSection;

// The bytes of a hex dump section of `length` bytes that its row at `start`
// stands for, as a range of the hex window's buffer.
GlobalBlock<ByteRangeRecord> MakeRowRange(std::uint32_t offset,
                                          std::uint32_t start,
                                          std::uint32_t length) {
  if (start + kRowBytes < length) {
    return MakeByteRange(kHexSection, offset + start, kRowBytes);
  }
  // Deliberate: a last row of 16 bytes gets none of them but a place behind
  // the section.
  const std::uint32_t rest = length % kRowBytes;
  return MakeByteRange(kHexSection, offset + length - rest, rest);
}

}  // namespace

GlobalBlock<ByteRangeRecord> MakeByteRange(std::uint32_t section,
                                           std::uint32_t offset,
                                           std::uint32_t length) {
  if (offset >= kHighlightLimit) {
    offset = 0;
    length = 0;
  }
  // Subtracts, since the sum may wrap.
  length = std::min(length, kHighlightLimit - offset);
  auto record = AllocateGlobalBlock<ByteRangeRecord>();
  if (record != nullptr) *record = {section, offset, length};
  return record;
}

HTREEITEM InsertTreeLine(HWND host_window, HTREEITEM parent_item,
                         const char* text, HTREEITEM insert_after,
                         std::uint32_t image_index, HWND tree_window,
                         GlobalBlock<ByteRangeRecord> record) {
  if (DivertLine(host_window, text, parent_item)) {
    // Deliberate: the record of a diverted line is not freed.
    static_cast<void>(record.release());
    return kDivertedItem;
  }
  TVINSERTSTRUCTA insertion{};
  insertion.hParent = ItemOrNone(parent_item);
  insertion.hInsertAfter = insert_after;
  insertion.item.mask =
      TVIF_TEXT | TVIF_IMAGE | TVIF_PARAM | TVIF_SELECTEDIMAGE;
  insertion.item.pszText = const_cast<char*>(text);  // read only
  insertion.item.cchTextMax = static_cast<int>(std::strlen(text));
  insertion.item.iImage = static_cast<int>(image_index);
  insertion.item.iSelectedImage = static_cast<int>(image_index);
  insertion.item.lParam = reinterpret_cast<LPARAM>(record.get());
  const auto item = reinterpret_cast<HTREEITEM>(::SendMessageA(
      tree_window, TVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&insertion)));
  if (item != nullptr) static_cast<void>(record.release());
  return item;
}

LRESULT ExpandTreeLine(HWND host_window, HWND tree_window, HTREEITEM item,
                       UINT code) {
  const HostDisplayState state(host_window);
  if (state.Prints() || state.Saves()) return 1;
  return ::SendMessageA(tree_window, TVM_EXPAND, code,
                        reinterpret_cast<LPARAM>(ItemOrNone(item)));
}

LRESULT ClearTree(HWND tree_window) {
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
  return ::SendMessageA(tree_window, TVM_DELETEITEM, 0,
                        reinterpret_cast<LPARAM>(TVI_ROOT));
}

std::uint32_t ShowHexDump(HWND hex_window, const std::uint8_t* bytes,
                          std::uint32_t length) {
  const std::uint64_t size = (std::uint64_t{length} + 36) * 5;
  GlobalBlock<char> text;
  if (size <= std::numeric_limits<std::size_t>::max()) {
    text = AllocateGlobalBlock<char>(static_cast<std::size_t>(size));
  }
  if (text != nullptr) WriteHexDump(text.get(), bytes, length);
  ::SetWindowTextA(hex_window, text != nullptr ? text.get() : "");
  return 1;
}

std::uint32_t AddHexDumpSection(HWND host_window, HWND tree_window,
                                const std::uint8_t* bytes, std::uint32_t offset,
                                std::int32_t length, const char* caption,
                                std::uint32_t optional,
                                const std::uint32_t* image_table) {
  if (length < 1) return 0;
  if (optional != 0 && !HostDisplayState(host_window).ShowsMessageData()) {
    return 1;
  }
  const auto size = static_cast<std::uint32_t>(length);
  // Deliberate: top lines are inserted after TVI_ROOT, not TVI_LAST.
  const HTREEITEM section =
      InsertTreeLine(host_window, nullptr, caption, TVI_ROOT,
                     TreeImage(image_table, kHexCaptionImage), tree_window,
                     MakeByteRange(kHexSection, offset, size));
  const std::uint32_t row_image = TreeImage(image_table, kHexRowImage);
  char row[kRowCharacters + 1] = {};
  std::uint32_t count = 0;
  for (std::uint32_t start = 0; start < size; start += count) {
    count = std::min(kRowBytes, size - start);
    WriteHexRow(row, start, bytes + start, count);
    InsertTreeLine(host_window, section, row, TVI_LAST, row_image, tree_window,
                   MakeRowRange(offset, start, size));
  }
  // Deliberate: by the host's own mask; every other section goes by the
  // writer's.
  const bool expand =
      HostDisplayState(host_window).SectionExpandMask() & kHexSectionExpandBit;
  ExpandTreeLine(host_window, tree_window, section,
                 expand ? TVE_EXPAND : TVE_COLLAPSE);
  return 1;
}

std::uint32_t TreeImage(const std::uint32_t* image_table, std::int32_t entry) {
  constexpr std::uint32_t kLastEntry = kImageTableEntries - 1;
  if (image_table == nullptr) return 0;
  return image_table[std::min(static_cast<std::uint32_t>(entry), kLastEntry)];
}

}  // namespace dicom
