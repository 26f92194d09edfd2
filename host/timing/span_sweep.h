#ifndef HOST_TIMING_SPAN_SWEEP_H_
#define HOST_TIMING_SPAN_SWEEP_H_

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <vector>

#include "host/timing/connection_timing.h"

namespace host {

// Parts the time of one association by what its PDUs and messages show, without
// what TCP waited for: goes along the association once and says of each span
// who was to do the next step.
class SpanSweep {
 public:
  // All outlive it; `timing` has its `start` and `messages`. `association` is
  // the index of one of `dialogue`.
  SpanSweep(const Connection& connection, const Dialogue& dialogue,
            const ConnectionTiming& timing, std::uint32_t association);

  // `times` has its requestor, begin and end. The spans fill it without gaps.
  std::vector<TimeSpan> Run(const AssociationTiming& times);

  // When the first byte of a PDU was captured, and when all of it was there.
  Microseconds BeginOf(std::uint32_t pdu) const;
  Microseconds EndOf(std::uint32_t pdu) const;

 private:
  // The first byte of a message, or its last one.
  struct Event {
    Microseconds time = 0;
    std::uint32_t message = 0;
    bool is_end = false;
  };

  // Something by which the association comes to its end: who did it, and who
  // has to do something next.
  struct Step {
    Microseconds time = 0;
    std::uint32_t direction = 0;
    std::uint32_t next = 0;
  };

  void Connect();
  void Negotiate();
  void Converse(Microseconds until);
  void Release();
  // When the association goes over into its end.
  Microseconds EndOfTalk() const;
  // The connection's FINs and RSTs, if it ends with this association.
  std::vector<Step> Closings() const;
  // All by which it comes to its end, in their order.
  std::vector<Step> Steps() const;

  std::vector<Event> Events() const;
  void Take(const Event& event);
  bool HasSubOperations(std::uint32_t request) const;
  // The span up to the next event, by who has to do what.
  void SpanUntil(Microseconds time, const Event* next);
  // Says of pauses between requests that nobody was busy in them.
  void NameIdle();
  // A side's turn: before it can have known of it there is the way to it.
  void Turn(Microseconds until, TimePart part, std::uint32_t direction,
            std::optional<std::uint32_t> message);
  void Until(Microseconds time, TimePart part, TimeOwner owner,
             std::optional<std::uint32_t> message = {});
  TimeOwner OwnerOf(std::uint32_t direction) const;
  Microseconds TripTo(std::uint32_t direction) const;

  const Connection& connection_;
  const Dialogue& dialogue_;
  const ConnectionTiming& timing_;
  const std::uint32_t index_;
  const Association& association_;

  std::uint32_t requestor_ = 0;
  Microseconds end_ = 0;
  Microseconds at_ = 0;
  std::vector<TimeSpan> spans_;
  std::vector<std::size_t> pauses_;    // in spans_: up to a request
  std::set<std::uint32_t> under_way_;  // messages, begun and not ended
  std::set<std::uint32_t> open_;       // requests, ended and not answered
  std::set<std::uint32_t> answered_;   // before they ended
  // C-MOVEs and C-GETs of which a sub-operation or a pending answer came.
  std::set<std::uint32_t> moving_;
  // A message that its sender left off.
  std::optional<std::uint32_t> left_off_;
  // Who has just ended a message, so that the other side has to get to know.
  std::optional<std::uint32_t> spoke_;
};

}  // namespace host

#endif  // HOST_TIMING_SPAN_SWEEP_H_
