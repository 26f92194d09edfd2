#ifndef HOST_STREAMS_SEQUENCE_NUMBER_H_
#define HOST_STREAMS_SEQUENCE_NUMBER_H_

#include <cstdint>

namespace host {

// The signed way from one sequence number of TCP to another, which count modulo
// 2^32: right for all that are less than 2 GiB apart.
inline std::int32_t Distance(std::uint32_t from, std::uint32_t to) {
  return static_cast<std::int32_t>(to - from);
}

}  // namespace host

#endif  // HOST_STREAMS_SEQUENCE_NUMBER_H_
