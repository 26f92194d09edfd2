#ifndef HOST_CAPTURE_TCP_FRAME_H_
#define HOST_CAPTURE_TCP_FRAME_H_

#include <cstdint>
#include <optional>
#include <span>

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

}  // namespace host

#endif  // HOST_CAPTURE_TCP_FRAME_H_
