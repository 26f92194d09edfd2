#ifndef TESTS_WIRE_BUILDER_H_
#define TESTS_WIRE_BUILDER_H_

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "host/tcp_connections.h"

namespace host {

using Bytes = std::vector<std::uint8_t>;

inline Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

inline Bytes Big16(std::uint32_t v) {
  return {static_cast<std::uint8_t>(v >> 8), static_cast<std::uint8_t>(v)};
}
inline Bytes Big32(std::uint32_t v) { return Big16(v >> 16) + Big16(v); }

inline Bytes Pdu(std::uint8_t type, const Bytes& body) {
  return Bytes{type, 0} + Big32(static_cast<std::uint32_t>(body.size())) + body;
}
inline Bytes Associate(std::uint8_t type) {  // protocol version 1, no items
  Bytes body(68, 0x20);
  body[0] = 0;
  body[1] = 1;
  return Pdu(type, body);
}
inline Bytes Release(std::uint8_t type) { return Pdu(type, Bytes(4, 0)); }

enum Control : std::uint8_t {
  kData = 0,
  kCommand = 1,
  kLastData = 2,
  kLastCommand = 3
};

// A PDV item on presentation context 1; its value has no byte 01h to 07h, so
// that no PDU seems to begin in it.
inline Bytes Pdv(Control control, std::size_t value_bytes) {
  Bytes value(value_bytes);
  for (std::size_t i = 0; i < value.size(); ++i) {
    value[i] = static_cast<std::uint8_t>(0x40 + i * 7 % 101);
  }
  return Big32(static_cast<std::uint32_t>(value_bytes + 2)) +
         Bytes{1, control} + value;
}
inline Bytes PData(const Bytes& items) { return Pdu(4, items); }

// A segment as a capture holds it; direction 0 is the association's requestor.
struct Segment {
  std::uint32_t direction = 0;
  std::uint32_t sequence = 0;
  std::uint32_t acknowledgement = 0;
  std::uint8_t flags = kAck;
  Bytes payload;
  std::uint32_t wire_payload = 0;  // more than payload when the snap length cut

  Bytes Tcp() const {
    return Big16(direction == 0 ? 41000 : 104) +
           Big16(direction == 0 ? 104 : 41000) + Big32(sequence) +
           Big32(acknowledgement) + Bytes{0x50, flags} + Bytes(6, 0) + payload;
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
    segments.push_back({0, first_sequence, 0, kSyn, {}, 0});
    segments.push_back(
        {1, second_sequence, first_sequence + 1, kSyn | kAck, {}, 0});
    Acknowledge(0);
  }
  void Send(std::uint32_t direction, const Bytes& pdu) {
    pdus += std::to_string(direction) + " " + std::to_string(pdu.size()) + "\n";
    SendRaw(direction, pdu);
  }
  // Several PDUs in one stretch: segments hold the end of one and the beginning
  // of the next.
  void SendAll(std::uint32_t direction, const std::vector<Bytes>& all) {
    Bytes joined;
    for (const Bytes& pdu : all) {
      pdus +=
          std::to_string(direction) + " " + std::to_string(pdu.size()) + "\n";
      joined = joined + pdu;
    }
    SendRaw(direction, joined);
  }
  void SendRaw(std::uint32_t direction, const Bytes& bytes) {
    for (std::size_t at = 0; at < bytes.size(); at += segment_bytes) {
      const std::size_t end = std::min(bytes.size(), at + segment_bytes);
      Segment s = Empty(direction);
      s.payload.assign(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                       bytes.begin() + static_cast<std::ptrdiff_t>(end));
      s.wire_payload = static_cast<std::uint32_t>(s.payload.size());
      segments.push_back(s);
      streams[direction] = streams[direction] + s.payload;
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
    Handshake();
    Send(0, Associate(1));
    Send(1, Associate(2));
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
    Send(0, Release(5));
    Send(1, Release(6));
    Close();
  }

 private:
  Segment Empty(std::uint32_t direction) const {
    const std::uint32_t own = direction == 0 ? first_sequence : second_sequence;
    const std::uint32_t other =
        direction == 0 ? second_sequence : first_sequence;
    return {
        direction,
        own + 1 + static_cast<std::uint32_t>(streams[direction].size()),
        other + 1 + static_cast<std::uint32_t>(streams[1 - direction].size()),
        kAck,
        {},
        0};
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
  TcpFrame frame;
  frame.number = number;
  frame.time = Nanoseconds{number} * 1'000'000;
  frame.source = PeerOf(s.direction);
  frame.destination = PeerOf(1 - s.direction);
  frame.tcp = tcp;
  frame.wire_length = 20 + s.wire_payload;
  connections->Add(frame);
}

inline std::vector<Connection> Connect(
    const std::vector<Segment>& segments,
    HandOver hand_over = HandOver::kCleanStreams) {
  TcpConnections connections(hand_over);
  std::uint32_t number = 0;
  for (const Segment& s : segments) AddSegment(s, ++number, &connections);
  connections.Finish();
  return connections.Take();
}

}  // namespace host

#endif  // TESTS_WIRE_BUILDER_H_
