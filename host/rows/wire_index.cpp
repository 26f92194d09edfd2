#include "host/rows/wire_index.h"

#include <algorithm>

namespace host {
namespace {

constexpr std::uint32_t kNearby = 16;

bool Fits(const WireRecord& record, const ListedRow& row) {
  return record.direction == row.direction && record.length == row.length;
}

}  // namespace

void WireIndex::Extend() {
  for (; looked_at_ < records_.size(); ++looked_at_) {
    if (records_[looked_at_].listed) {
      listed_.push_back(static_cast<std::uint32_t>(looked_at_));
    }
  }
}

const WireRecord* WireIndex::At(std::uint32_t position) {
  Extend();
  return position < listed_.size() ? &records_[listed_[position]] : nullptr;
}

const WireRecord* WireIndex::Find(std::uint32_t position,
                                  const ListedRow& row) {
  const WireRecord* expected = At(position);
  if (expected != nullptr && Fits(*expected, row)) return expected;
  for (std::uint32_t distance = 1; distance <= kNearby; ++distance) {
    const WireRecord* behind = At(position + distance);
    if (behind != nullptr && Fits(*behind, row)) return behind;
    if (distance > position) continue;
    const WireRecord* before = At(position - distance);
    if (before != nullptr && Fits(*before, row)) return before;
  }
  // A row may show another length than the wire.
  const bool same_way =
      expected != nullptr && expected->direction == row.direction;
  return same_way ? expected : nullptr;
}

std::uint32_t WireIndex::PositionOfFrame(std::uint32_t frame,
                                         std::uint32_t direction) {
  Extend();
  const auto first =
      std::lower_bound(listed_.begin(), listed_.end(), frame,
                       [this](std::uint32_t index, std::uint32_t wanted) {
                         return records_[index].last_frame < wanted;
                       });
  auto found = first;
  for (std::uint32_t i = 0; i < kNearby && found != listed_.end(); ++i) {
    if (records_[*found].direction == direction) break;
    ++found;
  }
  if (found == listed_.end() || records_[*found].direction != direction) {
    found = first;
  }
  return static_cast<std::uint32_t>(found - listed_.begin());
}

}  // namespace host
