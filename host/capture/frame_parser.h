#ifndef HOST_CAPTURE_FRAME_PARSER_H_
#define HOST_CAPTURE_FRAME_PARSER_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "host/capture/endpoint.h"
#include "host/text/time_text.h"

namespace host {

inline constexpr std::uint8_t kFin = 0x01;  // flags of a TCP header
inline constexpr std::uint8_t kSyn = 0x02;
inline constexpr std::uint8_t kRst = 0x04;
inline constexpr std::uint8_t kPush = 0x08;
inline constexpr std::uint8_t kAck = 0x10;

inline constexpr std::uint32_t kTcpHeaderBytes = 20;  // without options

// The fields of a TCP header that its first 14 bytes hold, without the ports,
// which are the ends'.
struct TcpHeader {
  std::uint32_t sequence = 0;
  std::uint32_t acknowledgement = 0;
  std::uint32_t length = 0;  // as the data offset says, 0 to 60 bytes
  std::uint8_t flags = 0;

  bool Has(std::uint8_t flag) const { return (flags & flag) != 0; }

  // None when fewer than those 14 bytes are there.
  static std::optional<TcpHeader> Parse(std::span<const std::uint8_t> tcp);
};

// What one frame brought of a segment that came in IP fragments.
struct FramePart {
  std::uint32_t length = 0;  // in bytes
  std::uint32_t frame = 0;   // its number
  Nanoseconds time = 0;
};

// A captured frame that holds (the beginning of) a TCP segment. The bytes
// belong to the capture reader and are gone with its next frame; from then on
// they are in its byte store.
struct TcpFrame {
  std::uint32_t number = 0;  // from 1 on over all frames of the capture
  Nanoseconds time = 0;
  Endpoint source;
  Endpoint destination;
  // What was captured from the TCP header on; at least the two ports.
  std::span<const std::uint8_t> tcp;
  // What was on the wire: more than tcp.size() where the snap length cut it.
  std::uint32_t wire_length = 0;
  std::optional<TcpHeader> header;  // TcpHeader::Parse(tcp)
  std::uint64_t stored = 0;         // the ByteStore::Offset of `tcp`
  // The frames that brought it, in the order of its bytes, if it came in
  // fragments; `number` and `time` are those of the frame that completed it.
  // Gone with the next frame.
  std::span<const FramePart> parts = {};
  // The IPv4 identification, new in each packet that a host sends; IPv6 has
  // none.
  std::optional<std::uint16_t> ip_identification = {};

  // What was captured behind the TCP header; none when the header is cut or
  // says that it is shorter than a TCP header is.
  std::optional<std::span<const std::uint8_t>> Payload() const;
};

enum class FrameKind {
  kTcp,
  kIpFragment,  // of a packet that would be kTcp if it were whole
  kOther,
};

// What a frame holds.
struct ParsedFrame {
  FrameKind kind = FrameKind::kOther;
  TcpFrame frame;  // of kTcp, but for its number, its time and `stored`
};

// Whether frames of this link type (a DLT_ value of libpcap) can be read.
bool IsLinkTypeKnown(int link_type);

// Finds the TCP segment of a frame: behind the link-layer header with any VLAN
// tags, in IPv4 with options or IPv6 with extension headers, unwrapped from
// MPLS, PPPoE, GRE, ERSPAN, VXLAN and IP in IP. `captured` are the
// frame's captured bytes, `wire_length` its length on the wire. The IP length
// bounds the segment, so link-layer padding is no payload; an IP length of 0,
// which captures with segmentation offload hold, means up to the end of the
// frame.
ParsedFrame ParseFrame(int link_type, std::span<const std::uint8_t> captured,
                       std::uint32_t wire_length);

}  // namespace host

#endif  // HOST_CAPTURE_FRAME_PARSER_H_
