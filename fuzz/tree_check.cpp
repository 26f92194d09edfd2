#include "fuzz/tree_check.h"

#include <vector>

#include "fuzz/fuzz_input.h"

namespace dicom::fuzz {
namespace {

HTREEITEM Next(const testing::TestHost& host, WPARAM relation, HTREEITEM item) {
  return reinterpret_cast<HTREEITEM>(::SendMessageA(
      host.Tree(), TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

void CheckItem(const testing::TestHost& host, HTREEITEM handle) {
  TVITEMA item{};
  item.mask = TVIF_PARAM;
  item.hItem = handle;
  ::SendMessageA(host.Tree(), TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item));
  const auto* const range =
      reinterpret_cast<const DicomByteRangeRecord*>(item.lParam);
  if (range == nullptr) return;
  Require(range->offset < DICOM_HIGHLIGHT_LIMIT,
          "a range begins within the limit");
  Require(range->length <= DICOM_HIGHLIGHT_LIMIT - range->offset,
          "a range ends within the limit");
}

}  // namespace

void CheckTree(const testing::TestHost& host, std::size_t bytes) {
  constexpr std::size_t kLinesPerByte = 8;
  constexpr std::size_t kAnyway = 64;
  Require(host.TreeCount() <= kLinesPerByte * bytes + kAnyway,
          "lines are bounded by the bytes");
  std::vector<HTREEITEM> left = {Next(host, TVGN_ROOT, nullptr)};
  while (!left.empty()) {
    const HTREEITEM item = left.back();
    left.pop_back();
    if (item == nullptr) continue;
    CheckItem(host, item);
    left.push_back(Next(host, TVGN_NEXT, item));
    left.push_back(Next(host, TVGN_CHILD, item));
  }
}

}  // namespace dicom::fuzz
