#ifndef TREE_DISPLAY_STATE_H_
#define TREE_DISPLAY_STATE_H_

#include <windows.h>

#include <cstddef>
#include <cstdint>

namespace dicom {

// The block in which the host says how it shows decodes. It stays the host's,
// and its fields may change between two lines: every answer is read anew. A
// window that has no block behaves as one whose block is all zero.
class HostDisplayState {
 public:
  // Takes the block's address out of the window's extra memory. Valid for as
  // long as the host keeps the block, so made anew for each line.
  explicit HostDisplayState(HWND host_window);

  // Whether hex dump sections are wanted.
  bool ShowsMessageData() const;

  // Whether lines go to the printer or into the file instead of the tree.
  bool Prints() const;
  bool Saves() const;
  bool DivertsLines() const { return Prints() || Saves(); }

  // Bit s stands for section s; bit 0 has no meaning.
  std::uint32_t SectionExpandMask() const;

  // Printing. Line numbers count from 1 on every page, as the host keeps them;
  // the height of a line is in device units.
  HDC PrinterDc() const;
  std::int32_t LineHeight() const;
  std::int32_t LinesPerPage() const;
  std::int32_t CurrentLine() const;
  // Only for a host that prints: without a block there is nowhere to write.
  void SetCurrentLine(std::int32_t line) const;

  // Saving: what _lwrite writes to.
  HFILE File() const;

 private:
  // The field at a byte offset, or zero without a block. Fields lie unaligned.
  template <class T>
  T Field(std::size_t offset) const;

  char* block_;  // null: none
};

}  // namespace dicom

#endif  // TREE_DISPLAY_STATE_H_
