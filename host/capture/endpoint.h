#ifndef HOST_CAPTURE_ENDPOINT_H_
#define HOST_CAPTURE_ENDPOINT_H_

#include <array>
#include <compare>
#include <cstdint>
#include <string>

namespace host {

// One end of a TCP connection. An IPv4 address keeps its four bytes first and
// zeros behind them.
struct Endpoint {
  bool is_ipv6 = false;
  std::array<std::uint8_t, 16> address{};
  std::uint16_t port = 0;

  auto operator<=>(const Endpoint&) const = default;
};

// "192.0.2.10:41522" or "[2001:db8::1]:104", the address as short as can be.
std::string EndpointText(const Endpoint& endpoint);

}  // namespace host

#endif  // HOST_CAPTURE_ENDPOINT_H_
