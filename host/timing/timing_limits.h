#ifndef HOST_TIMING_TIMING_LIMITS_H_
#define HOST_TIMING_TIMING_LIMITS_H_

#include <string>
#include <vector>

#include "host/streams/connection.h"

namespace host {

// What cannot be told of a connection's times, and why: one sentence each.
std::vector<std::string> TimingLimits(const Connection& connection);

}  // namespace host

#endif  // HOST_TIMING_TIMING_LIMITS_H_
