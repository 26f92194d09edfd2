#ifndef HOST_STREAMS_TRANSFER_WATCH_H_
#define HOST_STREAMS_TRANSFER_WATCH_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "host/streams/transfer_facts.h"
#include "host/streams/watched_packet.h"

namespace host {

// Gathers how a connection's bytes were carried, from its packets, each looked
// at once and not kept: constant effort and memory, but for the waits, of which
// each took two packets at least.
class TransferWatch {
 public:
  explicit TransferWatch(TransferFacts& facts) : facts_(facts) {}

  // The connection's next packet in the order of the capture; copies that a
  // mirror port made are not handed in.
  void Add(const WatchedPacket& packet);

 private:
  // A packet of the same size again and again, on a way that takes no larger
  // ones, is full from this size on; so is one of which nothing else is known.
  static constexpr std::uint32_t kLeastFull = 512;

  struct Packet : WatchedPacket {
    Nanoseconds time = 0;  // by the clock that never goes back

    bool IsPlain() const { return !header.Has(kSyn | kFin | kRst); }
  };
  // Data under way, of which the acknowledgement tells a round trip.
  struct Sample {
    std::uint32_t end = 0;
    Nanoseconds sent = 0;
  };
  // The acknowledgement of all that a side has sent, behind which it may send
  // what it has held back.
  struct Release {
    Nanoseconds sent = 0;  // what was acknowledged
    Nanoseconds acknowledged = 0;
  };
  struct Recovery {
    std::uint32_t end = 0;  // the sequence number that has to be acknowledged
    bool fast = false;
  };

  // What has to be remembered of one side, of the data that it sends and of how
  // it takes the other's.
  struct Side {
    // The newest samples: a ring.
    static constexpr std::size_t kSamples = 16;
    std::array<Sample, kSamples> samples;
    std::size_t first_sample = 0;
    std::size_t sample_count = 0;

    std::optional<std::uint32_t> next;          // behind all that it sent
    std::optional<std::uint32_t> acknowledged;  // by the other side
    std::optional<Nanoseconds> syn_time;        // of its only SYN
    std::uint32_t syns = 0;
    std::uint32_t missing = 0;  // bytes before `next` that were not seen
    std::uint32_t largest = 0;  // payload of a packet
    std::optional<std::uint32_t> small_end;  // of its newest small packet
    Nanoseconds newest = 0;                  // when it sent something new
    Nanoseconds advanced = 0;    // when the other side acknowledged something
    Nanoseconds progressed = 0;  // that, or began to send
    bool probed = false;         // its newest packet only asked for an answer
    std::optional<Release> release;
    std::optional<Recovery> recovery;
    // The other side's window left no room, from then on until then.
    std::optional<Nanoseconds> limited_since;
    std::optional<Nanoseconds> limited_until;

    // As it takes the other's data.
    std::optional<std::uint32_t> window;  // in bytes, as it was offered last
    std::uint32_t repeats = 0;  // of its newest acknowledgement number
  };

  // The time by a clock that never goes back.
  Nanoseconds Clock(const TcpFrame& frame);
  void NoteSyn(const Packet& packet);
  void NoteConnected(const Packet& packet);
  // The packet's acknowledgement, of the other side's data.
  void NoteAcknowledgement(const Packet& packet);
  void Advance(const Packet& packet);
  // All that was sent again is acknowledged.
  void EndRecovery(const Packet& packet);
  void NoteSameAcknowledgement(const Packet& packet);
  void NoteWindow(const Packet& packet);
  // Whether the other side has room for a full packet now.
  void NoteRoom(std::uint32_t sender, Nanoseconds time);
  // The packet's payload and FIN.
  void NoteData(const Packet& packet);
  // Asks for an answer and carries nothing that counts.
  bool IsProbe(const Packet& packet);
  void NoteRepeated(const Packet& packet);
  void NoteRecovery(const Packet& packet, bool fast);
  void NoteNew(const Packet& packet);
  // What the sender did before it sent this.
  void NoteWaitBefore(const Packet& packet);
  void NoteSize(const Packet& packet);
  void TakeSample(const Packet& packet);

  // Payload of a full packet of this side, as far as it is known.
  std::uint32_t FullPayload(std::uint32_t side) const;
  // Bytes of the side's data that are not acknowledged.
  std::uint32_t InFlight(std::uint32_t side) const;
  // By how much a window is to be shifted; empty when that is not known.
  std::optional<std::uint8_t> WindowShift(std::uint32_t side) const;
  void AddWait(WaitKind kind, std::uint32_t side, Nanoseconds begin,
               const Packet& ends, Nanoseconds acknowledged = 0);

  TransferFacts& facts_;
  std::array<Side, 2> sides_;
  bool begun_ = false;
  std::uint32_t newest_frame_ = 0;
  std::optional<std::uint32_t> client_;         // whose SYN was seen
  std::optional<std::uint32_t> newest_sender_;  // of data
};

}  // namespace host

#endif  // HOST_STREAMS_TRANSFER_WATCH_H_
