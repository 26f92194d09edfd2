#ifndef HOST_STREAMS_STREAM_ASSEMBLER_H_
#define HOST_STREAMS_STREAM_ASSEMBLER_H_

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "host/capture/byte_store.h"
#include "host/streams/connection.h"
#include "host/streams/extent_list.h"
#include "host/streams/sequence_space.h"

namespace host {

// Where a run of bytes came from. Both frames are 0 when nothing of it was
// captured.
struct FrameRange {
  std::uint32_t first = 0;
  std::uint32_t last = 0;
  Nanoseconds time = 0;  // of the last frame

  // Widens the range so that it holds the other one as well.
  void Include(const FrameRange& other);
};

// Where a segment's payload came from, and where its first byte is kept.
struct PayloadOrigin {
  ByteStore::Offset stored = 0;
  std::uint32_t frame = 0;
  Nanoseconds time = 0;
};

// Puts the payload of one direction of a connection in order. The first copy of
// a byte counts and never changes; what never came is a hole. The bytes stay
// where the store has them.
class StreamAssembler {
 public:
  explicit StreamAssembler(std::shared_ptr<ByteStore> store);

  // A SYN was captured; `number` is its sequence number + 1. Not to be called
  // with a number that contradicts beginning_number().
  void Begin(std::uint32_t number) { numbers_.Begin(number); }
  // The payload of a segment whose first byte has this sequence number.
  // `wire_length` is its length before the snap length cut it. Ignored are
  // segments more than 64 MiB ahead of the highest position so far or, without
  // SYN, more than 1 MiB before the first; bytes before position 0 of a SYN;
  // bytes behind the FIN.
  void Add(std::uint32_t sequence, std::span<const std::uint8_t> bytes,
           std::uint32_t wire_length, const PayloadOrigin& origin);
  // A FIN was captured; `sequence` is its own number, behind all payload.
  void Close(std::uint32_t sequence) { numbers_.Close(sequence); }

  // The sequence number of the first byte, by SYN or else by the lowest byte
  // that came; none when there was neither.
  std::optional<std::uint32_t> beginning_number() const {
    return numbers_.beginning_number();
  }
  bool began_with_syn() const { return numbers_.began_with_syn(); }
  bool has_payload() const { return payload_bytes_ != 0; }
  bool closed() const { return numbers_.closed(); }
  // The position that a sequence or acknowledgement number stands for; none
  // before anything is known of the direction.
  std::optional<StreamPosition> PositionOf(std::uint32_t number) const {
    return numbers_.PositionOf(number);
  }

  StreamPosition begin() const { return numbers_.begin(); }
  // Behind the last byte that was on the wire, as far as the capture shows.
  StreamPosition end() const { return numbers_.end(); }
  // The first position from `from` on whose byte is missing, at most end().
  StreamPosition PresentUntil(StreamPosition from) const;
  // The first position from `from` on whose byte is there, at most end().
  StreamPosition NextPresent(StreamPosition from) const;
  // How many of the bytes in [from, to) are there.
  std::uint64_t PresentBytes(StreamPosition from, StreamPosition to) const;
  // Fills `to` with the bytes from `from` on; holes are zero.
  void Copy(StreamPosition from, std::span<std::uint8_t> to) const;
  // The bytes from `at` on, at most `most` of them and none behind a hole.
  std::vector<std::uint8_t> Peek(StreamPosition at, std::size_t most) const;
  // The frames that the bytes in [from, to) came from.
  FrameRange Frames(StreamPosition from, StreamPosition to) const;
  // Every run of bytes that nobody captured between two that somebody did, in
  // order.
  void ForEachGap(const std::function<void(const StreamGap&)>& take) const;

  // What is missing before `position` stays missing, even if it comes late: it
  // was shown as lost.
  void Seal(StreamPosition position) { sealed_until_ = position; }
  // Gives lost bytes a value; bytes that are there stay as they are.
  void Substitute(StreamPosition at, std::span<const std::uint8_t> bytes);

  std::uint64_t payload_bytes() const { return payload_bytes_; }
  // Segments that repeat bytes with another content.
  std::uint32_t differing_copies() const { return differing_copies_; }

 private:
  // Adds what is not there yet of `bytes`, which `whole` stands for; true when
  // what is there already is the same.
  bool Insert(const Extent& whole, std::span<const std::uint8_t> bytes);
  // Whether `bytes` are those that `known` holds from `at` on.
  bool IsSame(const Extent& known, StreamPosition at,
              std::span<const std::uint8_t> bytes) const;
  void Keep(const Extent& extent);
  void Join(StreamPosition from, StreamPosition to);

  std::shared_ptr<ByteStore> store_;
  SequenceSpace numbers_;
  ExtentList extents_;
  std::map<StreamPosition, StreamPosition>
      runs_;  // begin and end without holes between
  StreamPosition sealed_until_ = std::numeric_limits<StreamPosition>::min();
  std::uint64_t payload_bytes_ = 0;
  std::uint32_t differing_copies_ = 0;
};

}  // namespace host

#endif  // HOST_STREAMS_STREAM_ASSEMBLER_H_
