#include "host/findings/pair_times.h"

#include <algorithm>
#include <string>

namespace host {
namespace {

std::string HostOf(const std::string& address) {
  return address.substr(0, address.rfind(':'));
}

// The medians of the four quarters.
std::array<Nanoseconds, 4> Quarters(const Latencies& values) {
  std::array<Nanoseconds, 4> medians{};
  const std::size_t length = values.size() / 4;
  for (std::size_t i = 0; i < 4; ++i) {
    const auto begin = values.begin() + static_cast<std::ptrdiff_t>(i * length);
    Latencies quarter(begin, begin + static_cast<std::ptrdiff_t>(length));
    std::ranges::sort(quarter);
    medians[i] = Percentile(quarter, 50);
  }
  return medians;
}

// Adds one connection's times to those of its pair.
class PairTaker {
 public:
  PairTaker(const SceneConnection& at, PairTimes& pair)
      : at_(at),
        dialogue_(*at.dialogue),
        timing_(TimeConnection(*at.connection)),
        pair_(pair) {}

  void Take() {
    if (pair_.first == nullptr) {
      pair_.first = &at_;
      pair_.association = &dialogue_.associations.front();
    }
    if (pair_.connections.size() < Finding::kConnectionsKept) {
      pair_.connections.push_back(at_.index);
    }
    for (std::uint32_t i = 0; i < dialogue_.associations.size(); ++i) {
      TakeAssociation(dialogue_.associations[i], timing_.associations[i]);
    }
    TakeFlows(timing_.associations.front().requestor);
  }

 private:
  void TakeAssociation(const Association& association,
                       const AssociationTiming& times) {
    ++pair_.associations;
    pair_.whole += times.Duration();
    for (const TimeSpan& span : times.spans) pair_.sums.Add(span);
    if (pair_.sub_operations == 0) {
      pair_.moving = &at_;
      pair_.moved_by = times.sub_operations.request;
    }
    pair_.sub_operations += times.sub_operations.sum;
    for (const std::uint32_t side : {0u, 1u}) {
      HeldBack& all = pair_.held_back[side == times.requestor ? 0 : 1];
      const HeldBack& held = times.held_back[side];
      if (all.count == 0) all.first_frame = held.first_frame;
      all.count += held.count;
      all.sum += held.sum;
      all.delayed += held.delayed;
      all.longest = std::max(all.longest, held.longest);
    }
    TakeMessages(association, times);
  }

  void TakeMessages(const Association& association,
                    const AssociationTiming& times) {
    std::map<std::pair<std::uint16_t, std::uint32_t>, Latencies> by_command;
    std::uint32_t objects = 0;
    for (std::uint32_t i = association.first_message;
         i < association.end_message; ++i) {
      const DialogueMessage& message = dialogue_.messages[i];
      if (!message.IsRequest()) continue;
      objects += message.command_field == kCStoreRq ? 1 : 0;
      const auto& latency = timing_.messages[i].answered_after;
      if (!latency) continue;
      const std::uint32_t answering = 1 - message.direction;
      by_command[{message.command_field, answering}].push_back(*latency);
      pair_
          .latencies[{message.command_field, answering == times.requestor
                                                 ? TimeOwner::kRequestor
                                                 : TimeOwner::kAcceptor}]
          .push_back(*latency);
    }
    if (objects == 1 && times.messages <= 2) ++pair_.with_one_object;
    for (const auto& [key, values] : by_command) {
      TakeGrowth(association, key, values);
    }
  }

  void TakeGrowth(const Association& association,
                  const std::pair<std::uint16_t, std::uint32_t>& key,
                  const Latencies& values) {
    constexpr std::size_t kEnough = 12;
    constexpr Nanoseconds kNoticed = 20'000'000;
    if (pair_.growth || values.size() < kEnough) return;
    const auto medians = Quarters(values);
    if (!std::ranges::is_sorted(medians) || medians[3] < 2 * medians[0] ||
        medians[3] - medians[0] < kNoticed) {
      return;
    }
    pair_.growth = {&association,  &at_,       key.first, key.second,
                    values.size(), medians[0], medians[3]};
  }

  void TakeFlows(std::uint32_t requestor) {
    const TransferFacts& transfer = at_.connection->transfer;
    Nanoseconds trip = 0;
    for (const std::uint32_t side : {0u, 1u}) {
      const FlowFacts& flow = transfer.flows[side];
      const std::size_t role = side == requestor ? 0 : 1;
      pair_.bytes[role] += flow.sent_bytes;
      pair_.limited[role] += flow.window_limited;
      pair_.largest_window[role] =
          std::max(pair_.largest_window[role], flow.largest_window);
      trip += flow.LeastTrip().value_or(0);
    }
    if (pair_.trip == 0) pair_.trip = trip;
  }

  const SceneConnection& at_;
  const Dialogue& dialogue_;
  const ConnectionTiming timing_;
  PairTimes& pair_;
};

}  // namespace

std::vector<PairTimes> TimesByPair(const Scene& scene) {
  std::map<std::pair<std::string, std::string>, std::size_t> known;
  std::vector<PairTimes> pairs;
  for (const SceneConnection& at : scene.connections()) {
    if (!at.concerns_dicom || at.dialogue == nullptr ||
        at.dialogue->associations.empty()) {
      continue;
    }
    const auto [pair, is_new] = known.try_emplace(
        {HostOf(at.Address(at.client)), at.Address(1 - at.client)},
        pairs.size());
    if (is_new) pairs.emplace_back();
    PairTaker(at, pairs[pair->second]).Take();
  }
  return pairs;
}

}  // namespace host
