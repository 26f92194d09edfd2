#ifndef HOST_CAPTURE_IPV6_EXTENSIONS_H_
#define HOST_CAPTURE_IPV6_EXTENSIONS_H_

#include <cstdint>
#include <optional>

#include "host/capture/wire_bytes.h"

namespace host {

// What the headers of an IPv6 packet lead to.
struct Ipv6Content {
  std::uint8_t protocol = 0;
  bool is_fragment = false;          // the rest is for fragments only
  std::uint32_t identification = 0;  // of the packet
  std::uint32_t offset = 0;          // in it
  bool is_last = false;
};

// Steps over the extension headers, the first of which is of type `next`; none
// when they are cut.
std::optional<Ipv6Content> SkipExtensionHeaders(std::uint8_t next,
                                                WireReader& in);

}  // namespace host

#endif  // HOST_CAPTURE_IPV6_EXTENSIONS_H_
