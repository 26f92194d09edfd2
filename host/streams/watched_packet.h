#ifndef HOST_STREAMS_WATCHED_PACKET_H_
#define HOST_STREAMS_WATCHED_PACKET_H_

#include <cstdint>
#include <optional>

#include "host/capture/frame_parser.h"
#include "host/text/time_text.h"

namespace host {

// What fills a gap so soon was overtaken on its way, not sent again.
inline constexpr Nanoseconds kOvertakenWithin = 3'000'000;

// A connection's packet, taken apart once for all that watch it; valid as long
// as its frame is.
struct WatchedPacket {
  const TcpFrame& frame;
  const TcpHeader& header;
  std::uint32_t direction = 0;
  std::uint32_t begin = 0;    // sequence number of its first payload byte
  std::uint32_t payload = 0;  // bytes on the wire
  // As they stand there; empty where they were not captured.
  std::optional<std::uint16_t> window;
  std::optional<std::uint16_t> checksum;

  std::uint32_t end() const { return begin + payload; }
};

// Empty where its header was not captured.
std::optional<WatchedPacket> ReadWatchedPacket(const TcpFrame& frame,
                                               std::uint32_t direction);

}  // namespace host

#endif  // HOST_STREAMS_WATCHED_PACKET_H_
