#include "host/streams/clean_connection.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "host/streams/note_text.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// Packets of the connection after which acknowledged bytes that are still
// missing will not come any more.
constexpr std::uint64_t kPacketsUntilLost = 64;

CleanFeed* MakeFeed(const std::shared_ptr<ByteStore>& store,
                    Connection* connection) {
  auto feed = std::make_unique<CleanFeed>(store);
  CleanFeed* const raw = feed.get();
  connection->feed = std::move(feed);
  // Live, for a finished capture as well: the module closes a list that is not
  // live by repeating and replacing message rows.
  connection->live = true;
  return raw;
}

std::vector<std::uint8_t> BytesAt(const StreamAssembler& stream,
                                  StreamPosition at, std::size_t most) {
  const StreamPosition count = std::min<StreamPosition>(
      static_cast<StreamPosition>(most), stream.PresentUntil(at) - at);
  std::vector<std::uint8_t> bytes(
      static_cast<std::size_t>(std::max<StreamPosition>(count, 0)));
  stream.Copy(at, bytes.size(), bytes.data());
  return bytes;
}

// What a stream that is no DICOM looks like; empty if like nothing known.
std::string GuessText(const std::vector<std::uint8_t>& bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()),
                              bytes.size());
  if (text.starts_with("\x16\x03")) return " (it looks like TLS)";
  for (const std::string_view word : {"GET ", "POST ", "PUT ", "HTTP/"}) {
    if (text.starts_with(word)) return " (it looks like HTTP)";
  }
  return "";
}

}  // namespace

CleanConnection::CleanConnection(const std::shared_ptr<ByteStore>& store)
    : feed_(MakeFeed(store, &connection_)),
      sides_{Side(feed_->stream(0)), Side(feed_->stream(1))},
      follower_(*feed_, &connection_.messages) {}

bool CleanConnection::BeginsAnother(const TcpFrame& frame,
                                    std::uint32_t direction) const {
  if (frame.tcp.size() < TcpHeader::kMinBytes) return false;
  const TcpHeader header = TcpHeader::Parse(frame.tcp);
  if ((header.flags & kSyn) == 0) return false;
  const auto begun = sides_[direction].stream.beginning_number();
  if (begun) return *begun != header.sequence + 1;
  return (header.flags & kAck) == 0 &&
         sides_[1 - direction].stream.has_payload();
}

void CleanConnection::AddSegment(const TcpFrame& frame,
                                 std::uint32_t direction) {
  ports_[direction] = frame.source.port;
  ports_[1 - direction] = frame.destination.port;
  if (finished_ || frame.tcp.size() < TcpHeader::kMinBytes) return;
  const TcpHeader header = TcpHeader::Parse(frame.tcp);
  if ((header.flags & kSyn) != 0) {
    sides_[direction].stream.Begin(header.sequence + 1);
    if ((header.flags & kAck) == 0) {
      syn_direction_ = direction;
    } else if (!syn_direction_) {
      syn_direction_ = 1 - direction;
    }
  }
  if ((header.flags & kAck) != 0) {
    NoteAcknowledgement(1 - direction, header.acknowledgement);
  }
  if ((header.flags & kRst) != 0) {
    if (!reset_) reset_ = Reset{direction, frame.number};
  } else if (header.length >= kTcpHeaderBytes &&
             header.length <= frame.tcp.size()) {
    AddPayload(frame, header, direction);
  }
}

void CleanConnection::AddPayload(const TcpFrame& frame, const TcpHeader& header,
                                 std::uint32_t direction) {
  Side& side = sides_[direction];
  const std::uint32_t sequence =
      header.sequence + ((header.flags & kSyn) != 0 ? 1 : 0);
  const std::uint32_t wire_length = frame.wire_length - header.length;
  side.stream.Add(sequence, frame.tcp.subspan(header.length), wire_length,
                  frame.number, frame.time);
  if ((header.flags & kFin) != 0) {
    side.stream.Close(sequence + wire_length);
    side.fin_seen = true;
  }
  connection_.payload_bytes =
      sides_[0].stream.payload_bytes() + sides_[1].stream.payload_bytes();
}

// The sender of bytes in `direction` got an acknowledgement for them.
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

// A connection that was closed or reset is over when nothing has come since the
// last look.
bool CleanConnection::Update() {
  if (finished_) return false;
  const bool closed = reset_ || (sides_[0].fin_seen && sides_[1].fin_seen);
  const bool quiet = packets_at_update_ == connection_.captured_packets;
  packets_at_update_ = connection_.captured_packets;
  if (closed && quiet) {
    Finish();
    return false;
  }
  Cut(false);
  Describe();
  return closed;
}

void CleanConnection::Finish() {
  if (finished_) return;
  finished_ = true;
  Cut(true);
  if (!feed_->opened()) Open();
  feed_->Close();
  follower_.Finish();
  Describe();
}

void CleanConnection::Cut(bool over) {
  for (Side& side : sides_) {
    side.cutter.Advance(side.final_until, over, &side.pdus);
  }
  if (sides_[0].pdus.empty() && sides_[1].pdus.empty()) return;
  if (!feed_->opened()) Open();
  auto zero = sides_[0].pdus.begin();
  auto one = sides_[1].pdus.begin();
  while (zero != sides_[0].pdus.end() || one != sides_[1].pdus.end()) {
    const bool zero_first = one == sides_[1].pdus.end() ||
                            (zero != sides_[0].pdus.end() &&
                             zero->complete_frame < one->complete_frame);
    ReportPdu(zero_first ? 0 : 1, zero_first ? *zero++ : *one++);
  }
  for (Side& side : sides_) side.pdus.clear();
}

void CleanConnection::Open() { feed_->Open(ports_, SynDirection()); }

// The side whose SYN was captured, else the one that asks for the association.
std::uint32_t CleanConnection::SynDirection() const {
  if (syn_direction_) return *syn_direction_;
  for (const std::uint8_t type : {kAssociateRq, kAssociateAc}) {
    for (const std::uint32_t direction : {0u, 1u}) {
      const auto& pdus = sides_[direction].pdus;
      if (std::ranges::find(pdus, type, &CutPdu::type) != pdus.end()) {
        return type == kAssociateRq ? direction : 1 - direction;
      }
    }
  }
  return 0;
}

void CleanConnection::ReportPdu(std::uint32_t direction, const CutPdu& pdu) {
  Side& side = sides_[direction];
  WireRecord record;
  record.direction = direction;
  record.length = pdu.length;
  record.first_frame = pdu.frames.first;
  record.last_frame = pdu.frames.last;
  record.time = pdu.frames.time;
  if (pdu.lost_before != 0) {
    AppendNote(BytesText(pdu.lost_before) + " lost before it", &record.note);
  }
  if (pdu.skipped != 0) {
    AppendNote(BytesText(pdu.skipped) + " before it in no whole PDU",
               &record.note);
  }
  if (pdu.lost != 0) AppendNote(FilledText(pdu.lost), &record.note);
  side.lost += pdu.lost_before;
  side.skipped += pdu.skipped;
  side.filled += pdu.lost;
  side.filled_pdus += pdu.lost != 0 ? 1 : 0;
  // The module fails on a PDU that is too short for an item header, and with it
  // loses all that it knows of the connection.
  record.listed = pdu.type != kPDataTf || pdu.length == kPduHeaderBytes ||
                  pdu.length >= kPduHeaderBytes + kItemHeaderBytes;
  if (record.listed) {
    const std::size_t first_run = feed_->runs().size();
    bool items_are_whole = true;
    feed_->AddPdu(direction, pdu, &items_are_whole);
    if (!items_are_whole) {
      AppendNote("its PDV items do not fill it exactly", &record.note);
    }
    const auto& runs = feed_->runs();
    for (std::size_t i = first_run; pdu.type == kPDataTf && i < runs.size();
         ++i) {
      follower_.Follow(runs[i], i == first_run, pdu.lost != 0);
    }
  } else {
    ++side.left_out;
    AppendNote("a P-DATA-TF PDU with " +
                   BytesText(pdu.length - kPduHeaderBytes) +
                   " behind its header is left out",
               &record.note);
  }
  const auto header = BytesAt(side.stream, pdu.position, kPduHeaderBytes);
  connection_.carries_dicom |= BeginsLikePdu(header);
  connection_.pdus.push_back(std::move(record));
}

const std::string& CleanConnection::EndpointOf(std::uint32_t direction) const {
  return direction == 0 ? connection_.first_endpoint
                        : connection_.second_endpoint;
}

void CleanConnection::Describe() {
  connection_.notes.clear();
  for (const std::uint32_t direction : {0u, 1u}) {
    const StreamAssembler& stream = sides_[direction].stream;
    connection_.carries_dicom |=
        BeginsLikePdu(BytesAt(stream, stream.begin(), kPduHeaderBytes));
    DescribeSide(direction);
    DescribeEnd(direction);
  }
  if (reset_) {
    connection_.notes.push_back(EndpointOf(reset_->direction) +
                                " reset the connection (RST) in frame " +
                                NumberText(reset_->frame) + ".");
  }
}

void CleanConnection::DescribeSide(std::uint32_t direction) {
  const Side& side = sides_[direction];
  const std::string from = " from " + EndpointOf(direction);
  auto& notes = connection_.notes;
  if (side.filled != 0) {
    notes.push_back(FilledText(side.filled) + " in " +
                    NumberText(side.filled_pdus) +
                    (side.filled_pdus == 1 ? " PDU" : " PDUs") + from + ".");
  }
  if (side.lost != 0) {
    notes.push_back(BytesText(side.lost) + from +
                    " between the listed PDUs were not captured.");
  }
  if (side.skipped != 0) {
    notes.push_back(BytesText(side.skipped) + from +
                    " were skipped: they are in no whole PDU.");
  }
  if (side.left_out != 0) {
    notes.push_back(NumberText(side.left_out) + " P-DATA-TF PDU(s)" + from +
                    " too short for a PDV item are left out.");
  }
  if (side.stream.differing_copies() != 0) {
    notes.push_back(NumberText(side.stream.differing_copies()) +
                    " repeated segment(s)" + from +
                    " differ from what came first, which was kept.");
  }
}

// What became of the bytes behind the last PDU.
void CleanConnection::DescribeEnd(std::uint32_t direction) {
  const Side& side = sides_[direction];
  const StreamAssembler& stream = side.stream;
  const std::string from = " from " + EndpointOf(direction);
  auto& notes = connection_.notes;
  if (const auto at = side.cutter.not_dicom_from()) {
    notes.push_back(
        "The stream" + from + " is no DICOM" +
        (*at == stream.begin()
             ? ""
             : " behind its first " + BytesText(static_cast<std::uint64_t>(
                                          *at - stream.begin()))) +
        GuessText(BytesAt(stream, *at, 8)) + ".");
    return;
  }
  if (!finished_ || !stream.has_payload()) return;
  const StreamPosition rest = side.cutter.delivered_until();
  const std::uint64_t present = stream.PresentBytes(rest, stream.end());
  if (rest >= stream.end()) return;
  const auto header = BytesAt(stream, rest, kPduHeaderBytes);
  const bool cut_off = side.cutter.unfinished() == rest ||
                       (stream.began_with_syn() && BeginsLikePdu(header));
  if (!cut_off) {
    const auto lost = static_cast<std::uint64_t>(stream.end() - rest) - present;
    notes.push_back(
        present == 0
            ? BytesText(lost) + " behind the last PDU" + from + " are missing."
            : "No whole PDU was found in the last " + BytesText(present) +
                  from +
                  (lost != 0 ? ", where " + BytesText(lost) + " are missing."
                             : "."));
  } else if (header.size() < kPduHeaderBytes) {
    notes.push_back("The capture ends inside a PDU header" + from + ": " +
                    NumberText(present) + " of 6 bytes.");
  } else {
    notes.push_back(
        "The capture ends inside " + PduTypeText(header[0]) + from + ": " +
        NumberText(present) + " of " +
        BytesText(std::uint64_t{kPduHeaderBytes} + Word32At(header, 2)) + ".");
  }
}

}  // namespace host
