#ifndef HOST_STREAMS_AE_TITLES_H_
#define HOST_STREAMS_AE_TITLES_H_

#include <cstdint>
#include <optional>
#include <string>

#include "host/streams/connection.h"

namespace host {

// Who is talking, from the A-ASSOCIATE-RQ. Code page 1252, blanks removed.
struct AeTitles {
  std::uint32_t caller_direction = 0;  // of the request
  std::string calling;
  std::string called;
};

// Looks for the request among the first packets of the feed.
std::optional<AeTitles> FindAeTitles(const PacketFeed& feed);

}  // namespace host

#endif  // HOST_STREAMS_AE_TITLES_H_
