#include "host/streams/connection_builder.h"

namespace host {

void ConnectionBuilder::Add(const TcpFrame& frame, std::uint32_t direction) {
  if (connection_.captured_packets++ == 0) {
    connection_.first_endpoint = EndpointText(frame.source);
    connection_.second_endpoint = EndpointText(frame.destination);
    connection_.first_time = frame.time;
  }
  connection_.last_time = frame.time;
  AddSegment(frame, direction);
}

bool BeginsLikePdu(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < 6) return false;
  const std::uint32_t length = Word32At(bytes, 2);
  switch (bytes[0]) {
    case 1:
    case 2:
      return length >= 68 && length <= 1u << 24;
    case 3:
    case 5:
    case 6:
    case 7:
      return length == 4;
    case 4:
      return length >= 6 && length <= 1u << 29;
    default:
      return false;
  }
}

}  // namespace host
