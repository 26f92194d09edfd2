#include "host/capture/frame_parser.h"

#include <algorithm>
#include <cstdio>

#include "host/capture/wire_bytes.h"

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
// many bytes behind that were only on the wire.
struct Rest {
  WireReader captured;
  std::uint32_t missing = 0;

  // The headers so far say that `length` bytes follow and nothing more.
  void Bound(std::uint32_t length) {
    const Bytes bytes = captured.rest();
    const std::size_t count = std::min<std::size_t>(bytes.size(), length);
    captured = WireReader(bytes.first(count));
    missing = length - static_cast<std::uint32_t>(count);
  }
};

// Steps over a link header, which holds the protocol type between `before` and
// `behind` other bytes, and over the VLAN tags behind it.
bool SkipTypedHeader(std::size_t before, std::size_t behind, WireReader& in) {
  in.Skip(before);
  std::uint16_t type = in.Word16();
  in.Skip(behind);
  while (IsVlanTag(type)) {  // tag control information, then the next type
    in.Skip(2);
    type = in.Word16();
  }
  return in.ok() && (type == kTypeIpv4 || type == kTypeIpv6);
}

// The address family word of null and loopback captures is in the byte order of
// the machine that captured.
bool SkipFamilyHeader(WireReader& in) {
  const Bytes word = in.Bytes(4);
  if (!in.ok()) return false;
  const unsigned family = word[0] == 0 && word[1] == 0 ? word[3] : word[0];
  constexpr unsigned kFamilies[] = {2, 10, 24, 28, 30};  // of several systems
  return std::ranges::find(kFamilies, family) != std::end(kFamilies);
}

bool SkipLinkHeader(int link_type, WireReader& in) {
  switch (link_type) {
    case kEthernet:
      return SkipTypedHeader(12, 0, in);
    case kLinuxCooked:
      return SkipTypedHeader(14, 0, in);
    case kLinuxCooked2:
      return SkipTypedHeader(0, 18, in);
    case kNull:
    case kLoop:
      return SkipFamilyHeader(in);
    default:
      return true;
  }
}

Endpoint EndpointOf(Bytes address, std::uint16_t port) {
  Endpoint end;
  end.is_ipv6 = address.size() == end.address.size();
  std::ranges::copy(address, end.address.begin());
  end.port = port;
  return end;
}

// The segment that the IP headers lead to, which begins with the two ports.
ParsedFrame SegmentIn(Rest rest, Bytes source, Bytes destination) {
  TcpFrame frame;
  frame.tcp = rest.captured.rest();
  frame.wire_length =
      static_cast<std::uint32_t>(frame.tcp.size()) + rest.missing;
  frame.source = EndpointOf(source, rest.captured.Word16());
  frame.destination = EndpointOf(destination, rest.captured.Word16());
  if (!rest.captured.ok()) return {};  // whose it is cannot be known
  frame.header = TcpHeader::Parse(frame.tcp);
  return {FrameKind::kTcp, frame};
}

ParsedFrame ParseIpv4(Rest rest) {
  constexpr std::uint32_t kHeaderBytes = 20;  // without options
  WireReader& in = rest.captured;
  const std::uint32_t header_bytes = (in.Byte() & 0x0Fu) * 4;
  in.Skip(1);  // type of service
  const std::uint32_t total = in.Word16();
  const std::uint16_t identification = in.Word16();
  const bool is_fragment = (in.Word16() & 0x3FFF) != 0;
  in.Skip(1);  // time to live
  const std::uint8_t protocol = in.Byte();
  in.Skip(2);  // checksum
  const Bytes source = in.Bytes(4);
  const Bytes destination = in.Bytes(4);
  if (!in.ok() || header_bytes < kHeaderBytes || protocol != kProtocolTcp) {
    return {};
  }
  if (is_fragment) return {FrameKind::kIpFragment, {}};
  if (total != 0 && total < header_bytes) return {};
  if (total != 0) rest.Bound(total - kHeaderBytes);
  in.Skip(header_bytes - kHeaderBytes);  // options
  if (!in.ok()) return {};
  ParsedFrame parsed = SegmentIn(rest, source, destination);
  parsed.frame.ip_identification = identification;
  return parsed;
}

bool IsExtensionHeader(std::uint8_t type) {
  return type == 0 || type == 43 || type == 60 || type == 135 || type == 139 ||
         type == 140;
}

// Steps over the extension headers, the first of which is of type `next`, to
// what they lead to; kTcp when it is TCP.
FrameKind SkipExtensionHeaders(std::uint8_t next, WireReader& in) {
  constexpr std::uint8_t kFragment = 44;
  constexpr std::uint8_t kAuthentication = 51;
  while (next != kProtocolTcp) {
    const std::uint8_t type = next;
    next = in.Byte();
    const std::uint8_t length = in.Byte();
    const bool is_fragment = (in.Word16() & 0xFFF9) != 0;
    in.Skip(4);
    if (type == kFragment && is_fragment) {  // else it is the whole packet
      const bool of_tcp = in.ok() && next == kProtocolTcp;
      return of_tcp ? FrameKind::kIpFragment : FrameKind::kOther;
    }
    if (type == kAuthentication) {
      in.Skip(length * 4u);
    } else if (IsExtensionHeader(type)) {
      in.Skip(length * 8u);
    } else if (type != kFragment) {
      return FrameKind::kOther;
    }
    if (!in.ok()) return FrameKind::kOther;
  }
  return FrameKind::kTcp;
}

ParsedFrame ParseIpv6(Rest rest) {
  WireReader& in = rest.captured;
  in.Skip(4);  // version, traffic class, flow label
  const std::uint32_t payload = in.Word16();
  const std::uint8_t next = in.Byte();
  in.Skip(1);  // hop limit
  const Bytes source = in.Bytes(16);
  const Bytes destination = in.Bytes(16);
  if (!in.ok()) return {};
  if (payload != 0) rest.Bound(payload);
  const FrameKind kind = SkipExtensionHeaders(next, in);
  if (kind != FrameKind::kTcp) return {kind, {}};
  return SegmentIn(rest, source, destination);
}

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

std::optional<TcpHeader> TcpHeader::Parse(std::span<const std::uint8_t> tcp) {
  WireReader in(tcp);
  in.Skip(4);  // ports
  TcpHeader header;
  header.sequence = in.Word32();
  header.acknowledgement = in.Word32();
  header.length = (in.Byte() >> 4) * 4u;
  header.flags = in.Byte();
  if (!in.ok()) return {};
  return header;
}

std::optional<std::span<const std::uint8_t>> TcpFrame::Payload() const {
  if (!header || header->length < kTcpHeaderBytes ||
      header->length > tcp.size()) {
    return {};
  }
  return tcp.subspan(header->length);
}

bool IsLinkTypeKnown(int link_type) {
  constexpr int kKnown[] = {kNull,      kEthernet,    kRawIp,       kRawIpBsd,
                            kRawIpFile, kLoop,        kLinuxCooked, kIpv4,
                            kIpv6,      kLinuxCooked2};
  return std::ranges::find(kKnown, link_type) != std::end(kKnown);
}

ParsedFrame ParseFrame(int link_type, std::span<const std::uint8_t> captured,
                       std::uint32_t wire_length) {
  const auto size = static_cast<std::uint32_t>(captured.size());
  Rest rest{WireReader(captured), std::max(wire_length, size) - size};
  if (!SkipLinkHeader(link_type, rest.captured)) return {};
  const Bytes ip = rest.captured.rest();
  switch (ip.empty() ? 0 : ip[0] >> 4) {
    case 4:
      return ParseIpv4(rest);
    case 6:
      return ParseIpv6(rest);
    default:
      return {};
  }
}

}  // namespace host
