#ifndef HOST_STREAMS_CAPTURE_LOADER_H_
#define HOST_STREAMS_CAPTURE_LOADER_H_

#include <filesystem>
#include <functional>
#include <string>

#include "host/capture/capture_reader.h"
#include "host/streams/tcp_connections.h"

namespace host {

// Answers true when a slice of work has lasted long enough.
using TimeIsUp = std::function<bool()>;

// Reads a capture file in slices, so that what was read so far can be shown
// meanwhile.
class CaptureLoader {
 public:
  enum class State {
    kReading,    // more of the file can be read at once
    kFollowing,  // read to its present end; it may grow
    kDone,
  };

  // Throws CaptureError.
  CaptureLoader(const std::filesystem::path& path, HandOver hand_over,
                bool follow);

  // Reads on until the time is up or the file ends for now, and lets the
  // connections show what has become settled.
  State Read(const TimeIsUp& time_is_up);
  // The capture ends with what was read so far.
  void End();

  State state() const { return state_; }
  unsigned percent() const;
  // A file that is followed may end inside a frame for now.
  std::string damage() const {
    const bool grows = state_ == State::kFollowing && reader_.EndsInsideFrame();
    return grows ? std::string() : reader_.damage();
  }
  HandOver hand_over() const { return hand_over_; }
  TcpConnections& connections() { return connections_; }

 private:
  CaptureReader reader_;
  HandOver hand_over_;
  TcpConnections connections_;
  bool follow_;
  State state_ = State::kReading;
};

}  // namespace host

#endif  // HOST_STREAMS_CAPTURE_LOADER_H_
