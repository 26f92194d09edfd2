#include "host/timing/connection_timing.h"

#include <algorithm>
#include <utility>

#include "host/timing/span_sweep.h"
#include "host/timing/timing_limits.h"

namespace host {
namespace {

// An acknowledgement that comes later than a round trip by this much was
// delayed by its sender; systems delay by 40 ms and more.
constexpr Nanoseconds kMillisecond = 1'000'000;
constexpr Nanoseconds kDelayed = 20;  // in milliseconds
// Who sends small packets without waiting so often, compared with what looks
// held back, waits for something else.
constexpr std::uint32_t kNotHeldShare = 4;

TimePart PartOf(WaitKind kind) {
  switch (kind) {
    case WaitKind::kHeldBack:
      return TimePart::kHeldBack;
    case WaitKind::kZeroWindow:
      return TimePart::kZeroWindow;
    default:
      return TimePart::kLossRecovery;
  }
}

class TimingMaker {
 public:
  TimingMaker(const Connection& connection, const Dialogue& dialogue,
              ConnectionTiming& timing)
      : connection_(connection), dialogue_(dialogue), timing_(timing) {
    CollectWaits();
  }

  void Run() {
    const auto count =
        static_cast<std::uint32_t>(dialogue_.associations.size());
    timing_.associations.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) SetTimes(i);
    for (std::uint32_t i = 0; i < count; ++i) {
      AssociationTiming& times = timing_.associations[i];
      times.end = i + 1 < count ? timing_.associations[i + 1].begin : end_;
      SpanSweep sweep(connection_, dialogue_, timing_, i);
      times.spans = sweep.Run(times);
      LayWaits(times);
      for (const TimeSpan& span : times.spans) AddSpan(span, times);
      CountHeldBack(times);
    }
  }

 private:
  static void AddSpan(const TimeSpan& span, AssociationTiming& times) {
    times.sums.Add(span);
    if (!span.sub_operations) return;
    SubOperationTime& time = times.sub_operations;
    if (time.sum == 0) time.request = *span.message;
    time.sum += span.Length();
  }

  // By the time of their begin, those that go on included.
  void CollectWaits() {
    const TransferFacts& transfer = connection_.transfer;
    waits_ = transfer.waits;
    end_ = timing_.Since(transfer.last);
    for (std::uint8_t side = 0; side < 2; ++side) {
      const FlowFacts& flow = transfer.flows[side];
      const auto add = [&](const std::optional<Nanoseconds>& since,
                           WaitKind kind) {
        if (!since) return;
        waits_.push_back(
            {*since, transfer.last, transfer.last_frame, 0, kind, side});
      };
      add(flow.closed_since, WaitKind::kZeroWindow);
      add(flow.recovering_since, WaitKind::kLossRecovery);
      if (HoldsBack(side)) continue;
      std::erase_if(waits_, [side](const Wait& wait) {
        return wait.kind == WaitKind::kHeldBack && wait.side == side;
      });
    }
    std::ranges::stable_sort(waits_, {}, &Wait::begin);
  }

  bool HoldsBack(std::uint32_t side) const {
    const auto held = std::ranges::count_if(
        connection_.transfer.waits, [side](const Wait& wait) {
          return wait.kind == WaitKind::kHeldBack && wait.side == side;
        });
    const auto not_held = connection_.transfer.flows[side].small_not_held;
    return static_cast<std::uint64_t>(held) >
           std::uint64_t{kNotHeldShare} * not_held;
  }

  void SetTimes(std::uint32_t index) {
    const Association& association = dialogue_.associations[index];
    AssociationTiming& times = timing_.associations[index];
    times.messages = association.end_message - association.first_message;
    times.requestor = RequestorOf(association);
    if (index == 0) return;
    times.begin = timing_.associations[index - 1].begin;
    if (association.first_pdu == association.end_pdu) return;
    const SpanSweep sweep(connection_, dialogue_, timing_, index);
    times.begin =
        std::clamp(sweep.BeginOf(association.first_pdu), times.begin, end_);
  }

  std::uint32_t RequestorOf(const Association& association) const {
    if (const auto direction = association.RequestorDirection()) {
      return *direction;
    }
    for (std::uint32_t i = association.first_message;
         i < association.end_message; ++i) {
      const DialogueMessage& message = dialogue_.messages[i];
      if (message.IsRequest()) return message.direction;
      if (message.IsAnswer()) return 1 - message.direction;
    }
    return connection_.transport.opener.value_or(0);
  }

  // Of one kind and side, clipped to the association, disjoint and in order.
  std::vector<TimeSpan> WaitsOf(WaitKind kind, std::uint32_t side,
                                const AssociationTiming& times) const {
    std::vector<TimeSpan> spans;
    Microseconds at = times.begin;
    for (const Wait& wait : waits_) {
      if (wait.kind != kind || wait.side != side) continue;
      TimeSpan span;
      span.begin = std::max(timing_.Since(wait.begin), at);
      span.end = std::min(timing_.Since(wait.end), times.end);
      if (span.begin >= span.end) continue;
      span.part = PartOf(kind);
      span.owner = OwnerOf(wait.side, times);
      if (kind == WaitKind::kLossRecovery) span.owner = TimeOwner::kNetwork;
      if (kind == WaitKind::kQuiet) {
        span.part = wait.side == times.requestor ? TimePart::kPreparing
                                                 : TimePart::kThinking;
      }
      at = span.end;
      spans.push_back(span);
    }
    return spans;
  }

  static TimeOwner OwnerOf(std::uint32_t direction,
                           const AssociationTiming& times) {
    return direction == times.requestor ? TimeOwner::kRequestor
                                        : TimeOwner::kAcceptor;
  }

  // What TCP waited for lies above what the messages show, the more certain
  // cause above the less certain.
  void LayWaits(AssociationTiming& times) const {
    const auto lay = [&](WaitKind kind, const Covers& covers) {
      for (const std::uint32_t side : {0u, 1u}) {
        times.spans = Overlay(times.spans, WaitsOf(kind, side, times), covers);
      }
    };
    const auto sender_of = [&](const TimeSpan& span) {
      return OwnerOf(dialogue_.messages[*span.message].direction, times);
    };
    const auto is_sent = [](const TimeSpan& span) {
      return span.part == TimePart::kTransferring && span.message;
    };
    const auto is_connected = [](const TimeSpan& span, const TimeSpan&) {
      return span.part != TimePart::kConnecting;
    };
    lay(WaitKind::kQuiet, [&](const TimeSpan& below, const TimeSpan& over) {
      return is_sent(below) && sender_of(below) == over.owner;
    });
    lay(WaitKind::kHeldBack, is_connected);
    lay(WaitKind::kLossRecovery, is_connected);
    // Only who has something to send waits for room.
    lay(WaitKind::kZeroWindow, [&](const TimeSpan& below,
                                   const TimeSpan& over) {
      if (is_sent(below)) return sender_of(below) != over.owner;
      return below.part == TimePart::kPreparing && below.owner != over.owner;
    });
  }

  void CountHeldBack(AssociationTiming& times) const {
    for (const Wait& wait : waits_) {
      const Microseconds begin = timing_.Since(wait.begin);
      if (wait.kind != WaitKind::kHeldBack || begin < times.begin ||
          begin >= times.end) {
        continue;
      }
      HeldBack& held = times.held_back[wait.side];
      const Microseconds length = timing_.Since(wait.end) - begin;
      if (held.count++ == 0) held.first_frame = wait.frame;
      held.sum += length;
      held.longest = std::max(held.longest, length);
      const Nanoseconds trip =
          connection_.transfer.flows[1 - wait.side].LeastTrip().value_or(0);
      if (wait.acknowledged_after >= trip / kMillisecond + kDelayed) {
        ++held.delayed;
      }
    }
  }

  const Connection& connection_;
  const Dialogue& dialogue_;
  ConnectionTiming& timing_;
  std::vector<Wait> waits_;
  Microseconds end_ = 0;
};

}  // namespace

ConnectionTiming TimeConnection(const Connection& connection) {
  ConnectionTiming timing;
  timing.start = connection.transfer.first;
  const Dialogue* const dialogue = DialogueOf(connection);
  if (dialogue == nullptr) return timing;
  timing.messages = TimeMessages(connection, *dialogue);
  TimingMaker(connection, *dialogue, timing).Run();
  timing.limits = TimingLimits(connection);
  return timing;
}

Nanoseconds Percentile(const std::vector<Nanoseconds>& values, int percent) {
  if (values.empty()) return 0;
  const std::size_t rank =
      (values.size() * static_cast<std::size_t>(percent) + 99) / 100;
  return values[std::max<std::size_t>(rank, 1) - 1];
}

}  // namespace host
