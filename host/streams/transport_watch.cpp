#include "host/streams/transport_watch.h"

#include <algorithm>
#include <span>

#include "host/capture/wire_bytes.h"
#include "host/streams/sequence_number.h"
#include "host/streams/tcp_options.h"

namespace host {
namespace {

constexpr Nanoseconds kMillisecond = 1'000'000;
// A mirror port doubles a packet at once. A sender that repeats one gives it a
// new identification, but where there is none only the time tells them apart.
constexpr Nanoseconds kDoubledWithin = 100 * kMillisecond;
constexpr Nanoseconds kDoubledWithoutIdentification = 5 * kMillisecond;
// Ethernet's jumbo frames hold no more; used where no SYN tells the limit.
constexpr std::uint32_t kLongestOnAnyWire = 9216;
// Whether checksums are left to the adapter shows in any packet.
constexpr std::uint32_t kChecksumsLookedAt = 8;

constexpr std::uint8_t kProtocolTcp = 6;

// The sum over the addresses, the protocol and the length, which a sender
// leaves in the checksum field when its adapter is to add the rest.
std::uint16_t UnfinishedChecksum(const TcpFrame& frame) {
  std::uint32_t sum =
      kProtocolTcp + (frame.wire_length & 0xFFFF) + (frame.wire_length >> 16);
  for (const Endpoint* end : {&frame.source, &frame.destination}) {
    WireReader in(std::span(end->address).first(end->is_ipv6 ? 16 : 4));
    while (!in.rest().empty()) sum += in.Word16();
  }
  while (sum > 0xFFFF) sum = (sum & 0xFFFF) + (sum >> 16);
  return static_cast<std::uint16_t>(sum);
}

}  // namespace

bool TransportWatch::Add(const WatchedPacket& packet) {
  const TcpFrame& frame = packet.frame;
  const std::uint32_t direction = packet.direction;
  SideFacts& facts = facts_.sides[direction];
  if (frame.tcp.size() < frame.wire_length) {
    ++facts.cut_packets;
    facts.cut_bytes += frame.wire_length - frame.tcp.size();
  }
  if (IsDuplicate(packet)) {
    ++facts.duplicates;
    return false;
  }
  ++facts.packets;
  ++facts.unheard;
  SideFacts& other = facts_.sides[1 - direction];
  other.unheard = 0;
  other.unheard_retransmissions = 0;
  NoteFlags(packet);
  if (packet.payload != 0) NotePayload(packet);
  NoteWindow(packet);
  NoteAcknowledgement(packet);
  NoteChecksum(packet);
  NoteSilence(packet);
  facts.last = FrameMark{frame.number, frame.time};
  return true;
}

bool TransportWatch::IsDuplicate(const WatchedPacket& packet) {
  if (!packet.checksum) return false;
  const TcpFrame& frame = packet.frame;
  const std::uint16_t identification = frame.ip_identification.value_or(0);
  // Without payload the same acknowledgement is sent again and again.
  if (identification == 0 && packet.payload == 0) return false;
  const Fingerprint print{
      packet.header.sequence, packet.header.acknowledgement,
      identification,         *packet.checksum,
      *packet.window,         static_cast<std::uint16_t>(frame.wire_length),
      packet.header.flags};
  const Nanoseconds within =
      identification != 0 ? kDoubledWithin : kDoubledWithoutIdentification;
  Side& side = sides_[packet.direction];
  for (const Remembered& known : side.newest) {
    if (known.packet == print && frame.time - known.time <= within) return true;
  }
  side.newest[side.next_newest] = {print, frame.time};
  side.next_newest = (side.next_newest + 1) % Side::kRemembered;
  return false;
}

void TransportWatch::NoteFlags(const WatchedPacket& packet) {
  SideFacts& facts = facts_.sides[packet.direction];
  const TcpHeader& header = packet.header;
  const FrameMark mark{packet.frame.number, packet.frame.time};
  if (header.Has(kSyn)) {
    ++facts.syns;
    if (!facts.syn) facts.syn = mark;
    sides_[packet.direction].next_sequence = header.sequence + 1;
    sides_[packet.direction].segment_limit =
        ReadTcpOptions(packet.frame).segment_limit;
    facts_.opener = header.Has(kAck) ? 1 - packet.direction : packet.direction;
  }
  if (header.Has(kAck) && !header.Has(kRst)) facts.acknowledged = true;
  if (header.Has(kFin) && !facts.fin) facts.fin = mark;
  if (header.Has(kRst) && !facts.rst) facts.rst = mark;
}

void TransportWatch::NotePayload(const WatchedPacket& packet) {
  SideFacts& facts = facts_.sides[packet.direction];
  Side& side = sides_[packet.direction];
  const FrameMark mark{packet.frame.number, packet.frame.time};
  ++facts.payload_packets;
  facts.longest_payload = std::max(facts.longest_payload, packet.payload);
  const std::uint32_t limit =
      sides_[1 - packet.direction].segment_limit.value_or(kLongestOnAnyWire);
  if (packet.payload > limit) ++facts.offloaded_packets;
  if (!side.next_sequence) side.next_sequence = packet.begin;
  const std::int32_t ahead = Distance(*side.next_sequence, packet.end());
  const bool keeps_alive = packet.payload == 1 && ahead == 0;
  if (ahead <= 0) {
    if (!keeps_alive) NoteRepeatedPayload(packet);
    return;
  }
  const std::int32_t gap = Distance(*side.next_sequence, packet.begin);
  if (gap > 0) side.missing += static_cast<std::uint32_t>(gap);
  side.next_sequence = packet.end();
  if (!facts.first_payload) facts.first_payload = mark;
  facts.last_payload = mark;
}

void TransportWatch::NoteRepeatedPayload(const WatchedPacket& packet) {
  SideFacts& facts = facts_.sides[packet.direction];
  Side& side = sides_[packet.direction];
  const bool fills_gap = side.missing != 0;
  side.missing -= std::min(side.missing, packet.payload);
  const Nanoseconds since_newest =
      facts.last_payload ? packet.frame.time - facts.last_payload->time : 0;
  if (fills_gap && since_newest <= kOvertakenWithin) return;
  ++facts.retransmissions;
  ++facts.unheard_retransmissions;
  if (newest_) {
    facts.retransmission_wait +=
        std::max<Nanoseconds>(packet.frame.time - newest_->time, 0);
  }
}

void TransportWatch::NoteWindow(const WatchedPacket& packet) {
  if (!packet.checksum || packet.header.Has(kRst)) return;
  SideFacts& facts = facts_.sides[packet.direction];
  std::optional<Nanoseconds>& closed = sides_[packet.direction].window_closed;
  if (*packet.window == 0) {
    ++facts.zero_windows;
    if (!closed) closed = packet.frame.time;
  } else if (closed) {
    facts.zero_window_time +=
        std::max<Nanoseconds>(packet.frame.time - *closed, 0);
    closed.reset();
  }
}

void TransportWatch::NoteAcknowledgement(const WatchedPacket& packet) {
  if (!packet.header.Has(kAck) || packet.header.Has(kRst)) return;
  std::optional<std::uint32_t>& highest =
      sides_[packet.direction].acknowledgement;
  const std::uint32_t number = packet.header.acknowledgement;
  if (!highest || Distance(*highest, number) > 0) highest = number;
}

void TransportWatch::NoteChecksum(const WatchedPacket& packet) {
  Side& side = sides_[packet.direction];
  if (!packet.checksum || side.checksums_looked_at == kChecksumsLookedAt) {
    return;
  }
  ++side.checksums_looked_at;
  if (packet.checksum == UnfinishedChecksum(packet.frame)) {
    ++facts_.sides[packet.direction].unfinished_checksums;
  }
}

void TransportWatch::NoteSilence(const WatchedPacket& packet) {
  const TcpFrame& frame = packet.frame;
  if (newest_ && frame.time - newest_->time > facts_.silence.duration) {
    facts_.silence = {frame.time - newest_->time, newest_->frame, frame.number};
  }
  newest_ = FrameMark{frame.number, frame.time};
}

}  // namespace host
