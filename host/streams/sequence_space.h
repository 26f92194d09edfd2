#ifndef HOST_STREAMS_SEQUENCE_SPACE_H_
#define HOST_STREAMS_SEQUENCE_SPACE_H_

#include <cstddef>
#include <cstdint>
#include <optional>

#include "host/capture/frame_parser.h"
#include "host/streams/extent_list.h"

namespace host {

// Which positions of one direction's stream its sequence numbers stand for, and
// how far it goes. Knows nothing of the bytes.
class SequenceSpace {
 public:
  // Captured bytes at [from, to), before which `skipped` ones have no place.
  struct Place {
    StreamPosition from = 0;
    StreamPosition to = 0;
    StreamPosition skipped = 0;
  };

  // A SYN was captured; `number` is its sequence number + 1. Not to be called
  // with a number that contradicts beginning_number().
  void Begin(std::uint32_t number);
  // A segment of `captured` bytes, `wire_length` before the snap length cut it.
  // None when nothing of it counts, as StreamAssembler::Add() says.
  std::optional<Place> Add(std::uint32_t sequence, std::size_t captured,
                           std::uint32_t wire_length);
  // A FIN was captured; `sequence` is its own number, behind all payload.
  void Close(std::uint32_t sequence);

  // The sequence number of the first byte, by SYN or else by the lowest byte
  // that came; none when there was neither.
  std::optional<std::uint32_t> beginning_number() const;
  // The position that a sequence or acknowledgement number stands for; none
  // before anything is known of the direction.
  std::optional<StreamPosition> PositionOf(std::uint32_t number) const;

  bool began_with_syn() const { return syn_seen_; }
  bool closed() const { return fin_.has_value(); }
  StreamPosition begin() const { return lowest_; }
  // Behind the last byte that was on the wire.
  StreamPosition end() const { return fin_ ? *fin_ : highest_; }

 private:
  // Whether a segment may begin there: not too far from what is known, so that
  // a stray number does not make a stream of gigabytes.
  bool Accepts(StreamPosition position) const;

  std::uint32_t base_ = 0;  // the sequence number of position 0
  bool base_known_ = false;
  bool syn_seen_ = false;
  StreamPosition lowest_ = 0;
  StreamPosition highest_ = 0;  // behind the last byte on the wire
  std::optional<StreamPosition> fin_;
};

// Whether a SYN cannot belong to a connection any more whose direction began
// with `begun`: its number does not fit, or the other side has sent payload and
// this one nothing.
bool BeginsAnotherStream(const TcpHeader& syn,
                         std::optional<std::uint32_t> begun,
                         bool other_has_payload);

}  // namespace host

#endif  // HOST_STREAMS_SEQUENCE_SPACE_H_
