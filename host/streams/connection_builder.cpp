#include "host/streams/connection_builder.h"

#include <algorithm>

namespace host {

void ConnectionBuilder::Add(const TcpFrame& frame, std::uint32_t direction) {
  if (connection_.captured_packets++ == 0) {
    connection_.first_endpoint = EndpointText(frame.source);
    connection_.second_endpoint = EndpointText(frame.destination);
    connection_.first_time = frame.time;
    connection_.last_time = frame.time;
  }
  connection_.last_time = std::max(connection_.last_time, frame.time);
  if (const auto packet = ReadWatchedPacket(frame, direction)) {
    if (watch_.Add(*packet)) transfer_.Add(*packet);
  }
  AddSegment(frame, direction);
}

}  // namespace host
