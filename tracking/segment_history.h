#ifndef TRACKING_SEGMENT_HISTORY_H_
#define TRACKING_SEGMENT_HISTORY_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <utility>

#include "tracking/tcp_segment.h"

namespace dicom {

// A segment's two numbers in the one frame in which segments of both directions
// compare: (sequence, acknowledgement) for direction 1, (acknowledgement,
// sequence) for direction 0.
using NumberPair = std::pair<std::uint32_t, std::uint32_t>;
NumberPair NumbersOf(const TcpSegment& segment);

// Holds back in-order segments, first in first out, until a segment of the
// other direction (or a retransmission of them) settles them. Settling an entry
// always settles every older one, so one count says how many are settled.
class SegmentHistory {
 public:
  // Deliberate: a change of direction settles the entries before the new one,
  // never that itself. For a segment with payload.
  void Append(const TcpSegment& segment);

  // For an in-order segment without payload: settles everything when it comes
  // from the other direction than the newest entry; false when it does not, or
  // when nothing is held.
  // Deliberate: the direction last appended stays as it was.
  bool SettleOnDirection(std::uint8_t direction);

  // For a segment behind the expected numbers: settles the newest entry with
  // equal numbers and all older ones. False when there is none.
  bool SettleRetransmitted(const NumberPair& numbers);

  bool FrontIsSettled() const { return settled_ > 0; }

  // The packet number of the front entry, which is removed: only when it is
  // settled, or (at the end of a capture) whatever its state.
  std::optional<std::uint32_t> TakeSettled();
  std::optional<std::uint32_t> TakeAny();

 private:
  // Brings newest_ up to the last entry.
  void IndexEntries();

  struct HeldSegment {
    std::uint32_t packet_number;
    NumberPair numbers;
  };

  std::deque<HeldSegment> entries_;
  std::size_t settled_ = 0;  // that many entries from the front are settled
  std::uint64_t taken_ = 0;  // entries ever taken; numbers the front entry
  std::uint8_t last_direction_ = 0;
  // The newest entry with each pair of numbers, counted like taken_, so that
  // late acknowledgements find theirs without a walk. Most traffic has none:
  // entries are indexed when the next one comes.
  std::map<NumberPair, std::uint64_t> newest_;
  std::uint64_t indexed_ = 0;  // entries ever indexed or taken before that
};

}  // namespace dicom

#endif  // TRACKING_SEGMENT_HISTORY_H_
