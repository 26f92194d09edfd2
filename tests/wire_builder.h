#ifndef TESTS_WIRE_BUILDER_H_
#define TESTS_WIRE_BUILDER_H_

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "host/capture/wire_bytes.h"
#include "host/streams/tcp_connections.h"
#include "interface/host_interface.h"
#include "tests/bytes.h"

namespace host {

using dicom::testing::AssociateAccept;
using dicom::testing::AssociateRequest;
using dicom::testing::Big16;
using dicom::testing::Big32;
using dicom::testing::Bytes;
using dicom::testing::CapturedPacket;
using dicom::testing::kCommand;
using dicom::testing::kData;
using dicom::testing::kLastCommand;
using dicom::testing::kLastData;
using dicom::testing::PData;
using dicom::testing::Pdu;
using dicom::testing::ReleaseReply;
using dicom::testing::ReleaseRequest;

// A PDV item on presentation context 1; its value has no byte 01h to 07h, so
// that no PDU seems to begin in it.
inline Bytes Pdv(std::uint8_t control, std::size_t value_bytes) {
  Bytes value(value_bytes);
  for (std::size_t i = 0; i < value.size(); ++i) {
    value[i] = static_cast<std::uint8_t>(0x40 + i * 7 % 101);
  }
  return dicom::testing::Pdv(1, control, value);
}

// A segment as a capture holds it; direction 0 is the association's requestor.
struct Segment {
  std::uint32_t direction = 0;
  std::uint32_t sequence = 0;
  std::uint32_t acknowledgement = 0;
  std::uint8_t flags = kAck;
  Bytes payload = {};
  std::uint32_t cut = 0;  // bytes behind the payload that were not captured

  Bytes Tcp() const {
    const Bytes ports[] = {Big16(41000) + Big16(104),
                           Big16(104) + Big16(41000)};
    return dicom::testing::TcpSegmentBytes({sequence, acknowledgement, flags},
                                           payload)
        .Patched(0, ports[direction]);
  }
};

// What two peers send each other, PDU by PDU, and the segments of it.
class Wire {
 public:
  std::uint32_t first_sequence = 1000;  // of the SYNs
  std::uint32_t second_sequence = 5000;
  std::size_t segment_bytes = 1448;
  std::vector<Segment> segments;
  std::string pdus;      // one line each: direction, type, length
  std::string messages;  // direction, command + data length
  std::array<Bytes, 2> streams;

  void Handshake() {
    segments.push_back({0, first_sequence, 0, kSyn});
    segments.push_back({1, second_sequence, first_sequence + 1, kSyn | kAck});
    Acknowledge(0);
  }
  // A handshake and the association's request.
  void Begin() {
    Handshake();
    Send(0, AssociateRequest({}));
  }
  void Send(std::uint32_t direction, const Bytes& pdu) {
    SendAll(direction, {pdu});
  }
  // Several PDUs in one stretch: segments hold the end of one and the beginning
  // of the next.
  void SendAll(std::uint32_t direction, const std::vector<Bytes>& all) {
    Bytes joined;
    for (const Bytes& pdu : all) {
      pdus +=
          std::to_string(direction) + " " + std::to_string(pdu.size()) + "\n";
      joined += pdu;
    }
    SendRaw(direction, joined);
  }
  void SendRaw(std::uint32_t direction, const Bytes& bytes) {
    for (std::size_t at = 0; at < bytes.size(); at += segment_bytes) {
      segments.push_back(Empty(direction));
      segments.back().payload = bytes.Part(at, segment_bytes);
      streams[direction] += segments.back().payload;
    }
    Acknowledge(1 - direction);
  }
  void Acknowledge(std::uint32_t direction) {
    segments.push_back(Empty(direction));
  }
  void Close() {
    for (const std::uint32_t direction : {0u, 1u}) {
      segments.push_back(Empty(direction));
      segments.back().flags |= kFin;
    }
  }
  void Message(std::uint32_t direction, std::size_t length) {
    messages += std::to_string(direction) + " " + std::to_string(length) + "\n";
  }

  // One association: a message in many PDUs, one with two PDVs in a PDU, one in
  // one PDU each, and one of several PDVs in several PDUs.
  void Association() {
    Begin();
    Send(1, AssociateAccept({}));
    SendAll(0, {PData(Pdv(kLastCommand, 100)), PData(Pdv(kData, 3000)),
                PData(Pdv(kData, 2000)), PData(Pdv(kLastData, 501))});
    Message(0, 5601);
    SendAll(1, {PData(Pdv(kLastCommand, 70)),
                PData(Pdv(kLastCommand, 82) + Pdv(kLastData, 300))});
    Message(1, 70);
    Message(1, 382);
    SendAll(0, {PData(Pdv(kCommand, 40) + Pdv(kLastCommand, 30) +
                      Pdv(kData, 90) + Pdv(kData, 8)),
                PData(Pdv(kLastData, 20000))});
    Message(0, 20168);
    Send(1, PData(Pdv(kLastCommand, 66)));
    Message(1, 66);
    Send(0, ReleaseRequest());
    Send(1, ReleaseReply());
    Close();
  }

 private:
  Segment Empty(std::uint32_t direction) const {
    const std::uint32_t next[] = {first_sequence + 1 + streams[0].Length(),
                                  second_sequence + 1 + streams[1].Length()};
    return {direction, next[direction], next[1 - direction]};
  }
};

inline Endpoint PeerOf(std::uint32_t direction) {
  Endpoint end;
  end.address = {192, 0, 2, static_cast<std::uint8_t>(direction + 1)};
  end.port = direction == 0 ? 41000 : 104;
  return end;
}

// Frames are numbered from 1 and come a millisecond apart.
inline void AddSegment(const Segment& s, std::uint32_t number,
                       TcpConnections* connections) {
  const Bytes tcp = s.Tcp();
  connections->Add({number, Nanoseconds{number} * 1'000'000,
                    PeerOf(s.direction), PeerOf(1 - s.direction), tcp,
                    tcp.Length() + s.cut, TcpHeader::Parse(tcp),
                    connections->store().Append(tcp)});
}

inline std::vector<Connection> Connect(
    const std::vector<Segment>& segments,
    HandOver hand_over = HandOver::kCleanStreams,
    const MakePduObserver& observe = {}) {
  TcpConnections connections(hand_over, std::make_shared<ByteStore>(), observe);
  std::uint32_t number = 0;
  for (const Segment& s : segments) AddSegment(s, ++number, &connections);
  connections.Finish();
  return connections.Take();
}

// How long the PDU at the beginning of `bytes` says that it is, in all; a PDV
// item likewise.
inline std::size_t PduLength(const Bytes& bytes) {
  WireReader in(bytes);
  in.Skip(2);
  return 6 + in.Word32();
}
inline std::size_t ItemLength(const Bytes& bytes) {
  return 4 + WireReader(bytes).Word32();
}

// One packet of a feed.
inline CapturedPacket PacketOf(const PacketFeed& feed, std::uint32_t number) {
  CapturedPacket packet{0, Bytes(DICOM_PACKET_BYTES)};
  const CopiedPacket copied =
      feed.CopyPacket(number, PacketRoom(packet.tcp_bytes));
  packet.direction = copied.direction;
  packet.tcp_bytes.resize(copied.bytes);
  return packet;
}

}  // namespace host

#endif  // TESTS_WIRE_BUILDER_H_
