#ifndef HOST_STREAMS_TRANSFER_FACTS_H_
#define HOST_STREAMS_TRANSFER_FACTS_H_

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "host/text/time_text.h"

namespace host {

// How TCP carried one connection's bytes in time: counts, round trips, and each
// time in which it had to wait. Plain data. Times are those of a clock that
// never goes back, see ClockHold; copies that a mirror port made are left out.

// What a round trip between the capture point and a side took: from a packet
// to that side to the packet with which it answered.
struct RoundTrips {
  std::uint64_t count = 0;
  Nanoseconds least = std::numeric_limits<Nanoseconds>::max();

  void Add(Nanoseconds time);
};

// What one side sent, and how the other side took it. Counts are of packets.
struct FlowFacts {
  // Of its SYN; empty without one.
  std::optional<std::uint16_t> segment_limit;  // bytes that it takes at once
  std::optional<std::uint8_t> window_scale;    // the window's shift
  bool timestamps = false;
  // To this side and back: its part of the handshake, and its acknowledgements
  // of data.
  std::optional<Nanoseconds> handshake_trip;
  RoundTrips data_trips;

  std::uint64_t sent_bytes = 0;  // each byte once
  // Data that were sent before, by what made the sender send them again: no
  // acknowledgement in time, three equal ones, or nothing that can be seen,
  // since all of it was acknowledged before.
  std::uint32_t timed_out = 0;
  std::uint32_t fast = 0;
  std::uint32_t spurious = 0;
  std::uint32_t keep_alives = 0;
  std::uint32_t window_probes = 0;  // asks whether a closed window has opened
  std::uint32_t out_of_order = 0;   // overtaken on the way
  std::uint32_t gaps = 0;           // bytes before it were not seen by then
  // Without data, to the same byte as the one before.
  std::uint32_t repeated_acknowledgements = 0;
  std::uint32_t window_updates = 0;
  std::uint32_t zero_windows = 0;
  std::uint32_t window_full = 0;  // packets with the last byte that fitted
  std::uint32_t resets = 0;
  std::uint32_t most_in_flight = 0;  // bytes not yet acknowledged
  std::uint32_t largest_window = 0;  // that it offered, in bytes
  // It had data under way, the other side's window had no room for one more
  // full packet, and it did not send until there was.
  Nanoseconds window_limited = 0;
  // Less than a full packet, sent while such a one was not acknowledged yet:
  // who does that does not hold small packets back.
  std::uint32_t small_not_held = 0;
  // What still goes on: this side takes no data, or its lost data were not
  // acknowledged again.
  std::optional<Nanoseconds> closed_since;
  std::optional<Nanoseconds> recovering_since;

  std::optional<Nanoseconds> LeastDataTrip() const;
  // A round trip to this side; empty when none was seen.
  std::optional<Nanoseconds> LeastTrip() const;
};

enum class WaitKind : std::uint8_t {
  // `side` had less than a full packet to send and waited with it until what
  // it had sent before was acknowledged.
  kHeldBack,
  kZeroWindow,    // `side` took no data
  kLossRecovery,  // data of `side` was lost: until the other side had it
  // All that `side` had sent was acknowledged, the other side sent no data,
  // and then it sent more.
  kQuiet,
};

// A time in which a connection waited.
struct Wait {
  Nanoseconds begin = 0;
  Nanoseconds end = 0;
  std::uint32_t frame = 0;  // with which it ended
  // Of kHeldBack: when the acknowledgement came, in milliseconds since `begin`;
  // the largest number stands for all beyond.
  std::uint16_t acknowledged_after = 0;
  WaitKind kind = WaitKind::kQuiet;
  std::uint8_t side = 0;  // a direction of the connection
};

// The capture's clock went back: from `frame` up to, not including, `until` all
// packets count as of `time`, the latest that was seen before.
struct ClockHold {
  std::uint32_t frame = 0;
  std::uint32_t until = 0;
  Nanoseconds time = 0;
};

struct TransferFacts {
  std::array<FlowFacts, 2> flows;  // by direction
  std::vector<Wait> waits;         // in the order of their ends
  std::vector<ClockHold> holds;
  Nanoseconds most_set_back = 0;     // how far the clock went back at most,
  std::uint32_t set_back_frame = 0;  // and with which frame
  Nanoseconds first = 0;             // of the connection's packets
  Nanoseconds last = 0;
  std::uint32_t last_frame = 0;
  // The client's acknowledgement of the server's SYN; 0 when it is not there.
  Nanoseconds connected = 0;

  // How long a direction's side took no data, in all.
  Nanoseconds ClosedFor(std::uint32_t side) const;
  // Whether the clock went back by more than capture ports mix up.
  bool GoesBack() const { return most_set_back >= 1'000'000; }
  // The time of a packet of this connection, by the clock that never goes back.
  Nanoseconds TimeOf(std::uint32_t frame, Nanoseconds captured) const;
};

}  // namespace host

#endif  // HOST_STREAMS_TRANSFER_FACTS_H_
