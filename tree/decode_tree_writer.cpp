#include "tree/decode_tree_writer.h"

#include <limits>

#include "errors/errors.h"
#include "tree/tree_output.h"

namespace dicom {
namespace {

constexpr std::int32_t kStay = 0;  // at the current depth
constexpr std::int32_t kAnyDepth = std::numeric_limits<std::int32_t>::max();

struct LevelRule {
  std::int32_t min_depth, max_depth;  // admitted between these
  std::int32_t go_to;                 // level under which the line goes
  std::int32_t change;  // of the depth, after it; +1: it is opened
};

// Deliberate: kLineAtLevel1 and kLineAtLevel2 have no upper bound,
// kOpenAtLevel1 and kOpenAtLevel2 are refused at depth 7 although they leave
// it, and the two steps that close may reach depth 0, where only kSection is
// admitted. One row per LevelStep but kSection, which always is.
constexpr LevelRule kLevelRules[] = {
    {1, 7, kStay, 0},      // kLine
    {1, 6, kStay, +1},     // kOpen
    {1, 7, kStay, -1},     // kLastLine
    {2, 7, kStay, -2},     // kLastLineOfTwo
    {1, kAnyDepth, 1, 0},  // kLineAtLevel1
    {2, kAnyDepth, 2, 0},  // kLineAtLevel2
    {1, 6, 1, +1},         // kOpenAtLevel1
    {2, 6, 2, +1},         // kOpenAtLevel2
};

const LevelRule& RuleOf(LevelStep step) {
  const std::size_t row = static_cast<std::uint32_t>(step) - 1;
  if (row >= std::size(kLevelRules)) throw WrongTreeDepth();
  return kLevelRules[row];
}

constexpr std::int32_t kSubLineImages = 7;  // behind the top lines' entries

}  // namespace

DecodeTreeWriter::DecodeTreeWriter(HWND host_window, HWND tree_window,
                                   std::uint32_t expand_mask,
                                   const std::uint32_t* image_table)
    : host_window_(host_window),
      tree_window_(tree_window),
      expand_mask_(expand_mask),
      image_table_(image_table) {}

DecodeTreeWriter::~DecodeTreeWriter() { FinishTree(); }

bool DecodeTreeWriter::AddLine(const std::string& text, LevelStep step,
                               std::uint32_t offset, std::uint32_t length) {
  if (step == LevelStep::kSection) {
    AddTopLine(text.c_str(), offset, length);
    return true;
  }
  const LevelRule& rule = RuleOf(step);
  if (depth_ < rule.min_depth || depth_ > rule.max_depth) {
    throw WrongTreeDepth();
  }
  if (rule.go_to != kStay) depth_ = rule.go_to;
  const HTREEITEM item =
      Insert(text.c_str(), open_items_[static_cast<std::size_t>(depth_)],
             TVI_LAST, section_ + kSubLineImages, offset, length);
  depth_ += rule.change;
  // Deliberate: the marker of a diverted line is kept like any item.
  if (rule.change > 0) open_items_[static_cast<std::size_t>(depth_)] = item;
  return true;
}

void DecodeTreeWriter::AddTopLine(const char* text, std::uint32_t offset,
                                  std::uint32_t length) {
  FinishTree();
  ++section_;
  // Deliberate: top lines are inserted after TVI_ROOT, not TVI_LAST.
  open_items_[1] = Insert(text, nullptr, TVI_ROOT, section_, offset, length);
  depth_ = 1;
}

HTREEITEM DecodeTreeWriter::Insert(const char* text, HTREEITEM parent,
                                   HTREEITEM insert_after,
                                   std::int32_t image_entry,
                                   std::uint32_t offset, std::uint32_t length) {
  return InsertTreeLine(
      host_window_, parent, text, insert_after,
      TreeImage(image_table_, image_entry), tree_window_,
      MakeByteRange(static_cast<std::uint32_t>(section_), offset, length));
}

void DecodeTreeWriter::FinishTree() {
  if (depth_ == 0) return;
  constexpr std::int32_t kMaskBits = 32;
  // Deliberate: sections count from 1, and so do the mask's bits; bit 0 has no
  // meaning.
  const bool expand = section_ < kMaskBits && (expand_mask_ >> section_ & 1);
  // Deliberate: what is expanded is the deepest open item, not the top line.
  ExpandTreeLine(host_window_, tree_window_,
                 open_items_[static_cast<std::size_t>(depth_)],
                 expand ? TVE_EXPAND : TVE_COLLAPSE);
  depth_ = 0;
}

}  // namespace dicom
