#include "host/streams/clean_feed.h"

#include <algorithm>

#include "host/capture/frame_parser.h"
#include "interface/host_interface.h"

namespace host {
namespace {

constexpr std::uint32_t kHandshakePackets = 3;
constexpr std::uint32_t kClosingPackets = 2;
constexpr std::uint32_t kPayloadBytes = DICOM_PACKET_BYTES - kTcpHeaderBytes;
constexpr std::uint32_t kFirstSequence = 0x10000000;   // of the SYN's side
constexpr std::uint32_t kSecondSequence = 0x20000000;  // of the other

void Put16(std::uint32_t value, std::uint8_t* to) {
  to[0] = static_cast<std::uint8_t>(value >> 8);
  to[1] = static_cast<std::uint8_t>(value);
}

void Put32(std::uint32_t value, std::uint8_t* to) {
  Put16(value >> 16, to);
  Put16(value, to + 2);
}

// The packet size at which a run's last packet holds more than the `tail` bytes
// that follow its value: the module takes a packet of fewer than six bytes for
// a broken item header.
std::uint16_t PacketBytesFor(std::uint64_t length, std::uint32_t tail) {
  std::uint32_t bytes = kPayloadBytes;
  while (length > bytes && (length - 1) % bytes + 1 <= tail) --bytes;
  return static_cast<std::uint16_t>(bytes);
}

}  // namespace

CleanFeed::CleanFeed(const std::shared_ptr<ByteStore>& store)
    : streams_{StreamAssembler(store), StreamAssembler(store)} {}

void CleanFeed::Open(std::array<std::uint16_t, 2> ports,
                     std::uint32_t syn_direction) {
  ports_ = ports;
  syn_direction_ = syn_direction;
  opened_ = true;
}

void CleanFeed::Close() { closed_ = true; }

void CleanFeed::AddPdu(std::uint32_t direction, const CutPdu& pdu,
                       bool* items_are_whole) {
  *items_are_whole = true;
  const StreamPosition end =
      pdu.position + static_cast<StreamPosition>(pdu.length);
  if (pdu.type == kPDataTf && pdu.length > kPduHeaderBytes) {
    AddItems(direction, pdu, items_are_whole);
  } else {
    AddRun(direction, pdu.position, end, 0);
  }
}

// The first run holds the PDU header as well. An item that does not end inside
// the PDU takes the rest of it, and so do bytes too few for an item header: in
// a packet of their own they would be taken for one.
void CleanFeed::AddItems(std::uint32_t direction, const CutPdu& pdu,
                         bool* items_are_whole) {
  const StreamPosition end =
      pdu.position + static_cast<StreamPosition>(pdu.length);
  StreamPosition run = pdu.position;
  StreamPosition at = pdu.position + kPduHeaderBytes;
  while (at < end) {
    if (pdu.lost != 0) RepairItemHeader(direction, at, end);
    std::array<std::uint8_t, 4> field;
    stream(direction).Copy(at, field.size(), field.data());
    const StreamPosition item_end = at + 4 + StreamPosition{Word32At(field, 0)};
    std::uint32_t tail = 0;
    if (item_end < at + kItemHeaderBytes || item_end > end) {
      *items_are_whole = false;
      at = end;
    } else if (item_end != end && end - item_end < kItemHeaderBytes) {
      *items_are_whole = false;
      tail = static_cast<std::uint32_t>(end - item_end);
      at = end;
    } else {
      at = item_end;
    }
    AddRun(direction, run, at, tail);
    run = at;
  }
}

// An item header that was lost would read as length 0, after which the module
// finds no message any more. Its lost bytes are given the values of a last data
// PDV that reaches to the end of the PDU: then the next message begins where it
// should, and data that goes on after all still counts.
void CleanFeed::RepairItemHeader(std::uint32_t direction, StreamPosition at,
                                 StreamPosition pdu_end) {
  StreamAssembler& bytes = stream(direction);
  if (bytes.PresentUntil(at) >= at + kItemHeaderBytes) return;
  const StreamPosition rest = pdu_end - at - 4;
  std::array<std::uint8_t, kItemHeaderBytes> lost{0, 0, 0, 0, 1, 2};
  // What is left of the length may say that the item is shorter than that.
  std::array<std::uint8_t, 4> left;
  bytes.Copy(at, left.size(), left.data());
  const StreamPosition shorter = StreamPosition{Word32At(left, 0)};
  if (shorter < 2 || shorter > rest) {
    Put32(static_cast<std::uint32_t>(rest), lost.data());
  }
  bytes.Substitute(at, lost);
}

void CleanFeed::AddRun(std::uint32_t direction, StreamPosition from,
                       StreamPosition to, std::uint32_t tail) {
  PacketRun run;
  run.position = from;
  run.length = static_cast<std::uint64_t>(to - from);
  run.first = data_packets_;
  run.sent = sent_;
  run.packet_bytes = PacketBytesFor(run.length, tail);
  run.direction = static_cast<std::uint8_t>(direction);
  runs_.push_back(run);
  data_packets_ += run.packets();
  sent_[direction] += static_cast<std::uint32_t>(run.length);
}

std::uint32_t CleanFeed::PacketCount() const {
  if (!opened_) return 0;
  return kHandshakePackets + 2 * data_packets_ +
         (closed_ ? kClosingPackets : 0);
}

CopiedPacket CleanFeed::CopyPacket(std::uint32_t number,
                                   PacketRoom room) const {
  if (number < kHandshakePackets) {
    return WriteHeader(HandshakeHeader(number), room);
  }
  number -= kHandshakePackets;
  if (number < 2 * data_packets_) {
    return CopyData(number / 2, number % 2 != 0, room);
  }
  number -= 2 * data_packets_;
  const std::uint32_t side = number == 0 ? syn_direction_ : 1 - syn_direction_;
  return WriteHeader(InStep(side, sent_, kFin | kAck), room);
}

CleanFeed::Header CleanFeed::HandshakeHeader(std::uint32_t number) const {
  switch (number) {
    case 0:
      return {syn_direction_, kFirstSequence, 0, kSyn};
    case 1:
      return {1 - syn_direction_, kSecondSequence, kFirstSequence + 1,
              kSyn | kAck};
    default:
      return InStep(syn_direction_, {0, 0}, kAck);
  }
}

CleanFeed::Header CleanFeed::InStep(std::uint32_t direction,
                                    const std::array<std::uint32_t, 2>& sent,
                                    std::uint8_t flags) const {
  const bool from_syn_side = direction == syn_direction_;
  const std::uint32_t own = from_syn_side ? kFirstSequence : kSecondSequence;
  const std::uint32_t other = from_syn_side ? kSecondSequence : kFirstSequence;
  return {direction, own + 1 + sent[direction], other + 1 + sent[1 - direction],
          flags};
}

CopiedPacket CleanFeed::CopyData(std::uint32_t exchange, bool acknowledgement,
                                 PacketRoom room) const {
  const PacketRun& run = *std::prev(
      std::ranges::upper_bound(runs_, exchange, {}, &PacketRun::first));
  const std::uint64_t offset =
      std::uint64_t{exchange - run.first} * run.packet_bytes;
  const auto length = static_cast<std::uint32_t>(
      std::min<std::uint64_t>(run.packet_bytes, run.length - offset));
  std::array<std::uint32_t, 2> sent = run.sent;
  sent[run.direction] += static_cast<std::uint32_t>(offset);
  if (acknowledgement) {
    sent[run.direction] += length;
    return WriteHeader(InStep(1u - run.direction, sent, kAck), room);
  }
  WriteHeader(InStep(run.direction, sent, kPush | kAck), room);
  streams_[run.direction].Copy(
      run.position + static_cast<StreamPosition>(offset), length,
      room.data() + kTcpHeaderBytes);
  return {kTcpHeaderBytes + length, run.direction};
}

CopiedPacket CleanFeed::WriteHeader(const Header& header,
                                    PacketRoom room) const {
  std::uint8_t* const bytes = room.data();
  std::fill_n(bytes, kTcpHeaderBytes, std::uint8_t{0});
  Put16(ports_[header.direction], bytes);
  Put16(ports_[1 - header.direction], bytes + 2);
  Put32(header.sequence, bytes + 4);
  Put32(header.acknowledgement, bytes + 8);
  bytes[12] = kTcpHeaderBytes / 4 << 4;
  bytes[13] = header.flags;
  Put16(0xFFFF, bytes + 14);  // window
  return {kTcpHeaderBytes, header.direction};
}

}  // namespace host
