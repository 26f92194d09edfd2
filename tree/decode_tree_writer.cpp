#include "tree/decode_tree_writer.h"

#include <limits>
#include <optional>

#include "errors/errors.h"

namespace dicom {
namespace {

constexpr std::int32_t kAnyDepth = std::numeric_limits<std::int32_t>::max();
constexpr std::nullopt_t kStay = std::nullopt;

struct LevelRule {
  std::int32_t min_depth, max_depth;  // admitted between these
  std::optional<std::int32_t> go_to;  // depth that is returned to before it
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
  const std::uint32_t row = static_cast<std::uint32_t>(step) - 1;
  if (row >= std::size(kLevelRules)) throw WrongTreeDepth();
  return kLevelRules[row];
}

constexpr std::int32_t kSubLineImages = 7;  // behind the top lines' entries

}  // namespace

DecodeTreeWriter::DecodeTreeWriter(const LineTarget& target,
                                   std::uint32_t expand_mask)
    : target_(target), expand_mask_(expand_mask) {}

DecodeTreeWriter::~DecodeTreeWriter() { FinishTree(); }

void DecodeTreeWriter::AddLine(const std::string& text, LevelStep step,
                               std::uint32_t offset, std::uint32_t length) {
  if (step == LevelStep::kSection) {
    return AddTopLine(text.c_str(), offset, length);
  }
  const LevelRule& rule = RuleOf(step);
  if (depth_ < rule.min_depth || depth_ > rule.max_depth) {
    throw WrongTreeDepth();
  }
  depth_ = rule.go_to.value_or(depth_);
  const HTREEITEM item =
      InsertTreeLine(target_, DeepestOpenItem(), text.c_str(),
                     section_ + kSubLineImages, RangeOf(offset, length));
  // Deliberate: the marker of a diverted line is kept like any item.
  if (rule.change > 0) open_items_[static_cast<std::size_t>(depth_)] = item;
  depth_ += rule.change;
}

void DecodeTreeWriter::AddTopLine(const char* text, std::uint32_t offset,
                                  std::uint32_t length) {
  FinishTree();
  ++section_;
  open_items_[0] =
      InsertTopLine(target_, text, section_, RangeOf(offset, length));
  depth_ = 1;
}

GlobalBlock<DicomByteRangeRecord> DecodeTreeWriter::RangeOf(
    std::uint32_t offset, std::uint32_t length) const {
  return MakeByteRange(static_cast<std::uint32_t>(section_), offset, length);
}

HTREEITEM DecodeTreeWriter::DeepestOpenItem() const {
  return open_items_[static_cast<std::size_t>(depth_ - 1)];
}

void DecodeTreeWriter::FinishTree() {
  if (depth_ == 0) return;
  constexpr std::int32_t kMaskBits = 32;
  // Deliberate: sections count from 1, and so do the mask's bits; bit 0 has no
  // meaning.
  const bool expand = section_ < kMaskBits && (expand_mask_ >> section_ & 1);
  // Deliberate: what is expanded is the deepest open item, not the top line.
  ExpandTreeLine(target_, DeepestOpenItem(), expand);
  depth_ = 0;
}

}  // namespace dicom
