#ifndef HOST_STREAMS_CONNECTION_BUILDER_H_
#define HOST_STREAMS_CONNECTION_BUILDER_H_

#include <chrono>

#include "host/capture/frame_parser.h"
#include "host/streams/connection.h"
#include "host/streams/transfer_watch.h"
#include "host/streams/transport_watch.h"

namespace host {

// Makes one Connection from its captured segments: each way of handing over has
// a builder of its own.
class ConnectionBuilder {
 public:
  ConnectionBuilder()
      : watch_(connection_.transport), transfer_(connection_.transfer) {}
  virtual ~ConnectionBuilder() = default;
  ConnectionBuilder(const ConnectionBuilder&) = delete;
  ConnectionBuilder& operator=(const ConnectionBuilder&) = delete;

  // Whether this segment cannot belong to the connection any more, but begins
  // another one on the same addresses and ports. `direction` is 0 when it comes
  // from the side that sent the connection's first packet.
  virtual bool BeginsAnother(const TcpFrame& frame,
                             std::uint32_t direction) const = 0;
  // The connection's next segment, in the order of the capture. Throws Failure
  // when what came before cannot be read again.
  void Add(const TcpFrame& frame, std::uint32_t direction);
  using Clock = std::chrono::steady_clock;
  enum class Standing {
    kOpen,
    kClosing,  // to be asked again even if nothing is added
    kOver,     // finished
  };
  // Lets the connection show all that is settled by now, and says how it is.
  virtual Standing Update(Clock::time_point) { return Standing::kOpen; }
  // The connection is over: no segment will follow.
  virtual void Finish() {}

  // Grows by Add(), Update() and Finish(); stays where it is.
  Connection& connection() { return connection_; }

 protected:
  // What Add() leaves to the way of handing over: all but the counts, the times
  // and the names of the ends.
  virtual void AddSegment(const TcpFrame& frame, std::uint32_t direction) = 0;

  Connection connection_;
  TransportWatch watch_;  // of all that was added

 private:
  TransferWatch transfer_;
};

}  // namespace host

#endif  // HOST_STREAMS_CONNECTION_BUILDER_H_
