#ifndef HOST_TIMING_CONNECTION_TIMING_H_
#define HOST_TIMING_CONNECTION_TIMING_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/streams/connection.h"
#include "host/timing/message_timing.h"
#include "host/timing/time_parts.h"

namespace host {

// Small packets that one side held back until the other had acknowledged what
// came before, in one association. Durations in microseconds.
struct HeldBack {
  std::uint32_t count = 0;
  Microseconds sum = 0;
  Microseconds longest = 0;
  std::uint32_t first_frame = 0;  // that was held back the first time
  // How many of them waited longer than a round trip, because the other side
  // delayed its acknowledgement.
  std::uint32_t delayed = 0;
};

// Thinking that is, or may be, that of sub-operations.
struct SubOperationTime {
  Microseconds sum = 0;
  std::uint32_t request = 0;  // the first: an index in Dialogue::messages
};

// Where the time of one association went.
struct AssociationTiming {
  std::uint32_t requestor = 0;  // its direction
  // The first begins with the connection, each ends where the next begins and
  // the last with the connection.
  Microseconds begin = 0;
  Microseconds end = 0;
  std::vector<TimeSpan> spans;  // [begin, end) without gaps
  TimeSums sums;
  std::array<HeldBack, 2> held_back;  // by the direction that held back
  SubOperationTime sub_operations;
  std::uint32_t messages = 0;

  Microseconds Duration() const { return end - begin; }
};

// Where the time of one connection went, and what of it cannot be known.
struct ConnectionTiming {
  Nanoseconds start = 0;                        // of its first packet
  std::vector<MessageTiming> messages;          // by Dialogue::messages
  std::vector<AssociationTiming> associations;  // by Dialogue::associations
  // What cannot be measured, and why: one sentence each.
  std::vector<std::string> limits;

  // Since the first packet.
  Microseconds Since(Nanoseconds time) const { return (time - start) / 1000; }
};

// Empty, but for `start`, where the connection has no dialogue. Linear in its
// messages, PDUs and waits.
ConnectionTiming TimeConnection(const Connection& connection);

// The smallest of the values, or more, of which `percent` of 100 are not
// larger; 0 for no values. `values` are sorted.
Nanoseconds Percentile(const std::vector<Nanoseconds>& values, int percent);

}  // namespace host

#endif  // HOST_TIMING_CONNECTION_TIMING_H_
