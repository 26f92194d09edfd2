#include "host/streams/clean_feed.h"

#include <algorithm>

#include "host/capture/frame_parser.h"
#include "host/capture/wire_bytes.h"
#include "interface/host_interface.h"

namespace host {
namespace {

constexpr std::uint32_t kHandshakePackets = 3;
constexpr std::uint32_t kClosingPackets = 2;
constexpr std::uint32_t kPayloadBytes = DICOM_PACKET_BYTES - kTcpHeaderBytes;
constexpr std::uint32_t kFirstSequence = 0x10000000;   // of the SYN's side
constexpr std::uint32_t kSecondSequence = 0x20000000;  // of the other

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

const PacketRun& CleanFeed::AddRun(std::uint32_t direction, StreamPosition from,
                                   StreamPosition to, std::uint32_t tail) {
  PacketRun run;
  run.position = from;
  run.length = static_cast<std::uint64_t>(to - from);
  run.first = data_packets_;
  run.sent = sent_;
  run.packet_bytes = PacketBytesFor(run.length, tail);
  run.direction = static_cast<std::uint8_t>(direction);
  data_packets_ += run.packets();
  sent_[direction] += static_cast<std::uint32_t>(run.length);
  return runs_.emplace_back(run);
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

CleanFeed::PacketHeader CleanFeed::HandshakeHeader(std::uint32_t number) const {
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

CleanFeed::PacketHeader CleanFeed::InStep(
    std::uint32_t direction, const std::array<std::uint32_t, 2>& sent,
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
      run.position + static_cast<StreamPosition>(offset),
      room.subspan(kTcpHeaderBytes, length));
  return {kTcpHeaderBytes + length, run.direction};
}

CopiedPacket CleanFeed::WriteHeader(const PacketHeader& header,
                                    PacketRoom room) const {
  const auto tcp = room.first<kTcpHeaderBytes>();
  std::ranges::fill(tcp, std::uint8_t{0});
  WireWriter out(tcp);
  out.Word16(ports_[header.direction]);
  out.Word16(ports_[1 - header.direction]);
  out.Word32(header.sequence);
  out.Word32(header.acknowledgement);
  out.Byte(kTcpHeaderBytes / 4 << 4);
  out.Byte(header.flags);
  out.Word16(0xFFFF);  // window
  return {kTcpHeaderBytes, header.direction};
}

}  // namespace host
