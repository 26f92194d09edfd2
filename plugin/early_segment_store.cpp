#include "plugin/early_segment_store.h"

#include <new>

#include "errors/errors.h"

namespace dicom {

void EarlySegmentStore::Add(const TcpSegment& segment) {
  const EarlySegment early{added_, segment.PacketNumber()};
  try {
    segments_.emplace(NumbersOf(segment), early);
  } catch (const std::bad_alloc&) {
    throw Unexpected();
  }
  ++added_;
}

std::optional<std::uint32_t> EarlySegmentStore::TakeOldest(
    std::initializer_list<NumberPair> fitting) {
  auto oldest = segments_.end();
  for (const NumberPair& numbers : fitting) {
    const auto first = segments_.lower_bound(numbers);
    if (first == segments_.end() || first->first != numbers) continue;
    if (oldest == segments_.end() ||
        first->second.order < oldest->second.order) {
      oldest = first;
    }
  }
  if (oldest == segments_.end()) return std::nullopt;
  const std::uint32_t packet_number = oldest->second.packet_number;
  segments_.erase(oldest);
  return packet_number;
}

}  // namespace dicom
