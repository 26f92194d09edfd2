#include <algorithm>

#include "host/streams/sequence_number.h"
#include "host/streams/transfer_watch.h"

// What a packet sends; how it takes the other side's data is in
// transfer_watch.cpp.

namespace host {
namespace {

constexpr Nanoseconds kMillisecond = 1'000'000;
// Behind the acknowledgement that it waited for a sender goes on so soon, the
// way to it and back apart.
constexpr Nanoseconds kAtOnce = 4 * kMillisecond;
// Shorter waits are what programs take for their work.
constexpr Nanoseconds kLeastHeldBack = 5 * kMillisecond;
constexpr Nanoseconds kLeastQuiet = kMillisecond;
// No way on earth takes longer.
constexpr Nanoseconds kLongestTrip = 60'000 * kMillisecond;
constexpr std::uint32_t kRepeatsUntilFast = 2;

// Whether a side can have sent something because of what passed the capture
// point so long before, and did not wait. How soon it can at the earliest only
// a handshake tells, since acknowledgements of data may all have been delayed;
// what is near takes less at times.
bool IsAtOnce(Nanoseconds since, Nanoseconds trip, const FlowFacts& flow) {
  const bool is_far = flow.handshake_trip && trip >= 2 * kMillisecond;
  return since >= (is_far ? trip / 2 : 0) && since <= trip + trip / 4 + kAtOnce;
}

}  // namespace

void TransferWatch::NoteData(const Packet& packet) {
  Side& side = sides_[packet.direction];
  side.probed = IsProbe(packet);
  if (side.probed) return;
  const bool fin = packet.header.Has(kFin);
  if (packet.payload == 0 && !fin) return;
  if (!side.next) side.next = packet.begin;
  const std::uint32_t end = packet.end() + (fin ? 1 : 0);
  if (Distance(*side.next, end) <= 0) {
    if (!packet.header.Has(kSyn)) NoteRepeated(packet);
    return;
  }
  if (packet.payload != 0) NoteNew(packet);
  side.next = end;
  side.newest = packet.time;
  FlowFacts& flow = facts_.flows[packet.direction];
  flow.most_in_flight =
      std::max(flow.most_in_flight, InFlight(packet.direction));
}

bool TransferWatch::IsProbe(const Packet& packet) {
  const Side& side = sides_[packet.direction];
  const bool closed = sides_[1 - packet.direction].window == 0u;
  if (packet.payload > 1 || !packet.IsPlain() || !side.next) return false;
  FlowFacts& flow = facts_.flows[packet.direction];
  const std::int32_t ahead = Distance(*side.next, packet.begin);
  if (ahead == -1) {
    ++(closed ? flow.window_probes : flow.keep_alives);
    return true;
  }
  if (ahead == 0 && packet.payload == 1 && closed) {
    ++flow.window_probes;
    return true;
  }
  return false;
}

void TransferWatch::NoteRepeated(const Packet& packet) {
  Side& side = sides_[packet.direction];
  const Side& other = sides_[1 - packet.direction];
  FlowFacts& flow = facts_.flows[packet.direction];
  const bool fills_gap = side.missing != 0;
  side.missing -= std::min(side.missing, packet.payload);
  side.release.reset();
  if (side.acknowledged && Distance(packet.end(), *side.acknowledged) >= 0) {
    ++flow.spurious;
    return;
  }
  side.sample_count = 0;  // which copy is acknowledged cannot be told
  if (fills_gap && packet.time - side.newest <= kOvertakenWithin) {
    ++flow.out_of_order;
    return;
  }
  const bool fast =
      side.recovery ? side.recovery->fast : other.repeats >= kRepeatsUntilFast;
  ++(fast ? flow.fast : flow.timed_out);
  NoteRecovery(packet, fast);
}

void TransferWatch::NoteRecovery(const Packet& packet, bool fast) {
  Side& side = sides_[packet.direction];
  if (!side.recovery) {
    facts_.flows[packet.direction].recovering_since =
        side.progressed != 0 ? side.progressed : packet.time;
    side.recovery = Recovery{packet.end(), fast};
  } else if (Distance(side.recovery->end, packet.end()) > 0) {
    side.recovery->end = packet.end();
  }
}

void TransferWatch::NoteNew(const Packet& packet) {
  Side& side = sides_[packet.direction];
  FlowFacts& flow = facts_.flows[packet.direction];
  const std::int32_t gap = Distance(*side.next, packet.begin);
  if (gap > 0) {
    ++flow.gaps;
    side.missing += static_cast<std::uint32_t>(gap);
  } else {
    NoteWaitBefore(packet);
  }
  if (InFlight(packet.direction) == 0) side.progressed = packet.time;
  flow.sent_bytes += static_cast<std::uint32_t>(
      gap >= 0 ? packet.payload : packet.end() - *side.next);
  NoteSize(packet);
  TakeSample(packet);
  side.release.reset();
  newest_sender_ = packet.direction;
  const auto& window = sides_[1 - packet.direction].window;
  if (!window || *window == 0 || !WindowShift(1 - packet.direction)) return;
  const std::uint32_t in_flight =
      side.acknowledged ? packet.end() - *side.acknowledged : 0;
  if (in_flight == *window) ++flow.window_full;
  if (in_flight + FullPayload(packet.direction) > *window) {
    side.limited_since = packet.time;
  }
}

void TransferWatch::NoteWaitBefore(const Packet& packet) {
  Side& side = sides_[packet.direction];
  FlowFacts& flow = facts_.flows[packet.direction];
  const Nanoseconds trip =
      std::min(flow.LeastTrip().value_or(kMillisecond), kLongestTrip);
  if (side.limited_since && side.limited_until &&
      IsAtOnce(packet.time - *side.limited_until, trip, flow)) {
    flow.window_limited += packet.time - *side.limited_since;
  }
  side.limited_since.reset();
  side.limited_until.reset();
  if (InFlight(packet.direction) != 0 || side.advanced == 0) return;
  if (side.release && !packet.header.Has(kFin) &&
      packet.payload < FullPayload(packet.direction) &&
      IsAtOnce(packet.time - side.release->acknowledged, trip, flow) &&
      packet.time - side.release->sent >= kLeastHeldBack) {
    AddWait(WaitKind::kHeldBack, packet.direction, side.release->sent, packet,
            side.release->acknowledged);
    return;
  }
  const Nanoseconds quiet = packet.time - side.advanced - trip;
  if (quiet < kLeastQuiet || newest_sender_ != packet.direction) return;
  AddWait(WaitKind::kQuiet, packet.direction, packet.time - quiet, packet);
}

void TransferWatch::NoteSize(const Packet& packet) {
  Side& side = sides_[packet.direction];
  const std::uint32_t full = FullPayload(packet.direction);
  const bool repeats_largest =
      packet.payload >= kLeastFull && packet.payload == side.largest;
  if (packet.payload < 1 << 14) {
    side.largest = std::max(side.largest, packet.payload);
  }
  if (packet.payload % full == 0 || repeats_largest) return;
  const bool waits = side.small_end && side.acknowledged &&
                     Distance(*side.acknowledged, *side.small_end) > 0;
  if (waits && !packet.header.Has(kFin)) {
    ++facts_.flows[packet.direction].small_not_held;
  }
  side.small_end = packet.end();
}

void TransferWatch::TakeSample(const Packet& packet) {
  Side& side = sides_[packet.direction];
  if (side.sample_count == Side::kSamples) {
    side.first_sample = (side.first_sample + 1) % Side::kSamples;
    --side.sample_count;
  }
  side.samples[(side.first_sample + side.sample_count) % Side::kSamples] = {
      packet.end(), packet.time};
  ++side.sample_count;
}

}  // namespace host
