#ifndef HOST_CAPTURE_IP_FRAGMENT_H_
#define HOST_CAPTURE_IP_FRAGMENT_H_

#include <compare>
#include <cstdint>
#include <span>

#include "host/capture/endpoint.h"

namespace host {

// By what the fragments of one IP packet know each other. The ends have no
// ports.
struct IpPacketName {
  Endpoint source;
  Endpoint destination;
  std::uint32_t identification = 0;
  std::uint8_t protocol = 0;

  auto operator<=>(const IpPacketName&) const = default;
};

// A piece of what an IP packet holds.
struct IpFragment {
  IpPacketName packet;
  std::uint32_t offset = 0;  // of its first byte there
  bool is_last = false;
  std::span<const std::uint8_t> bytes;  // that were captured
  std::uint32_t wire_length = 0;

  std::uint32_t end() const { return offset + wire_length; }
};

}  // namespace host

#endif  // HOST_CAPTURE_IP_FRAGMENT_H_
