#ifndef HOST_CAPTURE_TWIN_FRAMES_H_
#define HOST_CAPTURE_TWIN_FRAMES_H_

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "host/capture/frame_records.h"

namespace host {

// Knows frames that two files of a capture both hold: of the same time, to the
// microsecond, and the same bytes. What one file holds twice stays twice. It
// remembers the frames of a second or two, and not more than a fixed number of
// them.
class TwinFrames {
 public:
  // Whether another file has brought this frame already. Each frame that is
  // read while several files are is to be shown here once, in about the order
  // of time. `file` is its file's index.
  bool IsTwin(const FrameRecord& frame, std::uint32_t file);

 private:
  struct Key {
    Nanoseconds microsecond = 0;
    std::uint64_t hash = 0;  // of the bytes and the length on the wire

    bool operator==(const Key&) const = default;
  };
  struct HashOf {
    std::size_t operator()(const Key& key) const {
      return static_cast<std::size_t>(key.hash);
    }
  };
  // How often a file has brought the frame.
  struct Brought {
    std::uint32_t file = 0;
    std::uint32_t count = 0;
  };
  using Known = std::unordered_map<Key, std::vector<Brought>, HashOf>;

  // Forgets what is too old for a frame of this time.
  void Age(Nanoseconds time);

  Known newer_, older_;
  Nanoseconds begin_ = 0;  // of newer_
};

}  // namespace host

#endif  // HOST_CAPTURE_TWIN_FRAMES_H_
