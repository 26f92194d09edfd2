#include "tracking/message_assembler.h"

namespace dicom {
namespace {

constexpr std::uint32_t kPdvHeader = 6;  // length (4), context ID, control byte
constexpr std::uint32_t kContextId = 4;
constexpr std::uint32_t kControl = 5;
constexpr std::uint8_t kCommandBit = 0x01;
constexpr std::uint8_t kLastFragmentBit = 0x02;

// Deliberate: the PDV length counts the context ID and the control byte; below
// 2 it wraps, and the message swallows all that follows in its direction.
std::uint32_t ValueLength(std::uint32_t item_length) { return item_length - 2; }

}  // namespace

void MessageAssembler::Feed(const TcpSegment& segment, std::uint32_t offset,
                            std::uint32_t length, PacketSource& source) {
  const std::uint8_t direction = segment.Direction() != 0 ? 1 : 0;
  PdvStream& stream = streams_[direction];
  Chunk chunk{segment.Part(offset, length),
              segment.PacketNumber(),
              offset,
              length,
              0,
              direction};
  if (stream.missing > length) {
    TakeValue(stream, chunk, length);
    stream.missing -= length;
    return;
  }
  if (stream.missing == 0) ReadFirstHeader(stream, chunk);
  if (!ListValuesThatEndInside(stream, chunk, source)) return;
  // Deliberate: a PDV with an empty value at the end of a chunk stops here,
  // before the completion test, and so never completes a message.
  const std::uint32_t rest = chunk.Left();
  if (rest == 0) return;
  TakeValue(stream, chunk, rest);
  stream.missing -= rest;
  if (stream.missing != 0 || !stream.last_fragment) return;
  if (stream.is_command) {
    ListMessage(stream, source);
  } else {
    ReplaceNewestEntry(stream);
  }
}

void MessageAssembler::ReadFirstHeader(PdvStream& stream, Chunk& chunk) {
  const std::uint8_t control = chunk.bytes.ByteAt(kControl);
  stream.is_command = (control & kCommandBit) != 0;
  // Deliberate: only a command behind a last fragment starts a message. Another
  // command goes on with the current one, and data before any command belongs
  // to message 0, which has no entry.
  if (stream.is_command && stream.last_fragment) {
    StartMessage(stream, chunk.direction, chunk.bytes.ByteAt(kContextId));
  }
  stream.missing = ValueLength(chunk.bytes.LongAt(0, kBigEndian));
  chunk.consumed = kPdvHeader;
  stream.last_fragment = (control & kLastFragmentBit) != 0;
}

void MessageAssembler::ReadNextHeader(PdvStream& stream, Chunk& chunk) {
  const std::uint8_t control = chunk.bytes.ByteAt(chunk.consumed + kControl);
  stream.is_command = (control & kCommandBit) != 0;
  if (stream.is_command) {
    // Deliberate: the context ID and the length of a command PDV inside a chunk
    // are those of the chunk's first header, and the direction is 1 on both
    // streams.
    if (stream.last_fragment) {
      StartMessage(stream, 1, chunk.bytes.ByteAt(kContextId));
    }
    stream.missing = ValueLength(chunk.bytes.LongAt(0, kBigEndian));
  } else {
    stream.missing =
        ValueLength(chunk.bytes.LongAt(chunk.consumed, kBigEndian));
  }
  stream.last_fragment = (control & kLastFragmentBit) != 0;
  chunk.consumed += kPdvHeader;
}

// Deliberate: bytes that are fewer than a header has are lost, and the next
// chunk is taken to begin with one.
bool MessageAssembler::ListValuesThatEndInside(PdvStream& stream, Chunk& chunk,
                                               PacketSource& source) {
  while (stream.missing < chunk.Left()) {
    // Deliberate: whatever the PDV was, its bytes count as command bytes and
    // the message is listed, again and again if more PDVs of it end in here.
    stream.is_command = true;
    TakeValue(stream, chunk, stream.missing);
    ListMessage(stream, source);
    chunk.consumed += stream.missing;
    stream.missing = 0;
    if (chunk.Left() < kPdvHeader) return false;
    ReadNextHeader(stream, chunk);
  }
  return true;
}

void MessageAssembler::StartMessage(PdvStream& stream, std::uint8_t direction,
                                    std::uint8_t context_id) {
  stream.message = DimseMessageRecord();
  stream.summary = MessageSummary();
  stream.newest_entry.reset();
  stream.message.message_number = ++message_counter_;
  stream.message.direction = direction;
  stream.message.presentation_context_id = context_id;
}

void MessageAssembler::TakeValue(PdvStream& stream, const Chunk& chunk,
                                 std::uint32_t count) {
  DimseMessageRecord& message = stream.message;
  message.spans.Append(
      {chunk.packet_number, chunk.offset + chunk.consumed, count});
  (stream.is_command ? message.command_length : message.data_length) += count;
}

void MessageAssembler::ListMessage(PdvStream& stream, PacketSource& source) {
  stream.summary.Build(stream.message, source);
  NewestEntry(stream) = messages_.size();
  messages_.push_back(stream.message);
}

void MessageAssembler::ReplaceNewestEntry(PdvStream& stream) {
  const std::optional<std::size_t> entry = NewestEntry(stream);
  if (entry) messages_[*entry] = stream.message;
}

std::optional<std::size_t>& MessageAssembler::NewestEntry(PdvStream& stream) {
  return stream.message.message_number == 0 ? newest_entry_of_message_0_
                                            : stream.newest_entry;
}

// Deliberate: the other side's message comes first.
void MessageAssembler::Flush() {
  FlushStream(streams_[1].message);
  FlushStream(streams_[0].message);
}

// Deliberate: positions count from 0 and numbers from 1, so the entry compared
// is the one behind the message's own, and a message that was listed when its
// command set ended is listed a second time. The number 0 of a direction that
// never carried a message counts too: it overwrites the first entry.
void MessageAssembler::FlushStream(const DimseMessageRecord& message) {
  if (message.message_number < messages_.size()) {
    DimseMessageRecord& entry = messages_[message.message_number];
    if (entry.command_length != message.command_length ||
        entry.data_length != message.data_length) {
      entry = message;
    }
  } else if (message.command_length != 0) {
    messages_.push_back(message);
  }
}

}  // namespace dicom
