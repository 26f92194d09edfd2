#include "host/streams/extent_list.h"

#include <algorithm>
#include <iterator>

namespace host {
namespace {

constexpr std::size_t kLeafExtents = 128;

}  // namespace

ExtentList::Cursor ExtentList::Find(StreamPosition position) const {
  Cursor cursor;
  cursor.end_ = leaves_.end();
  cursor.leaf_ = leaves_.upper_bound(position);
  if (cursor.leaf_ == leaves_.begin()) return cursor;
  --cursor.leaf_;
  const auto& leaf = cursor.leaf_->second;
  const auto found = std::ranges::upper_bound(leaf, position, {}, &Extent::end);
  cursor.index_ = static_cast<std::size_t>(found - leaf.begin());
  if (found == leaf.end()) {
    ++cursor.leaf_;
    cursor.index_ = 0;
  }
  return cursor;
}

void ExtentList::Insert(const Extent& extent) {
  auto at = leaves_.upper_bound(extent.position);
  const bool is_last = at == leaves_.end();
  if (at == leaves_.begin()) {
    leaves_.emplace_hint(at, extent.position, std::vector{extent});
    return;
  }
  auto& leaf = (--at)->second;
  const auto place =
      std::ranges::upper_bound(leaf, extent.position, {}, &Extent::position);
  if (leaf.size() < kLeafExtents) {
    leaf.insert(place, extent);
  } else if (is_last && place == leaf.end()) {
    leaves_.emplace_hint(leaves_.end(), extent.position, std::vector{extent});
  } else {
    const auto middle = leaf.begin() + kLeafExtents / 2;
    leaves_.emplace_hint(std::next(at), middle->position,
                         std::vector(middle, leaf.end()));
    leaf.erase(middle, leaf.end());
    Insert(extent);
  }
}

}  // namespace host
