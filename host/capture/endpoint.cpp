#include "host/capture/endpoint.h"

#include <algorithm>
#include <cstdio>

#include "host/capture/wire_bytes.h"

namespace host {
namespace {

std::string Ipv4Text(const Endpoint& end) {
  const auto& a = end.address;
  char text[16];
  std::snprintf(text, sizeof text, "%u.%u.%u.%u", a[0], a[1], a[2], a[3]);
  return text;
}

using Groups = std::array<std::uint16_t, 8>;  // of an IPv6 address

// The address's longest run of two or more zero groups, which the text leaves
// out: its first group and the group behind it; 8 and 8 without one.
struct ZeroRun {
  unsigned begin = 8, end = 8;
};

ZeroRun LongestZeroRun(const Groups& groups) {
  ZeroRun longest;
  for (unsigned i = 0; i < 8;) {
    unsigned end = i;
    while (end < 8 && groups[end] == 0) ++end;
    const unsigned best = std::max(longest.end - longest.begin, 1u);
    if (end - i > best) longest = {i, end};
    i = end + 1;
  }
  return longest;
}

std::string Ipv6Text(const Endpoint& end) {
  Groups groups;
  WireReader in(end.address);
  for (std::uint16_t& group : groups) group = in.Word16();
  const ZeroRun zeros = LongestZeroRun(groups);
  std::string text;
  for (unsigned i = 0; i < 8; ++i) {
    if (i == zeros.begin) {
      text += "::";
      i = zeros.end - 1;
      continue;
    }
    if (!text.empty() && text.back() != ':') text += ':';
    char group[5];
    std::snprintf(group, sizeof group, "%x", groups[i]);
    text += group;
  }
  return text;
}

}  // namespace

std::string EndpointText(const Endpoint& endpoint) {
  const std::string port = ":" + std::to_string(endpoint.port);
  if (endpoint.is_ipv6) return "[" + Ipv6Text(endpoint) + "]" + port;
  return Ipv4Text(endpoint) + port;
}

}  // namespace host
