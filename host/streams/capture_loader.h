#ifndef HOST_STREAMS_CAPTURE_LOADER_H_
#define HOST_STREAMS_CAPTURE_LOADER_H_

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/capture/capture_reader.h"
#include "host/streams/tcp_connections.h"

namespace host {

// Answers true when a slice of work has lasted long enough. Asked often, behind
// each frame of a capture that is followed, so it may show the progress as
// well.
using TimeIsUp = std::function<bool()>;

struct LoadOptions {
  HandOver hand_over = HandOver::kCleanStreams;
  std::string filter = {};  // a BPF expression; empty for all frames
  bool follow = false;      // the file may grow while it is read
  // All of it is there, and who looks in between wants to know which
  // connections are over without waiting for it.
  bool at_rest = false;
  // Bounds what is kept of a pipe or a compressed file: see OpenCaptureBytes().
  std::optional<std::uint64_t> most_temporary = {};
  CapturePart part = {};         // no connections but those in it
  MakePduObserver observe = {};  // of each connection; may be empty
};

// Reads a capture into its connections: the one way in which both programs
// do it. Can be done in slices, so that what was read so far is shown
// meanwhile.
class CaptureLoader {
 public:
  enum class State {
    kReading,    // more of the file can be read at once
    kFollowing,  // read to its present end; it may grow
    kDone,       // the connections are as they stay
  };

  // Throws CaptureError when nothing can be read at all, FilterError for a bad
  // filter.
  CaptureLoader(const std::vector<CaptureInput>& inputs,
                const LoadOptions& options);
  // Of one file.
  CaptureLoader(const std::filesystem::path& path, const LoadOptions& options)
      : CaptureLoader(std::vector<CaptureInput>{{path}}, options) {}

  // Reads on until the time is up or the file ends for now, and lets the
  // connections show what has become settled. Throws Failure when the file
  // cannot be read any more.
  State Read(const TimeIsUp& time_is_up);
  // Of a capture of one file: whether Read() has something to read without
  // waiting for a pipe.
  bool IsNextThere() { return reader_.IsNextThere(); }
  // The capture ends with what was read so far.
  void End();

  State state() const { return state_; }
  unsigned percent() const;  // of the file as long as it was when opened
  // One sentence for each file that cannot be read, is damaged or breaks off.
  // A file that is followed may end inside a frame for now.
  std::vector<std::string> Failures() const;
  // The first of them, or nothing.
  std::string Damage() const;
  // One sentence each about the whole capture: the failures, what is missing
  // between its files, and what was in it and is in no connection.
  std::vector<std::string> Notes() const;
  // What the capture's frames and files are called.
  const FrameNames& names() const { return *reader_.names(); }
  // Grow with Read() and End() only.
  TcpConnections& connections() { return connections_; }

 private:
  // By which a connection is told to have been quiet for long enough.
  ConnectionBuilder::Clock::time_point Now() const;

  CaptureReader reader_;
  TcpConnections connections_;
  std::vector<std::string> gaps_;  // between files, known at the end
  bool follow_;
  bool at_rest_;
  std::uint64_t frames_ = 0;  // that were read
  State state_ = State::kReading;
};

}  // namespace host

#endif  // HOST_STREAMS_CAPTURE_LOADER_H_
