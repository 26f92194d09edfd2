#ifndef HOST_STREAMS_PASSED_CONNECTION_H_
#define HOST_STREAMS_PASSED_CONNECTION_H_

#include <array>
#include <cstdint>

#include "host/capture/frame_parser.h"
#include "host/streams/sequence_space.h"

namespace host {

// A connection of a part of the capture that is not shown. All that is known of
// it is what tells the next one on its addresses and ports from it, so that
// those that are shown have the numbers that they have in the whole capture.
class PassedConnection {
 public:
  explicit PassedConnection(bool is_clean) : is_clean_(is_clean) {}

  // As the builder of the same way of handing over answers it.
  bool BeginsAnother(const TcpFrame& frame, std::uint32_t direction) const;
  void Add(const TcpFrame& frame, std::uint32_t direction);

 private:
  struct Side {
    SequenceSpace numbers;
    bool has_payload = false;
    bool fin_seen = false;
    bool syn_seen = false;
    std::uint32_t syn = 0;
  };

  std::array<Side, 2> sides_;
  bool is_clean_;
  bool reset_ = false;
};

}  // namespace host

#endif  // HOST_STREAMS_PASSED_CONNECTION_H_
