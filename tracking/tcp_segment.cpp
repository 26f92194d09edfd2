#include "tracking/tcp_segment.h"

#include <exception>

#include "errors/errors.h"

namespace dicom {

void TcpSegment::Parse(const std::uint8_t* bytes, std::uint32_t length,
                       std::uint32_t packet_number, std::uint8_t direction) {
  ByteArrayView::operator=({bytes, length});
  try {
    ParseHeader();
  } catch (const std::exception&) {
    // Deliberate: any failure is a packet too short; fields read before it
    // stay.
    throw ArrayTooShort();
  }
  packet_number_ = packet_number;
  direction_ = direction;
}

void TcpSegment::ParseHeader() {
  sequence_number_ = LongAt(4, kBigEndian);
  acknowledgement_number_ = LongAt(8, kBigEndian);
  // Deliberate: the flags come before the header length, so that 13 bytes leave
  // the old header length in place.
  flags_ = ByteAt(13) & 0x3F;
  header_length_ = static_cast<std::uint16_t>((ByteAt(12) >> 4) * 4);
}

}  // namespace dicom
