#include "host/streams/clean_connection.h"

#include <algorithm>
#include <utility>

#include "host/streams/pdu_header.h"
#include "host/streams/pdv_cutter.h"
#include "host/streams/tls_reader.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// Packets of the connection after which acknowledged bytes that are still
// missing will not come any more.
constexpr std::uint64_t kPacketsUntilLost = 64;

// For how long bytes may still be under way to a connection that was closed.
constexpr std::chrono::seconds kQuietUntilOver{1};

CleanFeed* MakeFeed(const std::shared_ptr<ByteStore>& store,
                    Connection& connection) {
  auto feed = std::make_unique<CleanFeed>(store);
  CleanFeed* const raw = feed.get();
  connection.feed = std::move(feed);
  // Live, for a finished capture as well: the module closes a list that is not
  // live by repeating and replacing message rows.
  connection.live = true;
  return raw;
}

// The module fails on a P-DATA-TF PDU that is too short for an item header, and
// with it loses all that it knows of the connection.
bool IsHandedOver(const CutPdu& pdu) {
  return pdu.header.type != kPDataTf || pdu.header.length == 0 ||
         pdu.header.length >= kPdvHeaderBytes;
}

bool HasItems(const CutPdu& pdu) {
  return pdu.header.type == kPDataTf && pdu.header.length != 0;
}

}  // namespace

CleanConnection::CleanConnection(const std::shared_ptr<ByteStore>& store,
                                 const MakePduObserver& observe)
    : feed_(MakeFeed(store, connection_)),
      sides_{Side(0, feed_->stream(0), connection_.messages),
             Side(1, feed_->stream(1), connection_.messages)} {
  if (!observe) return;
  connection_.observer = observe(sides_[0].stream, sides_[1].stream);
}

bool CleanConnection::BeginsAnother(const TcpFrame& frame,
                                    std::uint32_t direction) const {
  if (!frame.header || !frame.header->Has(kSyn)) return false;
  return BeginsAnotherStream(*frame.header,
                             sides_[direction].stream.beginning_number(),
                             sides_[1 - direction].stream.has_payload());
}

void CleanConnection::AddSegment(const TcpFrame& frame,
                                 std::uint32_t direction) {
  ports_[direction] = frame.source.port;
  ports_[1 - direction] = frame.destination.port;
  if (finished_ || !frame.header) return;
  const TcpHeader& header = *frame.header;
  if (header.Has(kSyn)) NoteSyn(header, direction);
  if (header.Has(kAck)) {
    NoteAcknowledgement(1 - direction, header.acknowledgement);
  }
  if (!header.Has(kRst)) {
    AddPayload(frame, direction);
  } else if (!reset_) {
    reset_ = Reset{direction, frame.number};
  }
}

void CleanConnection::NoteSyn(const TcpHeader& header,
                              std::uint32_t direction) {
  sides_[direction].stream.Begin(header.sequence + 1);
  if (!header.Has(kAck)) {
    syn_direction_ = direction;
  } else if (!syn_direction_) {
    syn_direction_ = 1 - direction;
  }
}

void CleanConnection::NoteAcknowledgement(std::uint32_t direction,
                                          std::uint32_t number) {
  Side& side = sides_[direction];
  const std::uint64_t now = connection_.captured_packets;
  if (side.acknowledged && now - side.acknowledged_at >= kPacketsUntilLost) {
    side.final_until = std::max(side.final_until, *side.acknowledged);
    side.acknowledged.reset();
  }
  if (side.acknowledged) return;
  const std::optional<StreamPosition> position = side.stream.PositionOf(number);
  if (position && *position > side.final_until &&
      *position <= side.stream.end()) {
    side.acknowledged = position;
    side.acknowledged_at = now;
  }
}

void CleanConnection::AddPayload(const TcpFrame& frame,
                                 std::uint32_t direction) {
  const auto payload = frame.Payload();
  if (!payload) return;
  Side& side = sides_[direction];
  const TcpHeader& header = *frame.header;
  const std::uint32_t sequence = header.sequence + (header.Has(kSyn) ? 1 : 0);
  const std::uint32_t wire_length = frame.wire_length - header.length;
  if (frame.parts.empty()) {
    side.stream.Add(sequence, *payload, wire_length,
                    {frame.stored + header.length, frame.number, frame.time});
  } else {
    AddParts(frame, sequence, side.stream);
  }
  if (header.Has(kFin)) {
    side.stream.Close(sequence + wire_length);
    side.fin_seen = true;
  }
  connection_.payload_bytes =
      sides_[0].stream.payload_bytes() + sides_[1].stream.payload_bytes();
}

// Each part's bytes are those of its own frame.
void CleanConnection::AddParts(const TcpFrame& frame, std::uint32_t sequence,
                               StreamAssembler& stream) {
  const std::uint32_t header_bytes = frame.header->length;
  std::uint32_t at = 0;  // in frame.tcp
  for (const FramePart& part : frame.parts) {
    const std::uint32_t end = at + part.length;
    const std::uint32_t from = std::max(at, header_bytes);
    const bool is_last = &part == &frame.parts.back();
    const std::uint32_t wire_end = is_last ? frame.wire_length : end;
    if (from < wire_end) {
      const auto bytes = frame.tcp.subspan(from, std::max(end, from) - from);
      stream.Add(sequence + (from - header_bytes), bytes, wire_end - from,
                 {frame.stored + from, part.frame, part.time});
    }
    at = end;
  }
}

ConnectionBuilder::Standing CleanConnection::Update(Clock::time_point now) {
  if (finished_) return Standing::kOver;
  const std::uint64_t packets = connection_.captured_packets;
  if (std::exchange(packets_at_update_, packets) != packets) {
    quiet_since_ = now;
    Cut(false);
    Describe();
  }
  const bool closed = reset_ || (sides_[0].fin_seen && sides_[1].fin_seen);
  if (!closed) return Standing::kOpen;
  if (now - quiet_since_ < kQuietUntilOver) return Standing::kClosing;
  Finish();
  return Standing::kOver;
}

void CleanConnection::Finish() {
  if (finished_) return;
  finished_ = true;
  Cut(true);
  OpenFeed({});
  feed_->Close();
  for (Side& side : sides_) {
    side.follower.Finish();
    NoteFileGaps(side.stream);
  }
  if (connection_.observer) {
    connection_.observer->SeeEnd(sides_[0].cutter, sides_[1].cutter);
  }
  Describe();
}

void CleanConnection::NoteFileGaps(const StreamAssembler& stream) {
  const FrameNames& names = connection_.names();
  if (!names.HasSeveralFiles()) return;
  stream.ForEachGap([&](const StreamGap& gap) {
    const bool is_between = names.PlaceOf(gap.frame_before).file !=
                            names.PlaceOf(gap.frame_behind).file;
    if (is_between) connection_.gaps.push_back(gap);
  });
}

void CleanConnection::Cut(bool over) {
  CutPdus pdus;
  for (const std::uint32_t direction : {0u, 1u}) {
    Side& side = sides_[direction];
    pdus[direction] = side.cutter.Advance(side.final_until, over);
  }
  if (pdus[0].empty() && pdus[1].empty()) return;
  OpenFeed(pdus);
  auto zero = pdus[0].begin();
  auto one = pdus[1].begin();
  while (zero != pdus[0].end() || one != pdus[1].end()) {
    const bool zero_first =
        one == pdus[1].end() ||
        (zero != pdus[0].end() && zero->complete_frame < one->complete_frame);
    ReportPdu(zero_first ? 0 : 1, zero_first ? *zero++ : *one++);
  }
}

void CleanConnection::OpenFeed(const CutPdus& pdus) {
  if (!feed_->opened()) feed_->Open(ports_, SynDirection(pdus));
}

std::uint32_t CleanConnection::SynDirection(const CutPdus& pdus) const {
  if (syn_direction_) return *syn_direction_;
  for (const std::uint8_t type : {kAssociateRq, kAssociateAc}) {
    for (const std::uint32_t direction : {0u, 1u}) {
      const auto is_of_type = [type](const CutPdu& pdu) {
        return pdu.header.type == type;
      };
      if (std::ranges::any_of(pdus[direction], is_of_type)) {
        return type == kAssociateRq ? direction : 1 - direction;
      }
    }
  }
  return 0;
}

void CleanConnection::ReportPdu(std::uint32_t direction, const CutPdu& pdu) {
  if (connection_.observer) connection_.observer->SeePdu(direction, pdu);
  const PduFate fate = HandOverPdu(direction, pdu);
  WireRecord record;
  record.direction = direction;
  record.length = pdu.length();
  record.first_frame = pdu.frames.first;
  record.last_frame = pdu.frames.last;
  record.time = pdu.frames.time;
  record.complete_time = pdu.complete_time;
  record.listed = fate != PduFate::kLeftOut;
  record.note = sides_[direction].losses.AddPdu(pdu, fate);
  connection_.pdus.push_back(std::move(record));
  connection_.carries_dicom |= pdu.header.HasPossibleLength();
}

PduFate CleanConnection::HandOverPdu(std::uint32_t direction,
                                     const CutPdu& pdu) {
  if (!IsHandedOver(pdu)) return PduFate::kLeftOut;
  if (!HasItems(pdu)) {
    feed_->AddRun(direction, pdu.position, pdu.end(), 0);
    return PduFate::kWhole;
  }
  Side& side = sides_[direction];
  PdvCutter items(side.stream, pdu);
  while (const std::optional<PdvItem> item = items.Next()) {
    const PacketRun& run =
        feed_->AddRun(direction, item->begin, item->end, item->tail);
    FollowItem(side, run, *item, pdu);
  }
  return items.is_exact() ? PduFate::kWhole : PduFate::kItemsAreInexact;
}

void CleanConnection::FollowItem(Side& side, const PacketRun& run,
                                 const PdvItem& item, const CutPdu& pdu) {
  const auto& messages = connection_.messages;
  const std::size_t before = messages.size();
  side.follower.Follow(run, item, {pdu.complete_time, pdu.lost != 0});
  if (!connection_.observer) return;
  const bool is_listed = messages.size() > before && messages.back().listed;
  connection_.observer->SeeItem(
      item, is_listed ? std::optional(messages.size() - 1) : std::nullopt);
}

const std::string& CleanConnection::EndpointOf(std::uint32_t direction) const {
  return direction == 0 ? connection_.first_endpoint
                        : connection_.second_endpoint;
}

void CleanConnection::NoteStream(std::uint32_t direction) {
  SideFacts& facts = connection_.transport.sides[direction];
  const StreamAssembler& stream = sides_[direction].stream;
  if (facts.first_bytes.size() < SideFacts::kFirstBytes) {
    facts.first_bytes = stream.Peek(stream.begin(), SideFacts::kFirstBytes);
  }
  if (!finished_) return;
  facts.tls = ReadTls(stream);
  const auto number = watch_.acknowledgement(1 - direction);
  const auto acknowledged = number ? stream.PositionOf(*number) : std::nullopt;
  if (!stream.has_payload() || !acknowledged) return;
  // One more is acknowledged than was sent where a FIN stands at the end.
  const StreamPosition until =
      std::max(*acknowledged - (facts.fin ? 1 : 0), stream.begin());
  const std::uint64_t missing =
      static_cast<std::uint64_t>(until - stream.begin()) -
      stream.PresentBytes(stream.begin(), until);
  facts.lost_bytes = missing - std::min(missing, facts.cut_bytes);
}

void CleanConnection::Describe() {
  auto& notes = connection_.notes;
  notes.clear();
  for (const std::uint32_t direction : {0u, 1u}) {
    const Side& side = sides_[direction];
    const std::string& endpoint = EndpointOf(direction);
    NoteStream(direction);
    connection_.carries_dicom |=
        BeginsLikePdu(side.stream.Peek(side.stream.begin(), kPduHeaderBytes));
    side.losses.AppendSentences(side.stream, endpoint, notes);
    std::string end =
        EndSentence(side.stream, side.cutter, endpoint, finished_);
    if (!end.empty()) notes.push_back(std::move(end));
  }
  if (reset_) {
    notes.push_back(EndpointOf(reset_->direction) +
                    " reset the connection (RST) in frame " +
                    connection_.names().Text(reset_->frame) + ".");
  }
}

}  // namespace host
