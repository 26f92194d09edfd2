#include "host/streams/sequence_space.h"

#include <algorithm>

namespace host {
namespace {

constexpr StreamPosition kFarthestAhead = StreamPosition{64} << 20;
constexpr StreamPosition kFarthestBefore = StreamPosition{1} << 20;

}  // namespace

void SequenceSpace::Begin(std::uint32_t number) {
  syn_seen_ = true;
  if (base_known_) return;  // the SYN of bytes that came before it
  base_known_ = true;
  base_ = number;
}

std::optional<std::uint32_t> SequenceSpace::beginning_number() const {
  if (!base_known_) return std::nullopt;
  return base_ + static_cast<std::uint32_t>(lowest_);
}

// The signed difference to the highest position: right for any number of wraps
// as long as a segment is less than 2 GiB away from it.
std::optional<StreamPosition> SequenceSpace::PositionOf(
    std::uint32_t number) const {
  if (!base_known_) return std::nullopt;
  const std::uint32_t highest = base_ + static_cast<std::uint32_t>(highest_);
  return highest_ + static_cast<std::int32_t>(number - highest);
}

bool SequenceSpace::Accepts(StreamPosition position) const {
  return position <= highest_ + kFarthestAhead &&
         (syn_seen_ || position >= -kFarthestBefore);
}

std::optional<SequenceSpace::Place> SequenceSpace::Add(
    std::uint32_t sequence, std::size_t captured, std::uint32_t wire_length) {
  if (wire_length == 0) return {};
  if (!base_known_) {
    base_known_ = true;
    base_ = sequence;
  }
  Place place{*PositionOf(sequence)};
  if (!Accepts(place.from)) return {};
  StreamPosition wire_end = place.from + wire_length;
  if (fin_) wire_end = std::min(wire_end, *fin_);
  highest_ = std::max(highest_, wire_end);
  place.to =
      std::min(place.from + static_cast<StreamPosition>(captured), wire_end);
  if (syn_seen_ && place.from < lowest_) {
    place.skipped =
        std::max<StreamPosition>(std::min(lowest_, place.to) - place.from, 0);
    place.from = lowest_;
  }
  if (place.from >= place.to) return {};
  lowest_ = std::min(lowest_, place.from);
  return place;
}

void SequenceSpace::Close(std::uint32_t sequence) {
  const std::optional<StreamPosition> position = PositionOf(sequence);
  if (fin_ || !position || !Accepts(*position) || *position < lowest_) return;
  fin_ = *position;
  highest_ = std::max(highest_, *position);
}

bool BeginsAnotherStream(const TcpHeader& syn,
                         std::optional<std::uint32_t> begun,
                         bool other_has_payload) {
  if (begun) return *begun != syn.sequence + 1;
  return !syn.Has(kAck) && other_has_payload;
}

}  // namespace host
