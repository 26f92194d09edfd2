#include "tracking/pdu_reassembler.h"

#include "errors/errors.h"
#include "tracking/packet_summary.h"
#include "tracking/pdu_header.h"

namespace dicom {
namespace {

constexpr std::uint8_t kPDataTf = 0x04;

// By direction: whether the bytes of the PDU in progress go to the message
// assembly.
// Deliberate: module-wide, shared by all host contexts, and reset by nothing
// but the PDUs themselves.
std::array<bool, 2> p_data_flags{};

void AppendSpan(PduRecord& record, const TcpSegment& segment,
                std::uint32_t offset, std::uint32_t length) {
  record.spans.Append({segment.PacketNumber(), offset, length});
  record.total_length += length;
}

}  // namespace

void PduReassembler::ProcessSegment(const TcpSegment& segment,
                                    PacketSource& source) {
  if (!enabled_) return;
  const std::size_t direction = segment.Direction() != 0 ? 1 : 0;
  StreamState& stream = streams_[direction];
  PayloadCursor cursor{segment, stream, p_data_flags[direction],
                       source,  0,      segment.PayloadLength(),
                       0};
  stream.missing == 0 ? BeginWithPdu(cursor) : ContinuePdu(cursor);
}

void PduReassembler::BeginWithPdu(PayloadCursor& cursor) {
  StreamState& stream = cursor.stream;
  StartPduWithFlag(cursor);
  while (stream.pdu_length < cursor.left) {
    const std::uint32_t pdu_length = stream.pdu_length;
    AppendSpan(stream.record, cursor.segment, cursor.Offset(), pdu_length);
    FeedRest(cursor, pdu_length);
    pdus_.push_back(stream.record);
    cursor.Consume(pdu_length);
    stream.record = PduRecord();
    stream.pdu_length = 0;
    StartPduWithFlag(cursor);
  }
  stream.missing = stream.pdu_length - cursor.left;
  AppendSpan(stream.record, cursor.segment, cursor.Offset(), cursor.left);
  FeedRest(cursor, cursor.left);
  if (stream.missing == 0) FinishPdu(stream);
}

void PduReassembler::ContinuePdu(PayloadCursor& cursor) {
  StreamState& stream = cursor.stream;
  if (stream.missing > cursor.left) {
    AppendSpan(stream.record, cursor.segment, cursor.Offset(), cursor.left);
    FeedRest(cursor, cursor.left);
    stream.missing -= cursor.left;
    return;
  }
  while (stream.missing < cursor.left) {
    const std::uint32_t missing = stream.missing;
    AppendSpan(stream.record, cursor.segment, cursor.Offset(), missing);
    // Deliberate: listed before it is fed, the other way round than when a
    // segment begins with a PDU; a failing feed shows the difference.
    pdus_.push_back(stream.record);
    FeedRest(cursor, missing);
    cursor.Consume(missing);
    // Deliberate: until the next header is read, the stream still counts the
    // PDU just listed as missing.
    const std::uint8_t type = StartPdu(cursor);
    stream.missing = stream.pdu_length;
    // Deliberate: unlike a PDU that follows a whole PDU, any type is passed to
    // the message assembly.
    cursor.p_data = true;
    if (type == kPDataTf) cursor.skip += kPduHeaderLength;
  }
  AppendSpan(stream.record, cursor.segment, cursor.Offset(), cursor.left);
  FeedRest(cursor, cursor.left);
  stream.missing -= cursor.left;
  if (stream.missing == 0) FinishPdu(stream);
}

// Deliberate: the counter counts PDUs begun, so a failure leaves a gap in the
// numbers, and a header that the segment's end cuts is not kept for the next.
std::uint8_t PduReassembler::StartPdu(PayloadCursor& cursor) {
  StreamState& stream = cursor.stream;
  stream.record = PduRecord();
  ++pdu_counter_;
  const ByteArrayView reader =
      cursor.segment.Part(cursor.Offset(), cursor.left);
  const std::uint8_t type = reader.ByteAt(0);
  stream.pdu_length = reader.LongAt(2, kBigEndian) + kPduHeaderLength;
  // Deliberate: a length whose sum wraps is no PDU at all.
  if (stream.pdu_length < kPduHeaderLength) {
    stream.pdu_length = 0;
    stream.missing = 0;
    throw Unexpected();
  }
  stream.record.pdu_number = pdu_counter_;
  stream.record.direction = cursor.segment.Direction() != 0 ? 1 : 0;
  stream.record.summary_text = PduName(type);
  return type;
}

void PduReassembler::StartPduWithFlag(PayloadCursor& cursor) {
  cursor.p_data = StartPdu(cursor) == kPDataTf;
  // Deliberate: skip is not reset between the PDUs of one segment, so the
  // second P-DATA-TF is fed from its byte 12.
  if (cursor.p_data) cursor.skip += kPduHeaderLength;
}

// Deliberate: a skip that uses them up feeds nothing.
void PduReassembler::FeedRest(PayloadCursor& cursor, std::uint32_t length) {
  if (!cursor.p_data || cursor.skip >= length) return;
  assembler_.Feed(cursor.segment, cursor.Offset() + cursor.skip,
                  length - cursor.skip, cursor.source);
}

void PduReassembler::FinishPdu(StreamState& stream) {
  pdus_.push_back(stream.record);
  stream.record = PduRecord();
  stream.pdu_length = 0;
}

// Deliberate: the other side's PDU comes first, and no input is taken after it.
void PduReassembler::Flush() {
  if (!enabled_) return;
  for (const std::size_t direction : {1u, 0u}) {
    const StreamState& stream = streams_[direction];
    if (stream.pdu_length != 0) pdus_.push_back(stream.record);
  }
  assembler_.Flush();
  enabled_ = false;
}

}  // namespace dicom
