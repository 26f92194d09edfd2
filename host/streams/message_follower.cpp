#include "host/streams/message_follower.h"

#include <algorithm>

#include "host/capture/frame_parser.h"
#include "host/streams/dimse_status.h"
#include "host/streams/note_text.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr std::uint8_t kCommandBit = 1;
constexpr std::uint8_t kLastBit = 2;
constexpr std::size_t kMostCommandBytes = 1024;  // in which its status stands

void Widen(const FrameRange& more, FrameRange* range) {
  if (more.first == 0) return;
  if (range->first == 0 || more.first < range->first) {
    range->first = more.first;
  }
  if (more.last > range->last) {
    range->last = more.last;
    range->time = more.time;
  }
}

std::string UncountedText(std::uint64_t data_length) {
  return "the last data PDV is empty or missing: " + BytesText(data_length) +
         " of the data set are not counted";
}

}  // namespace

void MessageFollower::Follow(const PacketRun& run, bool is_first,
                             bool has_lost_bytes) {
  has_lost_bytes_ = has_lost_bytes;
  std::uint64_t done = is_first ? kPduHeaderBytes : 0;
  while (done < run.length) {  // packet by packet
    const std::uint64_t end = std::min<std::uint64_t>(
        run.length, (done / run.packet_bytes + 1) * run.packet_bytes);
    Feed(run.direction, run.position + static_cast<StreamPosition>(done),
         static_cast<std::uint32_t>(end - done));
    done = end;
  }
}

void MessageFollower::Feed(std::uint32_t direction, StreamPosition at,
                           std::uint32_t length) {
  Direction& d = directions_[direction];
  const StreamPosition end = at + length;
  StreamPosition now = at;
  if (d.missing == 0) {
    if (length < kItemHeaderBytes) return;
    TakeHeader(direction, at, at, end);
    now += kItemHeaderBytes;
  }
  while (d.missing < end - now) {  // bytes follow the value in this packet
    d.is_command = true;
    const std::uint32_t value = d.missing;
    TakeValue(direction, now, value);
    List(direction);
    now += value;
    if (end - now < kItemHeaderBytes) return;
    TakeHeader(direction, now, at, end);
    now += kItemHeaderBytes;
  }
  if (now == end) return;  // so an empty value never ends a message
  TakeValue(direction, now, static_cast<std::uint32_t>(end - now));
  if (d.missing != 0 || !d.is_last) return;
  if (d.is_command) {
    List(direction);
  } else {
    Complete(direction);
  }
}

// A command PDV's length is at `command_length_at`, the packet's first item.
void MessageFollower::TakeHeader(std::uint32_t direction, StreamPosition item,
                                 StreamPosition command_length_at,
                                 StreamPosition end) {
  Direction& d = directions_[direction];
  const StreamAssembler& stream = feed_.stream(direction);
  std::uint8_t control;
  stream.Copy(item + 5, 1, &control);
  d.is_command = (control & kCommandBit) != 0;
  if (d.is_command && d.is_last) {
    Retire(direction);
    d.message = Message();
    d.message.begun = true;
  } else if (d.is_command) {
    NoteSwallowedCommand(direction);
  }
  d.message.has_strays |= !d.is_command && d.message.complete;
  std::array<std::uint8_t, 4> length;
  stream.Copy(d.is_command ? command_length_at : item, 4, length.data());
  d.missing = Word32At(length, 0) - 2;  // below 2 it wraps, as in the module
  d.is_last = (control & kLastBit) != 0;
  Widen(stream.Frames(item, std::min(end, item + kItemHeaderBytes)),
        &d.message.frames);
}

void MessageFollower::TakeValue(std::uint32_t direction, StreamPosition at,
                                std::uint32_t length) {
  Direction& d = directions_[direction];
  const StreamAssembler& stream = feed_.stream(direction);
  Message& message = d.message;
  (d.is_command ? message.command_length : message.data_length) += length;
  if (d.is_command) KeepCommand(direction, at, length);
  d.missing -= length;
  Widen(stream.Frames(at, at + length), &message.frames);
  if (has_lost_bytes_) {
    message.lost += length - stream.PresentBytes(at, at + length);
  }
}

void MessageFollower::KeepCommand(std::uint32_t direction, StreamPosition at,
                                  std::uint32_t length) {
  auto& command = directions_[direction].message.command;
  const std::size_t kept = command.size();
  const std::size_t more =
      std::min<std::size_t>(length, kMostCommandBytes - kept);
  command.resize(kept + more);
  feed_.stream(direction).Copy(at, more, command.data() + kept);
}

WireRecord MessageFollower::RecordOf(std::uint32_t direction) const {
  const Message& message = directions_[direction].message;
  WireRecord record;
  record.direction = direction;
  record.length = message.command_length + message.data_length;
  record.first_frame = message.frames.first;
  record.last_frame = message.frames.last;
  record.time = message.frames.time;
  record.status = FindStatus(message.command);
  if (record.status) record.note = StatusNote(*record.status);
  if (message.lost != 0) AppendNote(FilledText(message.lost), &record.note);
  if (message.goes_on) {
    AppendNote("a later message is counted here and has no row of its own",
               &record.note);
  }
  if (message.has_strays) {
    AppendNote("counts data PDVs that follow without a command set",
               &record.note);
  }
  return record;
}

// A command behind a data set without an end goes on with its message: the
// module lists that once more and the new one not at all.
void MessageFollower::NoteSwallowedCommand(std::uint32_t direction) {
  Message& message = directions_[direction].message;
  if (!message.row || message.data_length == 0 || message.complete) return;
  if (!message.goes_on) {
    AppendNote(UncountedText(message.data_length),
               &messages_[*message.row].note);
  }
  message.goes_on = true;
}

void MessageFollower::List(std::uint32_t direction) {
  directions_[direction].message.row = messages_.size();
  messages_.push_back(RecordOf(direction));
}

void MessageFollower::Complete(std::uint32_t direction) {
  Message& message = directions_[direction].message;
  message.complete = true;
  if (message.row) messages_[*message.row] = RecordOf(direction);
}

// A message that is over tells what its row does not show.
void MessageFollower::Retire(std::uint32_t direction) {
  Message& message = directions_[direction].message;
  if (message.begun && !message.row) {
    WireRecord record = RecordOf(direction);
    record.listed = false;
    record.note =
        "a message is not listed: its command set is empty, cut off or ends "
        "with an empty PDV";
    messages_.push_back(record);
  } else if (message.row && message.data_length != 0 && !message.complete &&
             !message.goes_on) {
    AppendNote(UncountedText(message.data_length),
               &messages_[*message.row].note);
  }
  message.begun = false;
  message.row.reset();
}

void MessageFollower::Finish() {
  Retire(0);
  Retire(1);
}

}  // namespace host
