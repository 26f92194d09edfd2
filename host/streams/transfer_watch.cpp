#include "host/streams/transfer_watch.h"

#include <algorithm>

#include "host/streams/sequence_number.h"
#include "host/streams/tcp_options.h"

namespace host {
namespace {

constexpr Nanoseconds kMillisecond = 1'000'000;
constexpr std::uint32_t kTimestampBytes = 12;  // in the header of each packet
constexpr std::uint8_t kMostShift = 14;

}  // namespace

void TransferWatch::Add(const WatchedPacket& watched) {
  const Packet packet{watched, Clock(watched.frame)};
  const TcpHeader& header = packet.header;
  if (header.Has(kRst)) {
    ++facts_.flows[packet.direction].resets;
    return;
  }
  if (header.Has(kSyn)) NoteSyn(packet);
  if (header.Has(kAck)) {
    NoteConnected(packet);
    NoteAcknowledgement(packet);
  }
  NoteWindow(packet);
  NoteData(packet);
}

Nanoseconds TransferWatch::Clock(const TcpFrame& frame) {
  if (!begun_) {
    begun_ = true;
    facts_.first = facts_.last = frame.time;
  }
  auto& holds = facts_.holds;
  const bool holding = !holds.empty() && holds.back().until > newest_frame_;
  newest_frame_ = facts_.last_frame = frame.number;
  if (frame.time >= facts_.last) {
    facts_.last = frame.time;
    return frame.time;
  }
  if (facts_.last - frame.time > facts_.most_set_back) {
    facts_.most_set_back = facts_.last - frame.time;
    facts_.set_back_frame = frame.number;
  }
  if (!holding) holds.push_back({frame.number, 0, facts_.last});
  holds.back().until = frame.number + 1;
  return facts_.last;
}

void TransferWatch::NoteSyn(const Packet& packet) {
  const TcpOptions options = ReadTcpOptions(packet.frame);
  FlowFacts& flow = facts_.flows[packet.direction];
  Side& side = sides_[packet.direction];
  Side& other = sides_[1 - packet.direction];
  flow.segment_limit = options.segment_limit;
  flow.window_scale = options.window_scale;
  flow.timestamps = options.timestamps;
  // Which of several SYNs was answered is not known.
  side.syn_time.reset();
  if (side.syns++ == 0) {
    side.syn_time = packet.time;
  } else {
    ++flow.timed_out;
  }
  side.next = packet.begin;
  if (!packet.header.Has(kAck)) {
    client_ = packet.direction;
  } else {
    client_ = 1 - packet.direction;
    if (other.syn_time && side.syns == 1) {
      flow.handshake_trip = packet.time - *other.syn_time;
    }
  }
}

void TransferWatch::NoteConnected(const Packet& packet) {
  if (facts_.connected != 0 || packet.header.Has(kSyn) ||
      packet.direction != client_) {
    return;
  }
  facts_.connected = packet.time;
  const auto& answered = sides_[1 - packet.direction].syn_time;
  if (answered) {
    facts_.flows[packet.direction].handshake_trip = packet.time - *answered;
  }
}

void TransferWatch::NoteAcknowledgement(const Packet& packet) {
  Side& sender = sides_[1 - packet.direction];
  const std::uint32_t number = packet.header.acknowledgement;
  if (!sender.acknowledged || Distance(*sender.acknowledged, number) > 0) {
    Advance(packet);
  } else if (number == *sender.acknowledged && packet.payload == 0 &&
             packet.IsPlain()) {
    NoteSameAcknowledgement(packet);
  }
  if (packet.payload != 0) sender.release.reset();
}

void TransferWatch::Advance(const Packet& packet) {
  Side& sender = sides_[1 - packet.direction];
  const std::uint32_t number = packet.header.acknowledgement;
  while (sender.sample_count != 0) {
    const Sample& sample = sender.samples[sender.first_sample];
    if (Distance(sample.end, number) < 0) break;
    if (sample.end == number) {
      facts_.flows[packet.direction].data_trips.Add(packet.time - sample.sent);
    }
    sender.first_sample = (sender.first_sample + 1) % Side::kSamples;
    --sender.sample_count;
  }
  sender.acknowledged = number;
  if (sender.next && Distance(*sender.next, number) > 0) sender.next = number;
  sender.advanced = sender.progressed = packet.time;
  sides_[packet.direction].repeats = 0;
  if (sender.recovery && Distance(sender.recovery->end, number) >= 0) {
    EndRecovery(packet);
  }
  sender.release.reset();
  if (packet.payload == 0 && packet.IsPlain() && number == sender.next) {
    sender.release = Release{sender.newest, packet.time};
  }
}

void TransferWatch::EndRecovery(const Packet& packet) {
  FlowFacts& flow = facts_.flows[1 - packet.direction];
  auto& recovery = sides_[1 - packet.direction].recovery;
  const auto twice = ReadTcpOptions(packet.frame).selective;
  if (twice && Distance(*twice, packet.header.acknowledgement) > 0) {
    // The receiver says that it had the data: nothing was lost.
    --(recovery->fast ? flow.fast : flow.timed_out);
    ++flow.spurious;
  } else {
    AddWait(WaitKind::kLossRecovery, 1 - packet.direction,
            *flow.recovering_since, packet);
  }
  flow.recovering_since.reset();
  recovery.reset();
}

void TransferWatch::NoteSameAcknowledgement(const Packet& packet) {
  Side& receiver = sides_[packet.direction];
  const Side& sender = sides_[1 - packet.direction];
  FlowFacts& flow = facts_.flows[packet.direction];
  if (!packet.window) return;
  const std::uint32_t window = std::uint32_t{*packet.window}
                               << WindowShift(packet.direction).value_or(0);
  if (receiver.window && window != *receiver.window) {
    if (window != 0) ++flow.window_updates;
  } else if (window != 0 && !sender.probed && packet.begin == receiver.next) {
    ++flow.repeated_acknowledgements;
    ++receiver.repeats;
  }
}

std::optional<std::uint8_t> TransferWatch::WindowShift(
    std::uint32_t side) const {
  if (!sides_[0].syns || !sides_[1].syns) return {};
  const auto& shift = facts_.flows[side].window_scale;
  if (!shift || !facts_.flows[1 - side].window_scale) return 0;
  return std::min(*shift, kMostShift);
}

void TransferWatch::NoteWindow(const Packet& packet) {
  if (!packet.window || packet.header.Has(kSyn)) return;
  Side& side = sides_[packet.direction];
  FlowFacts& flow = facts_.flows[packet.direction];
  const std::uint32_t window = std::uint32_t{*packet.window}
                               << WindowShift(packet.direction).value_or(0);
  side.window = window;
  flow.largest_window = std::max(flow.largest_window, window);
  Side& sender = sides_[1 - packet.direction];
  if (window == 0) {
    if (!packet.header.Has(kFin)) ++flow.zero_windows;
    if (!flow.closed_since) flow.closed_since = packet.time;
    sender.limited_since.reset();
    return;
  }
  if (flow.closed_since) {
    AddWait(WaitKind::kZeroWindow, packet.direction, *flow.closed_since,
            packet);
    flow.closed_since.reset();
    sender.release.reset();  // what it sends now waited for the window
  }
  NoteRoom(1 - packet.direction, packet.time);
}

void TransferWatch::NoteRoom(std::uint32_t sender, Nanoseconds time) {
  Side& side = sides_[sender];
  const auto& window = sides_[1 - sender].window;
  if (!side.limited_since || side.limited_until || !window) return;
  if (InFlight(sender) + FullPayload(sender) <= *window) {
    side.limited_until = time;
  }
}

std::uint32_t TransferWatch::FullPayload(std::uint32_t side) const {
  const auto& limit = facts_.flows[1 - side].segment_limit;
  if (!limit) return std::max(sides_[side].largest, kLeastFull);
  const bool stamped = facts_.flows[0].timestamps && facts_.flows[1].timestamps;
  const std::uint32_t header = stamped ? kTimestampBytes : 0;
  return *limit > header ? *limit - header : 1;
}

std::uint32_t TransferWatch::InFlight(std::uint32_t side) const {
  const Side& one = sides_[side];
  if (!one.next || !one.acknowledged) return 0;
  return static_cast<std::uint32_t>(
      std::max(Distance(*one.acknowledged, *one.next), 0));
}

void TransferWatch::AddWait(WaitKind kind, std::uint32_t side,
                            Nanoseconds begin, const Packet& ends,
                            Nanoseconds acknowledged) {
  Wait wait;
  wait.begin = begin;
  wait.end = ends.time;
  wait.frame = ends.frame.number;
  wait.kind = kind;
  wait.side = static_cast<std::uint8_t>(side);
  if (acknowledged != 0) {
    wait.acknowledged_after = static_cast<std::uint16_t>(std::min<Nanoseconds>(
        (acknowledged - begin) / kMillisecond, UINT16_MAX));
  }
  facts_.waits.push_back(wait);
}

}  // namespace host
