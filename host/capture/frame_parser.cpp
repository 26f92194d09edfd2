#include "host/capture/frame_parser.h"

#include <algorithm>

#include "host/capture/ipv6_extensions.h"
#include "host/capture/link_types.h"
#include "host/capture/wire_bytes.h"

namespace host {
namespace {

using Bytes = std::span<const std::uint8_t>;

// What EtherTypes and the protocol numbers of IP headers name.
enum EtherType : std::uint16_t {
  kTypeIpv4 = 0x0800,
  kTypeIpv6 = 0x86DD,
  kTypeMpls = 0x8847,
  kTypeMplsUpstream = 0x8848,
  kTypePppoe = 0x8864,
  kTypeEthernet = 0x6558,  // a whole Ethernet frame
  kTypeErspan = 0x88BE,    // I and II
  kTypeErspanThree = 0x22EB,
};
enum Protocol : std::uint8_t {
  kIpInIp = 4,
  kTcp = 6,
  kUdp = 17,
  kIpv6InIp = 41,
  kGre = 47,
};

// Headers that bring others along, in one frame; VLAN tags are not counted.
constexpr int kMostTunnels = 16;

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

// The address family word of null and loopback captures is in the byte order of
// the machine that captured.
bool SkipFamilyHeader(WireReader& in) {
  const Bytes word = in.Bytes(4);
  if (!in.ok()) return false;
  const unsigned family = word[0] == 0 && word[1] == 0 ? word[3] : word[0];
  constexpr unsigned kFamilies[] = {2, 10, 24, 28, 30};  // of several systems
  return std::ranges::find(kFamilies, family) != std::end(kFamilies);
}

// Goes from a frame's link header through all that it is wrapped in, as mirror
// ports wrap what they send on, to the first TCP segment.
class FrameWalk {
 public:
  explicit FrameWalk(const Rest& rest) : rest_(rest), in_(rest_.captured) {}

  ParsedFrame Link(int link_type);
  // What an IP packet holds.
  ParsedFrame Inside(const IpPacketName& packet);

 private:
  // What begins here; each steps over its own header.
  ParsedFrame Typed(std::uint16_t type);  // with this EtherType
  ParsedFrame Ethernet();
  ParsedFrame Mpls();
  ParsedFrame Pppoe();
  ParsedFrame AnyIp();
  ParsedFrame Ipv4();
  ParsedFrame Ipv6();
  // The rest is a fragment of this packet.
  ParsedFrame Fragment(const IpPacketName& packet, std::uint32_t offset,
                       bool is_last) const;
  ParsedFrame Segment(const IpPacketName& packet);
  ParsedFrame Udp();
  ParsedFrame Gre();
  ParsedFrame Erspan(std::uint16_t type, bool has_sequence);

  Rest rest_;
  WireReader& in_;  // rest_'s
  int tunnels_ = 0;
};

ParsedFrame FrameWalk::Link(int link_type) {
  switch (link_type) {
    case kEthernet:
      return Ethernet();
    case kLinuxCooked:
      in_.Skip(14);
      return Typed(in_.Word16());
    case kLinuxCooked2: {
      const std::uint16_t type = in_.Word16();
      in_.Skip(18);
      return Typed(type);
    }
    case kNull:
    case kLoop:
      return SkipFamilyHeader(in_) ? AnyIp() : ParsedFrame();
    default:
      return AnyIp();
  }
}

ParsedFrame FrameWalk::Ethernet() {
  ++tunnels_;
  in_.Skip(12);
  return Typed(in_.Word16());
}

ParsedFrame FrameWalk::Typed(std::uint16_t type) {
  while (IsVlanTag(type)) {  // tag control information, then the next type
    in_.Skip(2);
    type = in_.Word16();
  }
  if (!in_.ok() || tunnels_ > kMostTunnels) return {};
  switch (type) {
    case kTypeIpv4:
    case kTypeIpv6:
      return AnyIp();
    case kTypeMpls:
    case kTypeMplsUpstream:
      return Mpls();
    case kTypePppoe:
      return Pppoe();
    case kTypeEthernet:
      return Ethernet();
    default:
      return {};
  }
}

// The labels do not say what follows: IP by its version, else Ethernet, before
// which a control word of zeros may stand.
ParsedFrame FrameWalk::Mpls() {
  ++tunnels_;
  bool is_last = false;
  while (in_.ok() && !is_last) is_last = (in_.Word32() & 0x100) != 0;
  if (!in_.ok() || in_.rest().empty()) return {};
  const unsigned version = in_.rest()[0] >> 4;
  if (version == 4 || version == 6) return AnyIp();
  if (in_.rest()[0] == 0) in_.Skip(4);
  return Ethernet();
}

ParsedFrame FrameWalk::Pppoe() {
  ++tunnels_;
  in_.Skip(6);
  const std::uint16_t protocol = in_.Word16();  // of PPP
  const bool is_ip = protocol == 0x0021 || protocol == 0x0057;
  return is_ip ? AnyIp() : ParsedFrame();
}

ParsedFrame FrameWalk::AnyIp() {
  if (tunnels_ > kMostTunnels) return {};
  const Bytes ip = in_.rest();
  switch (ip.empty() ? 0 : ip[0] >> 4) {
    case 4:
      return Ipv4();
    case 6:
      return Ipv6();
    default:
      return {};
  }
}

// UDP is left out: nobody fragments VXLAN, and others' fragments would be kept
// for nothing.
ParsedFrame FrameWalk::Fragment(const IpPacketName& packet,
                                std::uint32_t offset, bool is_last) const {
  constexpr std::uint8_t kLeadOn[] = {kTcp, kGre, kIpInIp, kIpv6InIp};
  if (std::ranges::find(kLeadOn, packet.protocol) == std::end(kLeadOn)) {
    return {};
  }
  IpFragment fragment{packet, offset, is_last, in_.rest()};
  fragment.wire_length =
      static_cast<std::uint32_t>(fragment.bytes.size()) + rest_.missing;
  return {FrameKind::kIpFragment, {}, fragment};
}

ParsedFrame FrameWalk::Inside(const IpPacketName& packet) {
  switch (packet.protocol) {
    case kTcp:
      return Segment(packet);
    case kUdp:
      return Udp();
    case kGre:
      return Gre();
    case kIpInIp:
    case kIpv6InIp:
      ++tunnels_;
      return AnyIp();
    default:
      return {};
  }
}

// VXLAN is the one protocol on UDP that brings frames along.
ParsedFrame FrameWalk::Udp() {
  ++tunnels_;
  constexpr std::uint16_t kVxlanPort = 4789;
  constexpr std::uint8_t kVxlanFlag = 0x08;  // the network's number is valid
  in_.Skip(2);
  const std::uint16_t port = in_.Word16();
  in_.Skip(4);
  const std::uint8_t flags = in_.Byte();
  in_.Skip(7);
  return port == kVxlanPort && (flags & kVxlanFlag) != 0 ? Ethernet()
                                                         : ParsedFrame();
}

ParsedFrame FrameWalk::Gre() {
  ++tunnels_;
  const std::uint16_t flags = in_.Word16();
  const std::uint16_t type = in_.Word16();
  constexpr std::uint16_t kChecksum = 0x8000, kRouting = 0x4000, kKey = 0x2000,
                          kSequence = 0x1000, kVersion = 0x0007;
  if ((flags & (kRouting | kVersion)) != 0) return {};
  for (const std::uint16_t field : {kChecksum, kKey, kSequence}) {
    if ((flags & field) != 0) in_.Skip(4);
  }
  const bool is_erspan = type == kTypeErspan || type == kTypeErspanThree;
  return is_erspan ? Erspan(type, (flags & kSequence) != 0) : Typed(type);
}

// The first version has no header of its own, and no sequence number in that of
// GRE.
ParsedFrame FrameWalk::Erspan(std::uint16_t type, bool has_sequence) {
  if (type == kTypeErspanThree) {
    in_.Skip(11);
    const bool has_more = (in_.Byte() & 1) != 0;
    if (has_more) in_.Skip(8);
  } else if (has_sequence) {
    in_.Skip(8);
  }
  return Ethernet();
}

Endpoint HostAt(Bytes address) {
  Endpoint host;
  host.is_ipv6 = address.size() == host.address.size();
  std::ranges::copy(address, host.address.begin());
  return host;
}

// The segment that the IP headers lead to, which begins with the two ports.
ParsedFrame FrameWalk::Segment(const IpPacketName& packet) {
  TcpFrame frame;
  frame.source = packet.source;
  frame.destination = packet.destination;
  frame.tcp = in_.rest();
  frame.wire_length =
      static_cast<std::uint32_t>(frame.tcp.size()) + rest_.missing;
  frame.source.port = in_.Word16();
  frame.destination.port = in_.Word16();
  if (!in_.ok()) return {};  // whose it is cannot be known
  frame.header = TcpHeader::Parse(frame.tcp);
  if (!packet.source.is_ipv6) {
    frame.ip_identification = static_cast<std::uint16_t>(packet.identification);
  }
  return {FrameKind::kTcp, frame, {}};
}

ParsedFrame FrameWalk::Ipv4() {
  constexpr std::uint32_t kHeaderBytes = 20;  // without options
  constexpr std::uint16_t kMoreFragments = 0x2000, kOffset = 0x1FFF;
  IpPacketName packet;
  const std::uint32_t header_bytes = (in_.Byte() & 0x0Fu) * 4;
  in_.Skip(1);  // type of service
  const std::uint32_t total = in_.Word16();
  packet.identification = in_.Word16();
  const std::uint16_t place = in_.Word16();
  in_.Skip(1);  // time to live
  packet.protocol = in_.Byte();
  in_.Skip(2);  // checksum
  packet.source = HostAt(in_.Bytes(4));
  packet.destination = HostAt(in_.Bytes(4));
  if (!in_.ok() || header_bytes < kHeaderBytes) return {};
  if (total != 0 && total < header_bytes) return {};
  if (total != 0) rest_.Bound(total - kHeaderBytes);
  in_.Skip(header_bytes - kHeaderBytes);  // options
  if (!in_.ok()) return {};
  const bool is_last = (place & kMoreFragments) == 0;
  const std::uint32_t offset = (place & kOffset) * 8u;
  if (offset != 0 || !is_last) return Fragment(packet, offset, is_last);
  return Inside(packet);
}

ParsedFrame FrameWalk::Ipv6() {
  IpPacketName packet;
  in_.Skip(4);  // version, traffic class, flow label
  const std::uint32_t payload = in_.Word16();
  const std::uint8_t next = in_.Byte();
  in_.Skip(1);  // hop limit
  packet.source = HostAt(in_.Bytes(16));
  packet.destination = HostAt(in_.Bytes(16));
  if (!in_.ok()) return {};
  if (payload != 0) rest_.Bound(payload);
  const auto content = SkipExtensionHeaders(next, in_);
  if (!content) return {};
  packet.protocol = content->protocol;
  packet.identification = content->identification;
  if (!content->is_fragment) return Inside(packet);
  return Fragment(packet, content->offset, content->is_last);
}

}  // namespace

ParsedFrame ParseFrame(int link_type, std::span<const std::uint8_t> captured,
                       std::uint32_t wire_length) {
  const auto size = static_cast<std::uint32_t>(captured.size());
  const Rest rest{WireReader(captured), std::max(wire_length, size) - size};
  return FrameWalk(rest).Link(link_type);
}

ParsedFrame ParseWholePacket(const IpPacketName& packet,
                             std::span<const std::uint8_t> captured,
                             std::uint32_t wire_length) {
  const auto size = static_cast<std::uint32_t>(captured.size());
  const Rest rest{WireReader(captured), std::max(wire_length, size) - size};
  return FrameWalk(rest).Inside(packet);
}

}  // namespace host
