#ifndef HOST_STREAMS_TCP_OPTIONS_H_
#define HOST_STREAMS_TCP_OPTIONS_H_

#include <cstdint>
#include <optional>

#include "host/capture/frame_parser.h"

namespace host {

// What the options of a packet say; empty is what they do not. The first three
// stand in a SYN.
struct TcpOptions {
  std::optional<std::uint16_t> segment_limit;  // bytes that its sender takes
  std::optional<std::uint8_t> window_scale;    // the shift, as it was sent
  bool timestamps = false;
  // The first byte of the newest data that came beside the order, or twice.
  std::optional<std::uint32_t> selective;
};

// Of any frame whose TCP header was parsed; what is cut or malformed ends the
// reading.
TcpOptions ReadTcpOptions(const TcpFrame& frame);

}  // namespace host

#endif  // HOST_STREAMS_TCP_OPTIONS_H_
