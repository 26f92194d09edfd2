#ifndef TREE_DECODE_TREE_WRITER_H_
#define TREE_DECODE_TREE_WRITER_H_

#include <windows.h>
#include <commctrl.h>

#include <array>
#include <cstdint>
#include <string>

#include "tree/level_step.h"

namespace dicom {

// Turns a decoder's lines into the host's tree view: decides from each line's
// LevelStep under which open item it goes and which items stay open. One writer
// serves one display request; the windows and the image table stay the host's.
class DecodeTreeWriter {
 public:
  // Bit s of `expand_mask` (sections count from 1) set: section s is expanded
  // when it is finished. `image_table`: entry s is the image of section s's top
  // line, s + 7 of its other lines; may be null (image 0).
  DecodeTreeWriter(HWND host_window, HWND tree_window,
                   std::uint32_t expand_mask, const std::uint32_t* image_table);
  DecodeTreeWriter(const DecodeTreeWriter&) = delete;
  DecodeTreeWriter& operator=(const DecodeTreeWriter&) = delete;
  virtual ~DecodeTreeWriter();

  // Writes one line that describes `length` bytes at `offset` of the bytes in
  // the hex window. Shown up to the first zero byte of `text`. Returns true.
  // Throws WrongTreeDepth, with nothing changed, when the current depth does
  // not admit the step.
  bool AddLine(const std::string& text, LevelStep step, std::uint32_t offset,
               std::uint32_t length);

  // Expands or collapses the last section. Run again by the destructor, then
  // without effect.
  void FinishTree();

  HWND HostWindow() const { return host_window_; }
  HWND TreeWindow() const { return tree_window_; }
  const std::uint32_t* ImageTable() const { return image_table_; }

 private:
  void AddTopLine(const char* text, std::uint32_t offset, std::uint32_t length);
  HTREEITEM Insert(const char* text, HTREEITEM parent, HTREEITEM insert_after,
                   std::int32_t image_entry, std::uint32_t offset,
                   std::uint32_t length);

  // The depth checks are the limit, not this storage: they admit up to seven
  // open levels.
  static constexpr std::size_t kOpenItems = 8;

  HWND host_window_;
  HWND tree_window_;
  std::uint32_t expand_mask_;
  // Entry k is the item under which level k's lines go; entry 0 is never used.
  std::array<HTREEITEM, kOpenItems> open_items_{};
  std::int32_t depth_ = 0;
  std::int32_t section_ = 0;
  const std::uint32_t* image_table_;
};

}  // namespace dicom

#endif  // TREE_DECODE_TREE_WRITER_H_
