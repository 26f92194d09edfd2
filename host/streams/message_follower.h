#ifndef HOST_STREAMS_MESSAGE_FOLLOWER_H_
#define HOST_STREAMS_MESSAGE_FOLLOWER_H_

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/streams/clean_feed.h"
#include "host/streams/connection.h"

namespace host {

// Finds the DIMSE messages in the packets of a clean feed and where in the
// capture they were. A command PDV begins a message, the last data PDV ends it,
// each direction for itself. Where PDVs are malformed it goes the way that the
// module goes, so that its records stay those of the module's rows.
class MessageFollower {
 public:
  MessageFollower(const CleanFeed& feed, std::vector<WireRecord>* messages)
      : feed_(feed), messages_(*messages) {}

  // The next run of a P-DATA-TF PDU; `is_first` when it holds the PDU header.
  void Follow(const PacketRun& run, bool is_first, bool has_lost_bytes);
  // Nothing follows.
  void Finish();

 private:
  struct Message {
    bool begun = false;
    bool complete = false;
    bool has_strays = false;  // data PDVs came after it was complete
    bool goes_on = false;     // swallows commands, its data set having no end
    std::uint64_t command_length = 0;
    std::uint64_t data_length = 0;
    std::uint64_t lost = 0;
    std::vector<std::uint8_t> command;  // its beginning
    FrameRange frames;
    std::optional<std::size_t> row;
  };
  struct Direction {
    std::uint32_t missing = 0;  // of the current PDV's value
    bool is_command = false;
    bool is_last = true;  // the PDV before it was a last fragment
    Message message;
  };

  void Feed(std::uint32_t direction, StreamPosition at, std::uint32_t length);
  void TakeHeader(std::uint32_t direction, StreamPosition item,
                  StreamPosition command_length_at, StreamPosition end);
  void TakeValue(std::uint32_t direction, StreamPosition at,
                 std::uint32_t length);
  void NoteSwallowedCommand(std::uint32_t direction);
  void KeepCommand(std::uint32_t direction, StreamPosition at,
                   std::uint32_t length);
  void List(std::uint32_t direction);
  void Complete(std::uint32_t direction);
  void Retire(std::uint32_t direction);
  WireRecord RecordOf(std::uint32_t direction) const;

  const CleanFeed& feed_;
  std::vector<WireRecord>& messages_;
  std::array<Direction, 2> directions_;
  bool has_lost_bytes_ = false;
};

}  // namespace host

#endif  // HOST_STREAMS_MESSAGE_FOLLOWER_H_
