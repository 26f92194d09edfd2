#include "host/streams/stream_assembler.h"

#include <algorithm>

namespace host {
namespace {

constexpr StreamPosition kFarthestAhead = StreamPosition{64} << 20;
constexpr StreamPosition kFarthestBefore = StreamPosition{1} << 20;

}  // namespace

void FrameRange::Include(const FrameRange& other) {
  if (other.first == 0) return;
  if (first == 0 || other.first < first) first = other.first;
  if (other.last > last) {
    last = other.last;
    time = other.time;
  }
}

StreamAssembler::StreamAssembler(std::shared_ptr<ByteStore> store)
    : store_(std::move(store)) {}

void StreamAssembler::Begin(std::uint32_t number) {
  syn_seen_ = true;
  if (base_known_) return;  // the SYN of bytes that came before it
  base_known_ = true;
  base_ = number;
}

std::optional<std::uint32_t> StreamAssembler::beginning_number() const {
  if (!base_known_) return std::nullopt;
  return base_ + static_cast<std::uint32_t>(lowest_);
}

// The signed difference to the highest position: right for any number of wraps
// as long as a segment is less than 2 GiB away from it.
std::optional<StreamPosition> StreamAssembler::PositionOf(
    std::uint32_t number) const {
  if (!base_known_) return std::nullopt;
  const std::uint32_t highest = base_ + static_cast<std::uint32_t>(highest_);
  return highest_ + static_cast<std::int32_t>(number - highest);
}

bool StreamAssembler::Accepts(StreamPosition position) const {
  return position <= highest_ + kFarthestAhead &&
         (syn_seen_ || position >= -kFarthestBefore);
}

void StreamAssembler::Add(std::uint32_t sequence,
                          std::span<const std::uint8_t> bytes,
                          std::uint32_t wire_length, std::uint32_t frame,
                          Nanoseconds time) {
  if (wire_length == 0) return;
  if (!base_known_) {
    base_known_ = true;
    base_ = sequence;
  }
  StreamPosition from = *PositionOf(sequence);
  if (!Accepts(from)) return;
  StreamPosition wire_end = from + wire_length;
  if (fin_) wire_end = std::min(wire_end, *fin_);
  highest_ = std::max(highest_, wire_end);
  StreamPosition to =
      std::min(from + static_cast<StreamPosition>(bytes.size()), wire_end);
  if (syn_seen_ && from < lowest_) {
    const StreamPosition cut = std::min(lowest_, to) - from;
    bytes = bytes.subspan(
        static_cast<std::size_t>(std::max<StreamPosition>(cut, 0)));
    from = lowest_;
  }
  if (from >= to) return;
  lowest_ = std::min(lowest_, from);
  const Extent source{0, time, 0, frame};
  if (!Insert(from, bytes.first(static_cast<std::size_t>(to - from)), source)) {
    ++differing_copies_;
  }
}

void StreamAssembler::Close(std::uint32_t sequence) {
  const std::optional<StreamPosition> position = PositionOf(sequence);
  if (fin_ || !position || !Accepts(*position) || *position < lowest_) return;
  fin_ = *position;
  highest_ = std::max(highest_, *position);
}

StreamPosition StreamAssembler::end() const { return fin_ ? *fin_ : highest_; }

StreamAssembler::Extents::const_iterator StreamAssembler::ExtentAt(
    StreamPosition from) const {
  auto it = extents_.upper_bound(from);
  if (it != extents_.begin()) {
    const auto before = std::prev(it);
    if (before->first + before->second.length > from) return before;
  }
  return it;
}

bool StreamAssembler::Insert(StreamPosition at,
                             std::span<const std::uint8_t> bytes,
                             Extent source) {
  bool same = true;
  auto next = ExtentAt(at);
  while (!bytes.empty()) {
    const StreamPosition end = at + static_cast<StreamPosition>(bytes.size());
    std::size_t count;
    if (next != extents_.end() && next->first <= at) {  // there already
      const Extent& known = next->second;
      const StreamPosition known_end = next->first + known.length;
      count = static_cast<std::size_t>(std::min(end, known_end) - at);
      const auto skip = static_cast<ByteStore::Offset>(at - next->first);
      same = store_->Equal(known.stored + skip, bytes.first(count)) && same;
      ++next;
    } else {
      StreamPosition gap_end =
          next == extents_.end() ? end : std::min(end, next->first);
      const bool sealed = source.frame != 0 && at < sealed_until_;
      if (sealed) gap_end = std::min(gap_end, sealed_until_);
      count = static_cast<std::size_t>(gap_end - at);
      if (!sealed) Keep(at, bytes.first(count), source, next);
    }
    at += static_cast<StreamPosition>(count);
    bytes = bytes.subspan(count);
  }
  return same;
}

void StreamAssembler::Keep(StreamPosition at,
                           std::span<const std::uint8_t> bytes, Extent source,
                           Extents::const_iterator next) {
  source.stored = store_->Append(bytes);
  source.length = static_cast<std::uint32_t>(bytes.size());
  extents_.emplace_hint(next, at, source);
  Join(at, at + static_cast<StreamPosition>(bytes.size()));
  if (source.frame != 0) payload_bytes_ += bytes.size();
}

void StreamAssembler::Join(StreamPosition from, StreamPosition to) {
  const auto after = runs_.lower_bound(to);
  if (after != runs_.end() && after->first == to) {
    to = after->second;
    runs_.erase(after);
  }
  const auto behind = runs_.lower_bound(from);
  if (behind != runs_.begin() && std::prev(behind)->second == from) {
    std::prev(behind)->second = to;
  } else {
    runs_.emplace(from, to);
  }
}

StreamPosition StreamAssembler::PresentUntil(StreamPosition from) const {
  const auto after = runs_.upper_bound(from);
  if (after == runs_.begin()) return std::min(from, end());
  return std::min(std::max(std::prev(after)->second, from), end());
}

StreamPosition StreamAssembler::NextPresent(StreamPosition from) const {
  const auto after = runs_.upper_bound(from);
  if (after != runs_.begin() && std::prev(after)->second > from) {
    return std::min(from, end());
  }
  return after == runs_.end() ? end() : std::min(after->first, end());
}

std::uint64_t StreamAssembler::PresentBytes(StreamPosition from,
                                            StreamPosition to) const {
  std::uint64_t count = 0;
  while (from < to) {
    const StreamPosition present = std::min(NextPresent(from), to);
    const StreamPosition missing = std::min(PresentUntil(present), to);
    count += static_cast<std::uint64_t>(missing - present);
    if (missing == present) break;
    from = missing;
  }
  return count;
}

void StreamAssembler::Copy(StreamPosition from,
                           std::span<std::uint8_t> to) const {
  for (auto it = ExtentAt(from); !to.empty(); ++it) {
    const StreamPosition end = from + static_cast<StreamPosition>(to.size());
    const StreamPosition begin =
        it == extents_.end() ? end : std::clamp(it->first, from, end);
    const auto hole = static_cast<std::size_t>(begin - from);
    std::ranges::fill(to.first(hole), std::uint8_t{0});
    to = to.subspan(hole);
    if (to.empty()) break;
    const StreamPosition stop = std::min(end, it->first + it->second.length);
    const auto count = static_cast<std::size_t>(stop - begin);
    const auto skipped = static_cast<ByteStore::Offset>(begin - it->first);
    store_->Copy(it->second.stored + skipped, count, to.data());
    to = to.subspan(count);
    from = stop;
  }
}

std::vector<std::uint8_t> StreamAssembler::Peek(StreamPosition at,
                                                std::size_t most) const {
  const auto present = static_cast<std::uint64_t>(
      std::max<StreamPosition>(PresentUntil(at) - at, 0));
  std::vector<std::uint8_t> bytes(
      static_cast<std::size_t>(std::min<std::uint64_t>(most, present)));
  Copy(at, bytes);
  return bytes;
}

FrameRange StreamAssembler::Frames(StreamPosition from,
                                   StreamPosition to) const {
  FrameRange range;
  for (auto it = ExtentAt(from); it != extents_.end() && it->first < to; ++it) {
    const Extent& extent = it->second;
    range.Include({extent.frame, extent.frame, extent.time});
  }
  return range;
}

void StreamAssembler::Substitute(StreamPosition at,
                                 std::span<const std::uint8_t> bytes) {
  Insert(at, bytes, Extent{});
}

}  // namespace host
