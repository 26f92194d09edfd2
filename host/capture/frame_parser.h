#ifndef HOST_CAPTURE_FRAME_PARSER_H_
#define HOST_CAPTURE_FRAME_PARSER_H_

#include <cstdint>
#include <span>

#include "host/capture/ip_fragment.h"
#include "host/capture/tcp_frame.h"

namespace host {

enum class FrameKind {
  kTcp,
  kIpFragment,  // of a packet that may be kTcp when it is whole
  kOther,
};

// What a frame holds.
struct ParsedFrame {
  FrameKind kind = FrameKind::kOther;
  TcpFrame frame;       // of kTcp, but for its number, its time and `stored`
  IpFragment fragment;  // of kIpFragment; its bytes are the frame's
};

// Finds the TCP segment of a frame: behind the link-layer header with any VLAN
// tags, in IPv4 with options or IPv6 with extension headers, unwrapped from
// MPLS, PPPoE, GRE, ERSPAN, VXLAN and IP in IP. `captured` are the
// frame's captured bytes, `wire_length` its length on the wire. The IP length
// bounds the segment, so link-layer padding is no payload; an IP length of 0,
// which captures with segmentation offload hold, means up to the end of the
// frame.
ParsedFrame ParseFrame(int link_type, std::span<const std::uint8_t> captured,
                       std::uint32_t wire_length);

// The same for what an IP packet holds that came in fragments.
ParsedFrame ParseWholePacket(const IpPacketName& packet,
                             std::span<const std::uint8_t> captured,
                             std::uint32_t wire_length);

}  // namespace host

#endif  // HOST_CAPTURE_FRAME_PARSER_H_
