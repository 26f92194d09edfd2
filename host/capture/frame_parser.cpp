#include "host/capture/frame_parser.h"

#include <algorithm>
#include <cstdio>

namespace host {
namespace {

using Bytes = std::span<const std::uint8_t>;

// The link types by the numbers that capture files and libpcap give them.
enum LinkType : int {
  kNull = 0,
  kEthernet = 1,
  kRawIp = 12,
  kRawIpBsd = 14,
  kRawIpFile = 101,
  kLoop = 108,
  kLinuxCooked = 113,
  kIpv4 = 228,
  kIpv6 = 229,
  kLinuxCooked2 = 276,
};

constexpr std::uint16_t kTypeIpv4 = 0x0800;
constexpr std::uint16_t kTypeIpv6 = 0x86DD;
constexpr std::uint8_t kProtocolTcp = 6;

bool IsVlanTag(std::uint16_t type) {
  return type == 0x8100 || type == 0x88A8 || type == 0x9100 || type == 0x9200;
}

// The part of a frame that is not yet read: what was captured of it, and how
// long it was on the wire.
struct Rest {
  Bytes captured;
  std::uint32_t wire = 0;

  bool Skip(std::size_t count) {
    if (captured.size() < count || wire < count) return false;
    captured = captured.subspan(count);
    wire -= static_cast<std::uint32_t>(count);
    return true;
  }
  void Bound(std::uint32_t length) {
    wire = length;
    captured = captured.first(std::min<std::size_t>(captured.size(), length));
  }
};

// Steps over the link header whose protocol type is at `type_at` and whose
// length is `header_bytes`, and over the VLAN tags behind it.
bool SkipTypedHeader(std::size_t type_at, std::size_t header_bytes,
                     Rest* rest) {
  if (rest->captured.size() < header_bytes) return false;
  std::uint16_t type = Word16At(rest->captured, type_at);
  if (!rest->Skip(header_bytes)) return false;
  while (IsVlanTag(type)) {  // tag control information, then the next type
    if (rest->captured.size() < 4) return false;
    type = Word16At(rest->captured, 2);
    if (!rest->Skip(4)) return false;
  }
  return type == kTypeIpv4 || type == kTypeIpv6;
}

// The address family word of null and loopback captures is in the byte order of
// the machine that captured.
bool SkipFamilyHeader(Rest* rest) {
  if (rest->captured.size() < 4) return false;
  const Bytes b = rest->captured;
  const unsigned family = b[0] == 0 && b[1] == 0 ? b[3] : b[0];
  constexpr unsigned kFamilies[] = {2, 10, 24, 28, 30};  // of several systems
  return std::ranges::find(kFamilies, family) != std::end(kFamilies) &&
         rest->Skip(4);
}

bool SkipLinkHeader(int link_type, Rest* rest) {
  switch (link_type) {
    case kEthernet:
      return SkipTypedHeader(12, 14, rest);
    case kLinuxCooked:
      return SkipTypedHeader(14, 16, rest);
    case kLinuxCooked2:
      return SkipTypedHeader(0, 20, rest);
    case kNull:
    case kLoop:
      return SkipFamilyHeader(rest);
    default:
      return true;
  }
}

FrameKind ParseIpv4(Rest rest, TcpFrame* frame) {
  const Bytes ip = rest.captured;
  if (ip.size() < 20) return FrameKind::kOther;
  const std::uint32_t header_bytes = (ip[0] & 0x0Fu) * 4;
  const std::uint32_t total = Word16At(ip, 2);
  if (header_bytes < 20 || ip[9] != kProtocolTcp) return FrameKind::kOther;
  if ((Word16At(ip, 6) & 0x3FFF) != 0) return FrameKind::kIpFragment;
  if (total != 0) rest.Bound(total);
  if (!rest.Skip(header_bytes)) return FrameKind::kOther;
  std::copy_n(ip.begin() + 12, 4, frame->source.address.begin());
  std::copy_n(ip.begin() + 16, 4, frame->destination.address.begin());
  frame->tcp = rest.captured;
  frame->wire_length = rest.wire;
  return FrameKind::kTcp;
}

bool IsExtensionHeader(std::uint8_t header) {
  return header == 0 || header == 43 || header == 60 || header == 135 ||
         header == 139 || header == 140;
}

// Steps over the extension headers to what they lead to; kTcp when it is TCP.
FrameKind SkipExtensionHeaders(std::uint8_t next, Rest* rest) {
  while (next != kProtocolTcp) {
    if (rest->captured.size() < 8) return FrameKind::kOther;
    const Bytes header = rest->captured;
    std::size_t bytes = 8;
    if (next == 44) {  // fragment; one that is the whole packet is none
      if ((Word16At(header, 2) & 0xFFF9) != 0) {
        return header[0] == kProtocolTcp ? FrameKind::kIpFragment
                                         : FrameKind::kOther;
      }
    } else if (next == 51) {  // authentication
      bytes = (header[1] + 2u) * 4;
    } else if (IsExtensionHeader(next)) {
      bytes = (header[1] + 1u) * 8;
    } else {
      return FrameKind::kOther;
    }
    next = header[0];
    if (!rest->Skip(bytes)) return FrameKind::kOther;
  }
  return FrameKind::kTcp;
}

FrameKind ParseIpv6(Rest rest, TcpFrame* frame) {
  const Bytes ip = rest.captured;
  if (!rest.Skip(40)) return FrameKind::kOther;
  const std::uint32_t payload = Word16At(ip, 4);
  if (payload != 0) rest.Bound(payload);
  const FrameKind kind = SkipExtensionHeaders(ip[6], &rest);
  if (kind != FrameKind::kTcp) return kind;
  frame->source.is_ipv6 = frame->destination.is_ipv6 = true;
  std::copy_n(ip.begin() + 8, 16, frame->source.address.begin());
  std::copy_n(ip.begin() + 24, 16, frame->destination.address.begin());
  frame->tcp = rest.captured;
  frame->wire_length = rest.wire;
  return FrameKind::kTcp;
}

FrameKind ParseIp(const Rest& rest, TcpFrame* frame) {
  if (rest.captured.empty()) return FrameKind::kOther;
  switch (rest.captured[0] >> 4) {
    case 4:
      return ParseIpv4(rest, frame);
    case 6:
      return ParseIpv6(rest, frame);
    default:
      return FrameKind::kOther;
  }
}

std::string Ipv4Text(const std::array<std::uint8_t, 16>& a) {
  char text[16];
  std::snprintf(text, sizeof text, "%u.%u.%u.%u", a[0], a[1], a[2], a[3]);
  return text;
}

// The address's longest run of two or more zero groups, which the text leaves
// out: its first group and the group behind it; 8 and 8 without one.
struct ZeroRun {
  unsigned begin = 8, end = 8;
};

ZeroRun LongestZeroRun(const std::array<std::uint8_t, 16>& a) {
  ZeroRun longest;
  for (unsigned i = 0; i < 8;) {
    unsigned end = i;
    while (end < 8 && Word16At(a, end * 2) == 0) ++end;
    const unsigned best = std::max(longest.end - longest.begin, 1u);
    if (end - i > best) longest = {i, end};
    i = end + 1;
  }
  return longest;
}

std::string Ipv6Text(const std::array<std::uint8_t, 16>& a) {
  const ZeroRun zeros = LongestZeroRun(a);
  std::string text;
  for (unsigned i = 0; i < 8; ++i) {
    if (i == zeros.begin) {
      text += "::";
      i = zeros.end - 1;
      continue;
    }
    if (!text.empty() && text.back() != ':') text += ':';
    char group[5];
    std::snprintf(group, sizeof group, "%x", Word16At(a, i * 2));
    text += group;
  }
  return text;
}

}  // namespace

std::uint16_t Word16At(std::span<const std::uint8_t> bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}

std::uint32_t Word32At(std::span<const std::uint8_t> bytes, std::size_t at) {
  return static_cast<std::uint32_t>(Word16At(bytes, at)) << 16 |
         Word16At(bytes, at + 2);
}

std::string EndpointText(const Endpoint& endpoint) {
  const std::string port = ":" + std::to_string(endpoint.port);
  if (endpoint.is_ipv6) return "[" + Ipv6Text(endpoint.address) + "]" + port;
  return Ipv4Text(endpoint.address) + port;
}

TcpHeader TcpHeader::Parse(std::span<const std::uint8_t> tcp) {
  TcpHeader header;
  header.sequence = Word32At(tcp, 4);
  header.acknowledgement = Word32At(tcp, 8);
  header.length = (tcp[12] >> 4) * 4u;
  header.flags = tcp[13];
  return header;
}

bool IsLinkTypeKnown(int link_type) {
  constexpr int kKnown[] = {kNull,      kEthernet,    kRawIp,       kRawIpBsd,
                            kRawIpFile, kLoop,        kLinuxCooked, kIpv4,
                            kIpv6,      kLinuxCooked2};
  return std::ranges::find(kKnown, link_type) != std::end(kKnown);
}

FrameKind ParseFrame(int link_type, std::span<const std::uint8_t> captured,
                     std::uint32_t wire_length, TcpFrame* frame) {
  Rest rest{captured,
            std::max(wire_length, static_cast<std::uint32_t>(captured.size()))};
  if (!SkipLinkHeader(link_type, &rest)) return FrameKind::kOther;
  TcpFrame found = *frame;
  found.source = found.destination = Endpoint();
  const FrameKind kind = ParseIp(rest, &found);
  if (kind != FrameKind::kTcp) return kind;
  if (found.tcp.size() < 4) return FrameKind::kOther;  // whose is unknown
  found.source.port = Word16At(found.tcp, 0);
  found.destination.port = Word16At(found.tcp, 2);
  *frame = found;
  return FrameKind::kTcp;
}

}  // namespace host
