#ifndef HOST_TIMING_TIME_PARTS_H_
#define HOST_TIMING_TIME_PARTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace host {

// What an association's time was spent on: spans that follow each other without
// a gap, each with the side whose time it was. In whole microseconds, so that
// all sums are exact.
using Microseconds = std::int64_t;

enum class TimePart : std::uint8_t {
  kConnecting,    // the TCP handshake
  kNegotiating,   // up to the answer to the A-ASSOCIATE-RQ
  kPreparing,     // nothing is open: the requestor makes its next request
  kTransferring,  // bytes of a message, or an answer, are on their way
  kHeldBack,      // a small packet waits for a delayed acknowledgement
  kZeroWindow,    // the receiver takes no data
  kLossRecovery,  // lost data are sent again
  kThinking,      // a request is open and its answer does not come
  kIdle,          // nothing is open, and no request follows for long
  kReleasing,     // release, abort, closing
};
inline constexpr std::size_t kTimeParts = 10;

// Whose time it was: who could have made it shorter.
enum class TimeOwner : std::uint8_t { kRequestor, kAcceptor, kNetwork };
inline constexpr std::size_t kTimeOwners = 3;

std::string_view PartText(TimePart part);     // "zero window"
std::string_view PartSlug(TimePart part);     // "held_back", for programs
char PartLetter(TimePart part);               // "k", for bars of characters
std::string_view OwnerText(TimeOwner owner);  // "requestor"

// Times since the connection's first packet; `end` is behind it.
struct TimeSpan {
  Microseconds begin = 0;
  Microseconds end = 0;
  TimePart part = TimePart::kIdle;
  TimeOwner owner = TimeOwner::kNetwork;
  // The message that it is part of, or waits for: an index in
  // Dialogue::messages. Empty outside of messages.
  std::optional<std::uint32_t> message;
  // Of kThinking: between the pending answers of a C-MOVE or C-GET, so that
  // more than its owner may be behind it.
  bool sub_operations = false;

  Microseconds Length() const { return end - begin; }
};

// By part and owner.
class TimeSums {
 public:
  void Add(const TimeSpan& span);
  Microseconds Of(TimePart part) const;
  Microseconds Of(TimeOwner owner) const;
  Microseconds Of(TimePart part, TimeOwner owner) const;

 private:
  std::array<std::array<Microseconds, kTimeOwners>, kTimeParts> sums_{};
};

// Replaces what lies below `over`, which are in order and disjoint, wherever
// `covers` says so of a span and the one above it; the message of what was
// there stays. What results is in order and without gaps as before, with no
// empty spans and no two neighbours alike. Linear.
using Covers = std::function<bool(const TimeSpan& below, const TimeSpan& over)>;
std::vector<TimeSpan> Overlay(const std::vector<TimeSpan>& spans,
                              const std::vector<TimeSpan>& over,
                              const Covers& covers);

}  // namespace host

#endif  // HOST_TIMING_TIME_PARTS_H_
