#ifndef HOST_STREAMS_AE_TITLES_H_
#define HOST_STREAMS_AE_TITLES_H_

#include <cstdint>
#include <optional>
#include <string>

#include "host/streams/connection.h"

namespace host {

// Who is talking, from the A-ASSOCIATE-RQ. The titles are bytes of code page
// 1252, without the blanks around them, and end at the first zero byte.
struct AeTitles {
  std::uint32_t caller_direction = 0;  // the direction of the request
  std::string calling;
  std::string called;
};

// Looks for a request at the beginning of a packet, among the first packets of
// the feed; none when there is none or when it is cut before its titles end.
// Throws Failure when the feed does.
std::optional<AeTitles> FindAeTitles(const PacketFeed& feed);

}  // namespace host

#endif  // HOST_STREAMS_AE_TITLES_H_
