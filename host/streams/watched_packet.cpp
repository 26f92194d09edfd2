#include "host/streams/watched_packet.h"

#include <algorithm>

#include "host/capture/wire_bytes.h"

namespace host {

std::optional<WatchedPacket> ReadWatchedPacket(const TcpFrame& frame,
                                               std::uint32_t direction) {
  constexpr std::size_t kWindowAt = 14;  // in a TCP header
  if (!frame.header) return {};
  const TcpHeader& header = *frame.header;
  WatchedPacket packet{
      frame,
      header,
      direction,
      header.sequence + (header.Has(kSyn) ? 1 : 0),
      frame.wire_length - std::min(header.length, frame.wire_length),
      {},
      {}};
  if (frame.tcp.size() >= kWindowAt + 2) {
    WireReader in(frame.tcp.subspan(kWindowAt));
    packet.window = in.Word16();
    if (frame.tcp.size() >= kWindowAt + 4) packet.checksum = in.Word16();
  }
  return packet;
}

}  // namespace host
