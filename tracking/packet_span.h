#ifndef TRACKING_PACKET_SPAN_H_
#define TRACKING_PACKET_SPAN_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "tracking/packet_source.h"

namespace dicom {

// One piece of a PDU or message inside one captured packet. The offset counts
// from the first byte of the TCP header.
struct PacketSpan {
  std::uint32_t packet_number = 0;
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
};

// The spans of one record, in stream order. Copies share one append-only log
// and keep a count of their own: copying a record costs the same however many
// spans it has, and what is seen through a copy never changes. A single span
// needs no log.
class SpanList {
 public:
  // What is seen through copies stays.
  void Append(const PacketSpan& span);
  std::size_t size() const { return count_; }
  const PacketSpan& operator[](std::size_t i) const {
    return i == 0 ? first_ : (*others_)[i - 1];
  }

 private:
  PacketSpan first_;
  std::shared_ptr<std::vector<PacketSpan>> others_;
  std::uint32_t count_ = 0;
};

// Reads a growing list of spans from the host, bit by bit: each call goes on
// where the one before stopped. Memory grows with the bytes that packets hold,
// never with a recorded length alone.
class SpanGatherer {
 public:
  // Appends the bytes of `spans` that were not yet read to `bytes`, until
  // `limit` bytes were read in all. A span that reaches past its packet's end
  // gives what the packet holds there, then zero bytes, never more than a
  // packet record has room for.
  // Deliberate: bytes that were read are not asked for again, and neighbouring
  // spans of one packet fetch it once: a host that refuses a packet later makes
  // no failure of what was read of it.
  // Throws UnableToGetPacketFromTapvane.
  void GatherUpTo(std::uint32_t limit, const SpanList& spans,
                  PacketSource& source, std::vector<std::uint8_t>& bytes);

 private:
  std::uint32_t gathered_ = 0;
  std::size_t next_span_ = 0;
  std::uint32_t taken_ = 0;  // bytes of the next span that were already read
};

// The first `limit` bytes of `spans`, under the same rules.
std::vector<std::uint8_t> GatherBytes(const SpanList& spans,
                                      std::uint32_t limit,
                                      PacketSource& source);

}  // namespace dicom

#endif  // TRACKING_PACKET_SPAN_H_
