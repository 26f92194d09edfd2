#ifndef TRACKING_TCP_SEGMENT_H_
#define TRACKING_TCP_SEGMENT_H_

#include <cstdint>

#include "tracking/byte_array_view.h"

namespace dicom {

// A view of one captured packet's TCP bytes, header included, with the header
// fields that the reassembly needs. The bytes belong to a packet record and are
// overwritten by that record's next fetch.
class TcpSegment : public ByteArrayView {
 public:
  TcpSegment() = default;

  // Refills the segment. Throws ArrayTooShort for fewer than 14 bytes; fields
  // read before that are then already stored.
  void Parse(const std::uint8_t* bytes, std::uint32_t length,
             std::uint32_t packet_number, std::uint8_t direction);

  std::uint32_t SequenceNumber() const { return sequence_number_; }
  std::uint32_t AcknowledgementNumber() const {
    return acknowledgement_number_;
  }
  std::uint16_t HeaderLength() const { return header_length_; }
  std::uint32_t PacketNumber() const { return packet_number_; }
  // 1 when the host marked the packet as the other side's, else 0.
  std::uint8_t Direction() const { return direction_; }

  bool HasFin() const { return (flags_ & 0x01) != 0; }
  bool HasSyn() const { return (flags_ & 0x02) != 0; }
  bool HasRst() const { return (flags_ & 0x04) != 0; }
  bool HasAck() const { return (flags_ & 0x10) != 0; }

  // Deliberate: a header that claims more bytes than the segment holds is not
  // diagnosed; the payload length then wraps and there is "payload".
  std::uint32_t PayloadLength() const { return Length() - header_length_; }
  bool HasPayload() const { return Length() != header_length_; }

 private:
  // Fills the header fields; OutOfRange where the bytes end before one.
  void ParseHeader();

  std::uint32_t sequence_number_ = 0;
  std::uint32_t acknowledgement_number_ = 0;
  std::uint8_t flags_ = 0;
  std::uint16_t header_length_ = 0;  // bytes
  std::uint32_t packet_number_ = 0;
  std::uint8_t direction_ = 0;
};

}  // namespace dicom

#endif  // TRACKING_TCP_SEGMENT_H_
