#ifndef HOST_STREAMS_TRANSPORT_WATCH_H_
#define HOST_STREAMS_TRANSPORT_WATCH_H_

#include <array>
#include <compare>
#include <cstdint>
#include <optional>

#include "host/streams/transport_facts.h"
#include "host/streams/watched_packet.h"

namespace host {

// Gathers the facts of a connection from its packets, each looked at once and
// not kept.
class TransportWatch {
 public:
  explicit TransportWatch(TransportFacts& facts) : facts_(facts) {}

  // The connection's next packet in the order of the capture. False for the
  // copy of one that was there already.
  bool Add(const WatchedPacket& packet);

  // The highest acknowledgement number that this side has sent.
  std::optional<std::uint32_t> acknowledgement(std::uint32_t direction) const {
    return sides_[direction].acknowledgement;
  }

 private:
  // By what a packet is known again. The checksum stands for the payload.
  struct Fingerprint {
    std::uint32_t sequence = 0;
    std::uint32_t acknowledgement = 0;
    std::uint16_t identification = 0;
    std::uint16_t checksum = 0;
    std::uint16_t window = 0;
    std::uint16_t length = 0;
    std::uint8_t flags = 0;

    bool operator==(const Fingerprint&) const = default;
  };
  struct Remembered {
    Fingerprint packet;
    Nanoseconds time = 0;
  };

  // What has to be remembered of one side.
  struct Side {
    static constexpr std::size_t kRemembered = 8;
    std::array<Remembered, kRemembered> newest;
    std::size_t next_newest = 0;
    std::optional<std::uint32_t> next_sequence;  // behind all payload
    std::optional<std::uint32_t> acknowledgement;
    std::uint32_t missing = 0;  // bytes before next_sequence that did not come
    std::optional<std::uint16_t> segment_limit;  // of what it takes
    std::optional<Nanoseconds> window_closed;
    std::uint32_t checksums_looked_at = 0;
  };

  // Whether it was captured already; remembers it.
  bool IsDuplicate(const WatchedPacket& packet);
  void NoteFlags(const WatchedPacket& packet);
  void NotePayload(const WatchedPacket& packet);
  // Its bytes are no new ones.
  void NoteRepeatedPayload(const WatchedPacket& packet);
  void NoteWindow(const WatchedPacket& packet);
  void NoteAcknowledgement(const WatchedPacket& packet);
  void NoteChecksum(const WatchedPacket& packet);
  void NoteSilence(const WatchedPacket& packet);

  TransportFacts& facts_;
  std::array<Side, 2> sides_;
  std::optional<FrameMark> newest_;
};

}  // namespace host

#endif  // HOST_STREAMS_TRANSPORT_WATCH_H_
