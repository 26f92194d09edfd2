#ifndef HOST_STREAMS_MESSAGE_FOLLOWER_H_
#define HOST_STREAMS_MESSAGE_FOLLOWER_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "host/streams/clean_feed.h"
#include "host/streams/connection.h"
#include "host/streams/pdv_cutter.h"

namespace host {

// Finds the DIMSE messages in the packets of one direction of a clean feed, and
// where in the capture they were. A command PDV begins a message, the last data
// PDV ends it. Where PDVs are malformed it goes the way that the module goes,
// so that its records stay those of the module's rows: it reads packets, not
// PDUs, and takes for an item header what stands where the module expects one.
class MessageFollower {
 public:
  // `stream` holds the direction's bytes. Records are appended to `messages`,
  // which the other direction's follower shares, and are completed there.
  MessageFollower(std::uint32_t direction, const StreamAssembler& stream,
                  std::vector<WireRecord>& messages)
      : direction_(direction), stream_(stream), messages_(messages) {}

  // What is known of the PDU that holds an item.
  struct PduFacts {
    Nanoseconds complete_time = 0;
    bool has_lost_bytes = false;
  };

  // The next packets of a P-DATA-TF PDU, which hold `item`.
  void Follow(const PacketRun& run, const PdvItem& item, const PduFacts& pdu);
  // Nothing follows.
  void Finish() { Retire(); }

 private:
  struct Message {
    bool begun = false;
    bool complete = false;
    bool has_strays = false;  // data PDVs came after it was complete
    bool goes_on = false;     // swallows commands, its data set having no end
    std::uint64_t command_length = 0;
    std::uint64_t data_length = 0;
    std::uint64_t lost = 0;             // bytes of both that are missing
    std::vector<std::uint8_t> command;  // its beginning
    FrameRange frames;
    Nanoseconds complete_time = 0;   // of what is known of it
    std::optional<std::size_t> row;  // its record, once it is listed
  };

  // Reads the packet with the bytes [at, end) as the module does.
  void TakePacket(StreamPosition at, StreamPosition end);
  // A PDV begins at `item`, in a packet with the bytes [packet, end). The
  // module takes a command PDV's length from the packet's first item.
  void TakeHeader(StreamPosition item, StreamPosition packet,
                  StreamPosition end);
  // The next bytes of the current PDV's value.
  void TakeValue(StreamPosition at, std::uint32_t length);
  // Keeps the beginning of the command set, in which its status stands.
  void KeepCommand(StreamPosition at, std::uint32_t length);
  // The item header there: the one that was cut, wherever the PDVs are in step.
  PdvHeader HeaderAt(StreamPosition at) const;
  // A command behind a data set without an end goes on with its message: the
  // module lists that once more and the new one not at all.
  void NoteSwallowedCommand();

  // The record of the message as far as it is known by now.
  WireRecord Record() const;
  // The command set is there: the message has a row.
  void List();
  // The data set is there.
  void Complete();
  // The message is over: tells what its row does not show.
  void Retire();
  // Its row does not count the data set, whose end never came.
  void NoteUncounted();

  const std::uint32_t direction_;
  const StreamAssembler& stream_;
  std::vector<WireRecord>& messages_;
  PdvItem item_;               // the one that Follow() was given
  PduFacts pdu_;               // its PDU
  std::uint32_t missing_ = 0;  // bytes of the current PDV's value
  bool is_command_ = false;    // the current PDV
  bool is_last_ = true;        // it, or the one before it, is a last fragment
  Message message_;
};

}  // namespace host

#endif  // HOST_STREAMS_MESSAGE_FOLLOWER_H_
