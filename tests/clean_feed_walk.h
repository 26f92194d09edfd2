#ifndef TESTS_CLEAN_FEED_WALK_H_
#define TESTS_CLEAN_FEED_WALK_H_

#include <array>
#include <cstdint>
#include <set>
#include <string>

#include "host/capture/wire_bytes.h"
#include "tests/wire_builder.h"

namespace dicom::testing {

// Reads the packets of a clean feed as the module reads them and checks what
// every such feed keeps: a handshake, data that the other side acknowledges at
// once, both numbers in step, a FIN of each side. `problem` is the first thing
// that was broken, "" when none was.
class CleanFeedWalk {
 public:
  explicit CleanFeedWalk(const host::PacketFeed& feed) {
    const std::uint32_t count = feed.PacketCount();
    Require(count >= 5, "a handshake and a closing are there");
    for (std::uint32_t i = 0; i < count && problem.empty(); ++i) {
      Take(host::PacketOf(feed, i), i, count);
    }
  }

  std::string problem;
  std::array<Bytes, 2> streams;
  // Where in its stream each data packet begins.
  std::array<std::set<std::size_t>, 2> begins;

 private:
  void Require(bool condition, const char* what) {
    if (!condition && problem.empty()) problem = what;
  }

  void Take(const CapturedPacket& packet, std::uint32_t number,
            std::uint32_t count) {
    const auto header = host::TcpHeader::Parse(packet.tcp_bytes);
    Require(header && header->length == host::kTcpHeaderBytes,
            "a header is whole");
    Require(packet.direction <= 1, "a packet has a direction");
    if (!problem.empty()) return;
    const std::uint32_t from = packet.direction;
    const bool is_syn = number < 2, is_fin = number + 2 >= count;
    const bool is_data = number > 2 && number % 2 == 1 && !is_fin;
    if (number == 0) opener_ = from;
    if (is_data) sender_ = from;
    const bool is_answer = number == 1 || number + 1 == count;
    const bool is_handshake_or_end = number < 3 || is_fin;
    Require(is_data || from == (is_handshake_or_end ? opener_ ^ is_answer
                                                    : 1 - sender_),
            "a packet comes from the side of its place");
    const unsigned expected = (is_syn ? host::kSyn : 0u) |
                              (is_fin ? host::kFin : 0u) |
                              (number == 0 ? 0u : host::kAck);
    Require((header->flags & ~(is_data ? host::kPush : 0u)) == expected,
            "a packet has the flags of its place");
    if (is_syn) next_[from] = header->sequence;
    Require(header->sequence == next_[from] &&
                (number == 0 || header->acknowledgement == next_[1 - from]),
            "the numbers are in step");
    const Bytes payload = packet.tcp_bytes.From(host::kTcpHeaderBytes);
    Require(payload.empty() != is_data, "every second packet holds data");
    next_[from] += payload.Length() + is_syn;
    if (is_data) begins[from].insert(streams[from].size());
    streams[from] += payload;
  }

  std::array<std::uint32_t, 2> next_{};
  std::uint32_t opener_ = 0;
  std::uint32_t sender_ = 0;  // of the data last read
};

}  // namespace dicom::testing

#endif  // TESTS_CLEAN_FEED_WALK_H_
