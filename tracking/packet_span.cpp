#include "tracking/packet_span.h"

#include <algorithm>
#include <optional>

namespace dicom {
namespace {

// No packet holds more, so no honest span is longer.
constexpr std::uint32_t kMaxSpanBytes = 15976;

// Doubled once, room for a PDU of the usual 16 KB in Ethernet's segments.
constexpr std::size_t kFirstRoom = 5;

void AppendZeroPadded(const ByteArrayView& packet, std::uint32_t offset,
                      std::uint32_t count, std::vector<std::uint8_t>& bytes) {
  const ByteArrayView held = packet.Part(offset, count);
  bytes.insert(bytes.end(), held.Bytes(), held.Bytes() + held.Length());
  bytes.resize(bytes.size() + (count - held.Length()));
}

}  // namespace

void SpanList::Append(const PacketSpan& span) {
  if (count_ == 0) {
    first_ = span;
  } else {
    const std::size_t seen = count_ - 1;
    if (!others_) {
      others_ = std::make_shared<std::vector<PacketSpan>>();
      others_->reserve(kFirstRoom);
    } else if (others_->size() != seen) {  // another copy went on from here
      others_ = std::make_shared<std::vector<PacketSpan>>(
          others_->begin(),
          others_->begin() + static_cast<std::ptrdiff_t>(seen));
    }
    others_->push_back(span);
  }
  ++count_;
}

void SpanGatherer::GatherUpTo(std::uint32_t limit, const SpanList& spans,
                              PacketSource& source,
                              std::vector<std::uint8_t>& bytes) {
  ByteArrayView packet;
  std::optional<std::uint32_t> fetched;  // its number
  for (; next_span_ < spans.size() && gathered_ < limit; ++next_span_) {
    // A copy: the fetch runs the host's code, which may make the list grow.
    const PacketSpan span = spans[next_span_];
    if (fetched != span.packet_number) {
      packet = source.PacketBytes(span.packet_number);
      fetched = span.packet_number;
    }
    const std::uint32_t left = std::min(span.length, kMaxSpanBytes) - taken_;
    const std::uint32_t count = std::min(left, limit - gathered_);
    AppendZeroPadded(packet, span.offset + taken_, count, bytes);
    gathered_ += count;
    if (count < left) {
      taken_ += count;
      return;
    }
    taken_ = 0;
  }
}

std::vector<std::uint8_t> GatherBytes(const SpanList& spans,
                                      std::uint32_t limit,
                                      PacketSource& source) {
  std::vector<std::uint8_t> bytes;
  SpanGatherer().GatherUpTo(limit, spans, source, bytes);
  return bytes;
}

}  // namespace dicom
