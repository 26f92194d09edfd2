#include "plugin/packet_accessor.h"

#include "errors/errors.h"

namespace dicom {
namespace {

// Sides are direction bytes: 0, or 1 for packets that the host marks non-zero.
constexpr std::size_t kZeroSide = 0;
constexpr std::size_t kOtherSide = 1;

// Sequence numbers wrap: the distance decides, as a signed number.
bool IsAfter(std::uint32_t number, std::uint32_t expected) {
  return static_cast<std::int32_t>(number - expected) > 0;
}

}  // namespace

std::optional<TcpSegment> PacketAccessor::ReadNextSegment() {
  std::optional<std::uint32_t> ready;
  if (segment_ready_) {
    ready = history_->TakeSettled();
    if (!ready) segment_ready_ = false;
  }
  if (!ready) {
    while (!segment_ready_) {
      if (!AdvanceStream()) return std::nullopt;
    }
    ready = history_->TakeSettled();
    if (!ready) {
      segment_ready_ = false;
      throw Unexpected();
    }
  }
  // Deliberate: every delivered segment is fetched a second time, since the
  // packet in the record is a later one.
  FetchPacket(*ready);
  segment_ready_ = true;
  return segment_;
}

std::optional<TcpSegment> PacketAccessor::ReadLeftoverSegment() {
  const std::optional<std::uint32_t> left = history_->TakeAny();
  if (!left) return std::nullopt;
  FetchPacket(*left);
  return segment_;
}

bool PacketAccessor::FetchNextPacket() {
  const std::int32_t asked = current_index_;
  if (!packet_.FetchNext(asked)) return false;
  // A host that answers with an old packet would keep us reading for ever.
  if (packet_.Index() <= asked) return false;
  // Deliberate: before the parse, so that a packet too short for a TCP header
  // is behind us.
  current_index_ = packet_.Index();
  Refill();
  return true;
}

void PacketAccessor::FetchPacket(std::uint32_t number) {
  const auto index = static_cast<std::int32_t>(number);
  if (!packet_.Fetch(index)) throw UnableToGetPacketFromTapvane();
  Refill();
  if (packet_.Index() != index) throw UnableToGetPacketFromTapvane();
}

void PacketAccessor::Refill() {
  segment_.Parse(packet_.Bytes(), packet_.Length(),
                 static_cast<std::uint32_t>(packet_.Index()),
                 packet_.Direction());
}

// Deliberate: no direction is looked at until the closing ACK; the numbers
// alone tell what belongs together.
bool PacketAccessor::FindHandshake() {
  const std::int32_t start = current_index_;
  while (FindSyn()) {
    // Deliberate: the SYN's side counts as the zero side whatever its direction
    // is, until the answer moves it to the other one.
    expected_[kZeroSide] = segment_.SequenceNumber() + 1;
    HandshakeStep step = FindAnswer();
    if (step == HandshakeStep::kFound) step = FindClosingAck();
    if (step == HandshakeStep::kFound) {
      Synchronise();
      return true;
    }
    if (step == HandshakeStep::kNoMorePackets) {
      // The next call reads the SYN again, perhaps with more packets behind it.
      current_index_ = start;
      return false;
    }
  }
  return false;  // Deliberate: packets passed over without a SYN are not reread
}

bool PacketAccessor::FindSyn() {
  while (FetchNextPacket()) {
    if (segment_.HasSyn() && !segment_.HasAck() && !segment_.HasRst()) {
      return true;
    }
  }
  return false;
}

// Deliberate: the answer need not have SYN nor come from the other side.
PacketAccessor::HandshakeStep PacketAccessor::FindAnswer() {
  while (FetchNextPacket()) {
    // Deliberate: any reset, of this handshake or not, here and below.
    if (segment_.HasRst()) return HandshakeStep::kReset;
    if (!segment_.HasSyn() && !segment_.HasAck()) continue;
    if (segment_.AcknowledgementNumber() != expected_[kZeroSide]) continue;
    expected_[kOtherSide] = expected_[kZeroSide];
    expected_[kZeroSide] = segment_.SequenceNumber() + 1;
    return HandshakeStep::kFound;
  }
  return HandshakeStep::kNoMorePackets;
}

PacketAccessor::HandshakeStep PacketAccessor::FindClosingAck() {
  while (FetchNextPacket()) {
    if (segment_.HasRst()) return HandshakeStep::kReset;
    if (!segment_.HasAck()) continue;
    if (segment_.SequenceNumber() == expected_[kOtherSide] &&
        segment_.AcknowledgementNumber() == expected_[kZeroSide]) {
      return HandshakeStep::kFound;
    }
  }
  return HandshakeStep::kNoMorePackets;
}

// Deliberate: what else the closing ACK carries, payload or FIN, is not looked
// at.
void PacketAccessor::Synchronise() {
  const std::size_t side = segment_.Direction();
  expected_[side] = segment_.SequenceNumber();
  expected_[1 - side] = segment_.AcknowledgementNumber();
  synchronised_ = true;
  fin_seen_ = {};
  early_segments_.Clear();
}

bool PacketAccessor::AdvanceStream() {
  if (!synchronised_ && !FindHandshake()) return false;
  if (!FetchForStream()) return false;
  if (IsInOrder()) {
    TakeInOrder();
  } else {
    TakeOutOfOrder();
  }
  return true;
}

bool PacketAccessor::FetchForStream() {
  if (early_segments_.IsEmpty()) return FetchNextPacket();
  const std::uint32_t other = expected_[kOtherSide];
  const std::uint32_t zero = expected_[kZeroSide];
  const std::uint32_t other_fin = NumberBehindFin(kOtherSide);
  const std::uint32_t zero_fin = NumberBehindFin(kZeroSide);
  const std::optional<std::uint32_t> early =
      early_segments_.TakeOldest({{other, zero},
                                  {other_fin, zero},
                                  {other, zero_fin},
                                  {other_fin, zero_fin}});
  if (!early) return FetchNextPacket();
  // Deliberate: an early segment that cannot be read again is a failure, not a
  // gap.
  FetchPacket(*early);
  return true;
}

// Deliberate: both numbers must be the expected ones.
bool PacketAccessor::IsInOrder() const {
  const std::size_t side = segment_.Direction();
  return Matches(side, segment_.SequenceNumber()) &&
         Matches(1 - side, segment_.AcknowledgementNumber());
}

bool PacketAccessor::Matches(std::size_t side, std::uint32_t number) const {
  return number == expected_[side] || number == NumberBehindFin(side);
}

// The expected numbers count payload alone, but what follows a FIN is numbered
// one higher. Accepting both lets an ordinary close end the connection.
std::uint32_t PacketAccessor::NumberBehindFin(std::size_t side) const {
  return expected_[side] + (fin_seen_[side] ? 1 : 0);
}

void PacketAccessor::TakeInOrder() {
  if (segment_.HasPayload()) {
    history_->Append(segment_);
    // Data is ready once the other side was heard of behind it: the segment
    // just entered never is, but it may have settled those before it.
    // Deliberate: when it has not, the flag stays as it was.
    if (history_->FrontIsSettled()) segment_ready_ = true;
    CountInOrder();
  } else {
    CountInOrder();
    // Deliberate: set or cleared, unlike in every other branch.
    segment_ready_ = history_->SettleOnDirection(segment_.Direction());
  }
}

// Deliberate: SYN and FIN add nothing to the expected numbers, and the end of a
// connection clears nothing but the synchronised flag.
void PacketAccessor::CountInOrder() {
  const std::size_t side = segment_.Direction();
  expected_[side] += segment_.PayloadLength();
  if (segment_.HasFin()) fin_seen_[side] = true;
  if ((fin_seen_[kZeroSide] && fin_seen_[kOtherSide]) || segment_.HasRst()) {
    synchronised_ = false;
  }
}

void PacketAccessor::TakeOutOfOrder() {
  const std::size_t side = segment_.Direction();
  const bool sequence_ahead =
      IsAfter(segment_.SequenceNumber(), expected_[side]);
  const bool acknowledgement_ahead =
      IsAfter(segment_.AcknowledgementNumber(), expected_[1 - side]);
  if (!sequence_ahead && !acknowledgement_ahead) {
    // Deliberate: payload with old numbers is a retransmission and passed over,
    // even where the sequence number itself is the expected one.
    if (segment_.HasPayload()) return;
    if (history_->SettleRetransmitted(NumbersOf(segment_))) {
      segment_ready_ = true;
    }
    return;
  }
  const bool sequence_behind =
      IsAfter(expected_[side], segment_.SequenceNumber());
  // Deliberate: dropped. An old segment whose acknowledgement is newer than
  // what was seen of the other side settles nothing.
  if (sequence_behind && acknowledgement_ahead) return;
  // Deliberate: all the rest counts as early, bare acknowledgements and SYNs
  // included.
  early_segments_.Add(segment_);
}

}  // namespace dicom
