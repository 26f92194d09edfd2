#ifndef TRACKING_PDU_REASSEMBLER_H_
#define TRACKING_PDU_REASSEMBLER_H_

#include <array>
#include <cstdint>
#include <deque>

#include "tracking/message_assembler.h"
#include "tracking/packet_source.h"
#include "tracking/records.h"
#include "tracking/tcp_segment.h"

namespace dicom {

// Cuts the two byte streams of a connection into Upper Layer PDUs, records
// which bytes of which packets each consists of, and hands P-DATA-TF contents
// to the message assembly. Segments are taken in the order they come; sequence
// numbers are not looked at.
class PduReassembler {
 public:
  // Takes the payload of the next segment of its direction. The bytes are read
  // during the call only: records keep packet numbers and offsets. Without
  // effect after Flush. Throws OutOfRange when the segment's end cuts a PDU
  // header (or the first PDV header of a chunk), Unexpected on a length field
  // of FFFFFFFAh or more, and what the source throws. What was done before the
  // failure stays done.
  void ProcessSegment(const TcpSegment& segment, PacketSource& source);

  // At the end of a capture: lists the PDUs and messages that are still
  // incomplete. Ends the input for good; without effect after the first time.
  void Flush();

  // Both lists grow with the next segment; references into them do not keep.
  const std::deque<PduRecord>& Pdus() const { return pdus_; }
  const std::deque<DimseMessageRecord>& Messages() const {
    return assembler_.Messages();
  }

 private:
  // One direction's PDU in progress.
  struct StreamState {
    std::uint32_t missing = 0;     // bytes of it not yet seen; 0: a header next
    PduRecord record;              // what of it was seen
    std::uint32_t pdu_length = 0;  // its length field plus 6; 0: none
  };

  // How far one segment's payload is used up.
  struct PayloadCursor {
    const TcpSegment& segment;
    StreamState& stream;
    bool& p_data;  // the direction's P-DATA flag
    PacketSource& source;
    std::uint32_t consumed;  // payload bytes
    std::uint32_t left;
    std::uint32_t skip;  // 6 for each P-DATA-TF PDU begun in the segment

    std::uint32_t Offset() const { return segment.HeaderLength() + consumed; }
    void Consume(std::uint32_t count) {
      consumed += count;
      left -= count;
    }
  };

  // The two ways through a segment: its payload begins with a PDU header, or it
  // goes on with a PDU.
  void BeginWithPdu(PayloadCursor& cursor);
  void ContinuePdu(PayloadCursor& cursor);

  // Reads the PDU header at the cursor, which stays there, into a new record of
  // the stream and answers the type. OutOfRange when the end of the segment
  // cuts it, Unexpected when the length field leaves no room for it.
  std::uint8_t StartPdu(PayloadCursor& cursor);

  // The same, and the P-DATA flag says whether it is a P-DATA-TF PDU.
  void StartPduWithFlag(PayloadCursor& cursor);

  // Feeds the next `length` payload bytes, less the skip, to the message
  // assembly, when the P-DATA flag is set.
  void FeedRest(PayloadCursor& cursor, std::uint32_t length);

  // Lists the stream's PDU; a header is next.
  void FinishPdu(StreamState& stream);

  bool enabled_ = true;
  std::uint32_t pdu_counter_ = 0;
  std::array<StreamState, 2> streams_;  // by direction
  std::deque<PduRecord> pdus_;
  MessageAssembler assembler_;
};

}  // namespace dicom

#endif  // TRACKING_PDU_REASSEMBLER_H_
