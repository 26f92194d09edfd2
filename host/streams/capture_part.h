#ifndef HOST_STREAMS_CAPTURE_PART_H_
#define HOST_STREAMS_CAPTURE_PART_H_

#include <cstdint>

#include "host/capture/endpoint.h"

namespace host {

// One of the parts into which a capture's connections are divided, so that
// several processes share the work: each connection is in exactly one.
struct CapturePart {
  std::uint32_t index = 0;  // from 0
  std::uint32_t count = 1;

  // Whether what is sent between these two ends belongs to it: the same on all
  // systems, for either order of the ends, and for all connections that they
  // have one after the other.
  bool Holds(const Endpoint& one, const Endpoint& other) const;
};

}  // namespace host

#endif  // HOST_STREAMS_CAPTURE_PART_H_
