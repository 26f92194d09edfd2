#include <gtest/gtest.h>

#include "tests/wire_builder.h"

namespace host {
namespace {

const Bytes kTcp = Segment{0, 1, 2, kAck, {'p', 'a', 'y'}}.Tcp();

Bytes Ipv4(const Bytes& payload, int total = -1, std::uint16_t fragment = 0,
           const Bytes& options = {}) {
  const auto header = static_cast<std::uint8_t>(20 + options.size());
  if (total < 0) total = static_cast<int>(header + payload.size());
  return Bytes{static_cast<std::uint8_t>(0x40 | header / 4), 0} +
         Big16(static_cast<std::uint32_t>(total)) + Big16(7) + Big16(fragment) +
         Bytes{64, 6, 0, 0, 192, 0, 2, 1, 192, 0, 2, 2} + options + payload;
}

// The same for another protocol than TCP.
Bytes In4(std::uint8_t protocol, const Bytes& payload,
          std::uint16_t fragment = 0) {
  return Ipv4(payload, -1, fragment).Patched(9, {protocol});
}

Bytes Ipv6(std::uint8_t next, const Bytes& payload, int length = -1) {
  if (length < 0) length = static_cast<int>(payload.size());
  const Bytes address = Bytes{0x20, 1} + Bytes(14, 0);
  return Bytes{0x60, 0, 0, 0} + Big16(static_cast<std::uint32_t>(length)) +
         Bytes{next, 64} + address.Patched(15, {1}) + address.Patched(15, {2}) +
         payload;
}

Bytes Ethernet(const Bytes& types, const Bytes& payload) {
  return Bytes(12, 0xEE) + types + payload;
}

TEST(FrameParserTest, FindsTheSegmentBehindEveryHeader) {
  const Bytes ip = Ipv4(kTcp), v4 = Big16(0x0800), v6 = Big16(0x86DD);
  const Bytes hop{60, 0, 1, 4, 0, 0, 0, 0}, options{6, 1, 1, 12},
      dest = options + Bytes(12, 0), auth{6, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
      whole{6, 0, 0, 0, 0, 0, 0, 9}, part{6, 0, 0, 1, 0, 0, 0, 9};
  Bytes nested = ip;
  for (int i = 0; i < 2000; ++i) nested = In4(4, nested);
  // Those of a segment hold it whole, with these 23 bytes on the wire or more.
  const struct {
    const char* what;
    int link_type;
    Bytes frame;
    std::uint32_t wire_length = 23;
    FrameKind kind = FrameKind::kTcp;
  } cases[] = {
      {"ethernet", 1, Ethernet(v4, ip)},
      {"vlan", 1, Ethernet(Big16(0x8100) + Big16(5) + v4, ip)},
      {"vlan in vlan", 1,
       Ethernet(Big16(0x88A8) + Big16(5) + Big16(0x8100) + Big16(6) + v6,
                Ipv6(6, kTcp))},
      {"cooked", 113, Bytes(14, 0) + v4 + ip},
      {"cooked 2", 276, v4 + Bytes(18, 0) + ip},
      {"raw", 12, ip},
      {"raw, as files number it", 101, Ipv6(6, kTcp)},
      {"null, little-endian", 0, Bytes{2, 0, 0, 0} + ip},
      {"null, big-endian", 0, Bytes{0, 0, 0, 30} + Ipv6(6, kTcp)},
      {"loopback", 108, Bytes{0, 0, 0, 2} + ip},
      {"options", 12, Ipv4(kTcp, -1, 0, Bytes(40, 1))},
      {"padding", 12, ip + Bytes(6, 0)},
      {"total length 0", 12, Ipv4(kTcp, 0)},
      {"payload length 0", 12, Ipv6(6, kTcp, 0)},
      {"do not fragment", 12, Ipv4(kTcp, -1, 0x4000)},
      {"cut by the snap length", 12, Ipv4(kTcp, 1500), 1480},
      {"extension headers", 12, Ipv6(0, hop + dest + kTcp)},
      {"authentication", 12, Ipv6(51, auth + kTcp)},
      {"fragment that is all", 12, Ipv6(44, whole + kTcp)},
      {"mpls", 1, Ethernet(Big16(0x8847), Bytes{0, 1, 0, 9, 0, 2, 1, 9} + ip)},
      {"ethernet in mpls", 1,
       Ethernet(Big16(0x8847),
                Bytes{0, 2, 1, 9} + Bytes(4, 0) + Ethernet(v4, ip))},
      {"pppoe", 1,
       Ethernet(Big16(0x8864), Bytes{0x11, 0, 0, 1, 0, 0, 0, 0x21} + ip)},
      {"ip in ip", 12, In4(4, ip)},
      {"ipv6 in ip", 12, In4(41, Ipv6(6, kTcp))},
      {"gre with all fields", 12,
       In4(47, Bytes{0xB0, 0, 8, 0} + Bytes(12, 7) + ip)},
      {"gre with ethernet", 12,
       In4(47, Bytes{0, 0, 0x65, 0x58} +
                   Ethernet(Big16(0x8100) + Big16(5) + v4, ip))},
      {"erspan", 12, In4(47, Bytes{0, 0, 0x88, 0xBE} + Ethernet(v4, ip))},
      {"erspan II", 12,
       In4(47, Bytes{0x10, 0, 0x88, 0xBE, 0, 0, 0, 1} + Bytes(8, 0x10) +
                   Ethernet(v4, ip))},
      {"erspan III", 12,
       Ipv6(47, Bytes{0x10, 0, 0x22, 0xEB, 0, 0, 0, 1} + Bytes(12, 0x20) +
                    Ethernet(v4, ip))},
      {"erspan III with a subheader", 12,
       Ipv6(47, Bytes{0x10, 0, 0x22, 0xEB, 0, 0, 0, 1} + Bytes(11, 0x20) +
                    Bytes(9, 1) + Ethernet(v4, ip))},
      {"vxlan", 12,
       In4(17, Big16(50000) + Big16(4789) + Bytes(4, 0) +
                   Bytes{8, 0, 0, 0, 0, 0, 1, 0} + Ethernet(v4, ip))},
      {"three tunnels", 12,
       In4(47, Bytes{0, 0, 8, 0} + In4(4, In4(47, Bytes{0, 0, 0x88, 0xBE} +
                                                      Ethernet(v4, ip))))},
      {"tunnels without end", 12, nested, 0, FrameKind::kOther},
      {"gre of another version", 12, In4(47, Bytes{0, 1, 8, 0} + ip), 0,
       FrameKind::kOther},
      {"fragment of gre", 12, In4(47, ip, 0x2000), 0, FrameKind::kIpFragment},
      {"fragment 4", 12, Ipv4(kTcp, -1, 0x2000), 0, FrameKind::kIpFragment},
      {"later fragment", 12, Ipv4(kTcp, -1, 3), 0, FrameKind::kIpFragment},
      {"fragment 6", 12, Ipv6(44, part + kTcp), 0, FrameKind::kIpFragment},
      {"arp", 1, Ethernet(Big16(0x0806), ip), 0, FrameKind::kOther},
      {"udp", 12, Ipv6(17, kTcp), 0, FrameKind::kOther},
      {"short header", 12, Bytes{0x44} + Bytes(40, 0), 0, FrameKind::kOther},
      {"total below header", 12, Ipv4(kTcp, 19), 0, FrameKind::kOther},
      {"no ports", 12, Ipv4({1, 2, 3}), 0, FrameKind::kOther},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const auto [kind, frame, fragment] =
        ParseFrame(c.link_type, c.frame, c.frame.Length());
    EXPECT_EQ(kind, c.kind);
    EXPECT_EQ(Bytes(frame.tcp.begin(), frame.tcp.end()),
              c.wire_length != 0 ? kTcp : Bytes());
    EXPECT_EQ(frame.wire_length, c.wire_length);
    EXPECT_EQ(frame.source.port, c.wire_length != 0 ? 41000 : 0);
    // Cut anywhere nothing is read behind the end (the sanitizer watches).
    for (std::size_t n = 0; n < c.frame.size(); ++n) {
      ParseFrame(c.link_type, c.frame.First(n), 1500);
    }
  }
}

TEST(FrameParserTest, EndpointsAreWrittenAsUsual) {
  Endpoint end;
  end.address = {192, 0, 2, 10};
  end.port = 41522;
  EXPECT_EQ(EndpointText(end), "192.0.2.10:41522");
  const std::pair<Bytes, const char*> cases[] = {
      {{0x20, 1, 0xD, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
       "[2001:db8::1]:41522"},
      {Bytes(16, 0), "[::]:41522"},
      {{0, 0, 0, 1, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0}, "[0:1:0:0:2::]:41522"},
      {{0, 1, 0, 0, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7},
       "[1:0:2:3:4:5:6:7]:41522"},
  };
  end.is_ipv6 = true;
  for (const auto& [bytes, text] : cases) {
    std::copy(bytes.begin(), bytes.end(), end.address.begin());
    EXPECT_EQ(EndpointText(end), text);
  }
}

}  // namespace
}  // namespace host
