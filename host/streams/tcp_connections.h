#ifndef HOST_STREAMS_TCP_CONNECTIONS_H_
#define HOST_STREAMS_TCP_CONNECTIONS_H_

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "host/capture/byte_store.h"
#include "host/streams/capture_part.h"
#include "host/streams/connection_builder.h"
#include "host/streams/passed_connection.h"
#include "host/streams/pdu_observer.h"

namespace host {

// How a capture's connections are handed to the module.
enum class HandOver {
  kCleanStreams,  // the same bytes, in order, nothing lost or doubled
  kAsCaptured,    // packet by packet as the capture holds them
};

// Sorts the TCP segments of a capture into connections, in the order of their
// first packets. For a whole file: Add() all, Finish(), then use. For a capture
// that grows: Add() what came, Update(), look, and again.
class TcpConnections {
 public:
  // The bytes of all frames are in `store`, which the connections share; its
  // own store is for frames that no capture reader has read. Unless it is
  // empty, `observe` makes an observer for each connection whose clean streams
  // are handed over. `frame_names` are the capture's; without them frames are
  // called by their numbers. Connections of other parts are counted only.
  explicit TcpConnections(
      HandOver hand_over,
      std::shared_ptr<ByteStore> store = std::make_shared<ByteStore>(),
      MakePduObserver observe = {},
      std::shared_ptr<const FrameNames> frame_names = {},
      CapturePart part = {});

  // Segments in the order of the capture. Throws Failure when what came before
  // cannot be read again.
  void Add(const TcpFrame& frame);
  // Makes what has become settled by now visible in the connections.
  void Update(ConnectionBuilder::Clock::time_point now =
                  ConnectionBuilder::Clock::now());
  // The capture is over: everything becomes visible.
  void Finish();

  ByteStore& store() { return *store_; }
  // Of this part. Connection::index says which one of all it is.
  std::size_t size() const { return builders_.size(); }
  std::size_t whole_size() const { return begun_; }  // of all parts
  // Stays where it is; grows by Update() and Finish() only.
  Connection& at(std::size_t index) { return builders_[index]->connection(); }
  // Those that have ended since the last call, before the capture has.
  std::vector<const Connection*> TakeEnded() {
    return std::exchange(ended_, {});
  }
  // Hands all connections over, for after Finish().
  std::vector<Connection> Take();

 private:
  using Key = std::pair<Endpoint, Endpoint>;  // the smaller end first

  // The newest connection of a pair of ends.
  struct Current {
    bool touched = false;                      // waits for the next Update()
    bool over = false;                         // the builder is finished
    ConnectionBuilder* builder = nullptr;      // one of builders_, or null
    std::unique_ptr<PassedConnection> passed;  // of another part
    Endpoint first;                            // the end that is direction 0
  };

  // Lets the next Update() look at the connection.
  void Touch(Current& current);
  // The frame is of a connection of another part.
  void Pass(const TcpFrame& frame, Current& current);
  // Nothing will follow in the newest connection of these ends.
  void NoteEnd(Current& current);
  // Makes a connection that begins with this frame the newest of its ends.
  void Begin(const TcpFrame& frame, Current& current);

  HandOver hand_over_;
  std::shared_ptr<ByteStore> store_;
  MakePduObserver observe_;
  std::shared_ptr<const FrameNames> frame_names_;
  std::map<Key, Current> current_;
  std::vector<Current*> touched_;  // by Add() since the last Update()
  std::vector<std::unique_ptr<ConnectionBuilder>> builders_;  // in order
  std::vector<const Connection*> ended_;
  CapturePart part_;
  std::uint32_t begun_ = 0;  // connections
};

}  // namespace host

#endif  // HOST_STREAMS_TCP_CONNECTIONS_H_
