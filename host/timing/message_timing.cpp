#include "host/timing/message_timing.h"

#include <algorithm>

#include "host/streams/pdu_header.h"

namespace host {
namespace {

// Where the bytes of one connection's messages were captured.
class MessageClock {
 public:
  MessageClock(const Connection& connection, const Dialogue& dialogue)
      : connection_(connection), dialogue_(dialogue) {}

  MessageTiming Time(const DialogueMessage& message) const {
    MessageTiming timing;
    timing.bytes = message.command_bytes + message.data_bytes;
    if (message.pieces.empty()) return timing;
    const PdvPiece& first = message.pieces.front();
    const StreamPosition item = first.position - kPdvHeaderBytes;
    const StreamPosition pdu = dialogue_.pdus[first.pdu].position;
    const bool begins_pdu = item == pdu + kPduHeaderBytes;
    timing.first = At(message, begins_pdu ? pdu : item);
    timing.last = End(message);
    if (timing.first.frame == 0) timing.first = timing.last;
    if (message.data_pieces != 0) {
      const auto& data =
          message.pieces[message.pieces.size() - message.data_pieces];
      if (data.length != 0) timing.data_first = At(message, data.position);
    }
    return timing;
  }

 private:
  FrameMark At(const DialogueMessage& message, StreamPosition at) const {
    const StreamAssembler* const stream = dialogue_.streams[message.direction];
    if (stream == nullptr) return {};
    return Mark(stream->Frames(at, at + 1));
  }

  // With which all its pieces were there: the last piece's PDU may go on with
  // another message.
  FrameMark End(const DialogueMessage& message) const {
    const StreamAssembler* const stream = dialogue_.streams[message.direction];
    FrameRange range;
    for (const PdvPiece& piece : message.pieces) {
      const DialoguePdu& pdu = dialogue_.pdus[piece.pdu];
      if (stream == nullptr || piece.pdu != message.pieces.back().pdu) {
        range.Include({pdu.first_frame, pdu.last_frame, pdu.time});
      } else {
        range.Include(stream->Frames(piece.position - kPdvHeaderBytes,
                                     piece.position + piece.length));
      }
    }
    return Mark(range);
  }

  FrameMark Mark(const FrameRange& range) const {
    if (range.last == 0) return {};
    return {range.last, connection_.transfer.TimeOf(range.last, range.time)};
  }

  const Connection& connection_;
  const Dialogue& dialogue_;
};

}  // namespace

std::optional<double> MessageTiming::Throughput() const {
  if (Duration() <= 0) return {};
  return static_cast<double>(bytes) * 1e9 / static_cast<double>(Duration());
}

std::vector<MessageTiming> TimeMessages(const Connection& connection,
                                        const Dialogue& dialogue) {
  const MessageClock clock(connection, dialogue);
  std::vector<MessageTiming> timings;
  timings.reserve(dialogue.messages.size());
  for (const DialogueMessage& message : dialogue.messages) {
    timings.push_back(clock.Time(message));
  }
  // Of each request what was there last of it and its answers so far.
  std::vector<Nanoseconds> newest(timings.size());
  for (std::size_t i = 0; i < timings.size(); ++i) {
    newest[i] = timings[i].last.time;
  }
  for (std::size_t i = 0; i < timings.size(); ++i) {
    const DialogueMessage& answer = dialogue.messages[i];
    if (!answer.IsAnswer() || !answer.request) continue;
    MessageTiming& timing = timings[i];
    MessageTiming& request = timings[*answer.request];
    Nanoseconds& before = newest[*answer.request];
    timing.answered_after =
        std::max<Nanoseconds>(timing.first.time - before, 0);
    request.answered_after =
        request.answered_after.value_or(0) + *timing.answered_after;
    before = std::max(before, timing.last.time);
    request.whole = before - request.first.time;
  }
  for (const DialogueMessage& message : dialogue.messages) {
    if (message.parent) ++timings[*message.parent].sub_operations;
  }
  return timings;
}

}  // namespace host
