#ifndef HOST_TIMING_MESSAGE_TIMING_H_
#define HOST_TIMING_MESSAGE_TIMING_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "host/dialogue/dialogue.h"
#include "host/streams/transfer_facts.h"
#include "host/streams/transport_facts.h"

namespace host {

// When the bytes of one message were captured, by the clock that never goes
// back. A mark's frame is 0 where no byte was captured.
struct MessageTiming {
  FrameMark first;       // with its first byte
  FrameMark data_first;  // with the first byte of its data set, if it has one
  FrameMark last;        // with which it was there whole
  std::uint64_t bytes = 0;  // of both sets

  // Of an answer: from the last byte of the request, or of the answer before
  // it, to its first byte. Of a request with answers: the sum of theirs. It
  // holds the way to the responder and back.
  std::optional<Nanoseconds> answered_after;
  // Of a request: from its first byte to the last byte of its last answer.
  std::optional<Nanoseconds> whole;
  std::uint32_t sub_operations = 0;  // C-STOREs of this C-GET

  Nanoseconds Duration() const { return last.time - first.time; }
  // Bytes a second; empty where there is no duration to divide by.
  std::optional<double> Throughput() const;
};

// Of all messages of a connection, by their index in Dialogue::messages. Linear
// in the messages, but for the search of three positions each.
std::vector<MessageTiming> TimeMessages(const Connection& connection,
                                        const Dialogue& dialogue);

}  // namespace host

#endif  // HOST_TIMING_MESSAGE_TIMING_H_
