#include "host/streams/stream_assembler.h"

#include <algorithm>

namespace host {
namespace {

// What `extent` holds before `end` and from there on.
Extent FirstOf(Extent extent, StreamPosition end) {
  extent.length = static_cast<std::uint32_t>(end - extent.position);
  return extent;
}

Extent RestOf(Extent extent, StreamPosition begin) {
  const auto skipped = static_cast<std::uint32_t>(begin - extent.position);
  extent.position = begin;
  extent.stored += skipped;
  extent.length -= skipped;
  return extent;
}

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

void StreamAssembler::Add(std::uint32_t sequence,
                          std::span<const std::uint8_t> bytes,
                          std::uint32_t wire_length,
                          const PayloadOrigin& origin) {
  const auto place = numbers_.Add(sequence, bytes.size(), wire_length);
  if (!place) return;
  const auto length = static_cast<std::uint32_t>(place->to - place->from);
  const auto first = static_cast<std::size_t>(place->skipped);
  const Extent whole{place->from, origin.stored + first, origin.time, length,
                     origin.frame};
  if (!Insert(whole, bytes.subspan(first, length))) ++differing_copies_;
}

bool StreamAssembler::Insert(const Extent& whole,
                             std::span<const std::uint8_t> bytes) {
  bool same = true;
  Extent rest = whole;
  while (rest.length != 0) {
    const StreamPosition at = rest.position;
    const auto next = extents_.Find(at);
    StreamPosition part_end = rest.end();
    if (!next.AtEnd() && next->position <= at) {  // there already
      part_end = std::min(part_end, next->end());
      const auto from = static_cast<std::size_t>(at - whole.position);
      const auto count = static_cast<std::size_t>(part_end - at);
      same = IsSame(*next, at, bytes.subspan(from, count)) && same;
    } else {
      if (!next.AtEnd()) part_end = std::min(part_end, next->position);
      const bool sealed = rest.frame != 0 && at < sealed_until_;
      if (sealed) part_end = std::min(part_end, sealed_until_);
      if (!sealed) Keep(FirstOf(rest, part_end));
    }
    rest = RestOf(rest, part_end);
  }
  return same;
}

bool StreamAssembler::IsSame(const Extent& known, StreamPosition at,
                             std::span<const std::uint8_t> bytes) const {
  const auto skip = static_cast<ByteStore::Offset>(at - known.position);
  return store_->Equal(known.stored + skip, bytes);
}

void StreamAssembler::Keep(const Extent& extent) {
  extents_.Insert(extent);
  Join(extent.position, extent.end());
  if (extent.frame != 0) payload_bytes_ += extent.length;
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
  for (auto next = extents_.Find(from); !to.empty(); ++next) {
    const StreamPosition end = from + static_cast<StreamPosition>(to.size());
    const StreamPosition begin =
        next.AtEnd() ? end : std::clamp(next->position, from, end);
    const auto hole = static_cast<std::size_t>(begin - from);
    std::ranges::fill(to.first(hole), std::uint8_t{0});
    to = to.subspan(hole);
    if (to.empty()) break;
    from = std::min(end, next->end());
    const auto count = static_cast<std::size_t>(from - begin);
    const auto skipped = static_cast<ByteStore::Offset>(begin - next->position);
    store_->Copy(next->stored + skipped, to.first(count));
    to = to.subspan(count);
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
  auto next = extents_.Find(from);
  for (; !next.AtEnd() && next->position < to; ++next) {
    range.Include({next->frame, next->frame, next->time});
  }
  return range;
}

void StreamAssembler::ForEachGap(
    const std::function<void(const StreamGap&)>& take) const {
  const Extent* before = nullptr;
  for (auto next = extents_.Find(begin()); !next.AtEnd(); ++next) {
    if (next->frame == 0) continue;
    if (before != nullptr && before->end() != next->position) {
      take({before->frame, next->frame,
            static_cast<std::uint64_t>(next->position - before->end())});
    }
    before = &*next;
  }
}

void StreamAssembler::Substitute(StreamPosition at,
                                 std::span<const std::uint8_t> bytes) {
  const auto length = static_cast<std::uint32_t>(bytes.size());
  Insert({at, store_->Append(bytes), 0, length, 0}, bytes);
}

}  // namespace host
