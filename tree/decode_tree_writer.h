#ifndef TREE_DECODE_TREE_WRITER_H_
#define TREE_DECODE_TREE_WRITER_H_

#include <array>
#include <cstdint>
#include <string>

#include "tree/level_step.h"
#include "tree/tree_lines.h"

namespace dicom {

// Turns a decoder's lines into the host's tree view: decides from each line's
// LevelStep under which open item it goes and which items stay open. One writer
// serves one display request.
class DecodeTreeWriter {
 public:
  // Sections count from 1, as the host numbers them. Bit s of `expand_mask`
  // set: section s is expanded when it is finished, else collapsed. Entry s of
  // the target's image table is the image of section s's top line, s + 7 of its
  // other lines.
  DecodeTreeWriter(const LineTarget& target, std::uint32_t expand_mask);
  DecodeTreeWriter(const DecodeTreeWriter&) = delete;
  DecodeTreeWriter& operator=(const DecodeTreeWriter&) = delete;
  virtual ~DecodeTreeWriter();

  // Writes one line that describes `length` bytes at `offset` of the bytes in
  // the hex window. Shown up to the first zero byte of `text`. Throws
  // WrongTreeDepth, with nothing changed, when the current depth does not admit
  // the step.
  void AddLine(const std::string& text, LevelStep step, std::uint32_t offset,
               std::uint32_t length);

  // Expands or collapses the last section and closes all its levels. Run again
  // by the destructor, then without effect.
  void FinishTree();

  // For lines that go past the writer.
  const LineTarget& Target() const { return target_; }

 private:
  // Ends the section before and opens the first level of a new one.
  void AddTopLine(const char* text, std::uint32_t offset, std::uint32_t length);

  // A range of the current section.
  GlobalBlock<DicomByteRangeRecord> RangeOf(std::uint32_t offset,
                                            std::uint32_t length) const;

  // The item under which the lines of the deepest open level go. There has to
  // be one.
  HTREEITEM DeepestOpenItem() const;

  // What the depth checks admit.
  static constexpr std::size_t kMaxOpenItems = 7;

  const LineTarget target_;
  const std::uint32_t expand_mask_;
  std::array<HTREEITEM, kMaxOpenItems> open_items_{};  // outermost first
  std::int32_t depth_ = 0;    // how many of them are open
  std::int32_t section_ = 0;  // how many were begun
};

}  // namespace dicom

#endif  // TREE_DECODE_TREE_WRITER_H_
