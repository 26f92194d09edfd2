#ifndef HOST_STREAMS_CAPTURED_CONNECTION_H_
#define HOST_STREAMS_CAPTURED_CONNECTION_H_

#include <array>
#include <memory>
#include <optional>

#include "host/capture/byte_store.h"
#include "host/streams/connection_builder.h"

namespace host {

class CapturedFeed;

// Hands a connection's packets over as they were captured, like an analyzer
// without knowledge of TCP: lost, doubled and reordered ones included. Only
// segments that are too long for a packet (captures with segmentation offload)
// become several.
class CapturedConnection final : public ConnectionBuilder {
 public:
  // The segments are in `store`.
  explicit CapturedConnection(std::shared_ptr<ByteStore> store);

  // A SYN with a new number on a connection that was closed or reset.
  bool BeginsAnother(const TcpFrame& frame,
                     std::uint32_t direction) const override;

 protected:
  void AddSegment(const TcpFrame& frame, std::uint32_t direction) override;

 private:
  void NoteFlags(const TcpHeader& header, std::uint32_t direction);

  CapturedFeed* feed_;  // owned by the connection
  // What each direction has sent: the number of its newest SYN, and whether a
  // FIN or payload came.
  std::array<std::optional<std::uint32_t>, 2> syn_;
  std::array<bool, 2> fin_seen_{};
  std::array<bool, 2> payload_seen_{};
  bool reset_ = false;
};

}  // namespace host

#endif  // HOST_STREAMS_CAPTURED_CONNECTION_H_
