#include "host/streams/transfer_facts.h"

#include <algorithm>

namespace host {

void RoundTrips::Add(Nanoseconds time) {
  ++count;
  least = std::min(least, time);
}

std::optional<Nanoseconds> FlowFacts::LeastDataTrip() const {
  if (data_trips.count == 0) return {};
  return data_trips.least;
}

std::optional<Nanoseconds> FlowFacts::LeastTrip() const {
  if (data_trips.count == 0) return handshake_trip;
  return std::min(data_trips.least, handshake_trip.value_or(data_trips.least));
}

Nanoseconds TransferFacts::ClosedFor(std::uint32_t side) const {
  const auto& since = flows[side].closed_since;
  Nanoseconds time = since ? last - *since : 0;
  for (const Wait& wait : waits) {
    if (wait.kind != WaitKind::kZeroWindow || wait.side != side) continue;
    time += wait.end - wait.begin;
  }
  return time;
}

Nanoseconds TransferFacts::TimeOf(std::uint32_t frame,
                                  Nanoseconds captured) const {
  const auto after =
      std::ranges::upper_bound(holds, frame, {}, &ClockHold::frame);
  if (after == holds.begin()) return captured;
  const ClockHold& hold = *std::prev(after);
  return frame < hold.until ? hold.time : captured;
}

}  // namespace host
