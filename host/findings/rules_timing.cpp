#include <algorithm>
#include <utility>

#include "host/findings/pair_times.h"
#include "host/findings/rules.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr Microseconds kMillisecond = 1000;
constexpr Microseconds kSecond = 1'000'000;
// What costs less is nobody's trouble, what costs so much is a warning.
constexpr Microseconds kWorthTelling = kSecond / 5;
constexpr Microseconds kWarned = 10 * kSecond;

std::string Text(Microseconds time) { return DurationText(time * 1000); }

// Tells what cost the time of one pair.
class PairReport {
 public:
  PairReport(const PairTimes& pair, FindingList& list)
      : pair_(pair),
        list_(list),
        requestor_(pair.association->RequestorDirection().value_or(
            pair.first->client)) {}

  void Run() {
    for (const std::size_t role : {0u, 1u}) ReportHeldBack(role);
    ReportOneObject();
    for (const std::size_t role : {0u, 1u}) ReportWindow(role);
    ReportGrowth();
    ReportParts();
  }

 private:
  std::string Peer(std::size_t role) const {
    const std::uint32_t direction = role == 0 ? requestor_ : 1 - requestor_;
    const std::string toolkit = ToolkitOf(*pair_.association, direction);
    return PeerText(*pair_.first, direction, pair_.association) + toolkit +
           (toolkit.empty() ? "" : ",");
  }

  // "20.1 of 31.4 s" of what was not idle, in so many associations.
  std::string Share(Microseconds time) const {
    std::string text = Text(time) + " of " + Text(pair_.Busy());
    if (pair_.associations > 1) {
      text += " in " + NumberText(pair_.associations) + " associations";
    }
    return text;
  }

  // Whether the time is at least one of `parts` of all, and worth telling.
  bool Counts(Microseconds time, int parts,
              Microseconds least = kWorthTelling) const {
    return time >= least && time * parts >= pair_.Busy();
  }

  Finding& Add(std::string_view slug, std::string sentence,
               Microseconds time) const {
    Finding& found = list_.Add(slug, std::move(sentence));
    found.count = pair_.associations;
    found.connections = pair_.connections;
    if (Counts(time, 4, kWarned)) found.severity = Severity::kWarning;
    return found;
  }

  void ReportHeldBack(std::size_t role) const {
    const HeldBack& held = pair_.held_back[role];
    if (!Counts(held.sum, 10)) return;
    Finding& found = Add(
        "packets-held-back",
        Share(held.sum) + " are " + CountText(held.count, "stall", "stalls") +
            " of " + Text(held.sum / held.count) + ": the " + Peer(role) +
            " sends a part of a message and holds the next one back until "
            "the " +
            Peer(1 - role) + " has acknowledged it" +
            (held.delayed * 2 > held.count ? ", which that side delays" : "") +
            ": set TCP_NODELAY at the " +
            (role == 0 ? "requestor" : "acceptor") + ".",
        held.sum);
    found.first_frame = found.last_frame = held.first_frame;
  }

  void ReportOneObject() const {
    constexpr std::uint64_t kSeveral = 5;
    const Microseconds cost = pair_.sums.Of(TimePart::kConnecting) +
                              pair_.sums.Of(TimePart::kNegotiating) +
                              pair_.sums.Of(TimePart::kReleasing);
    if (pair_.with_one_object < kSeveral ||
        pair_.with_one_object * 5 < pair_.associations * 4 ||
        !Counts(cost, 5)) {
      return;
    }
    Add("association-per-object",
        "The " + Peer(0) + " opens an association for each object: in " +
            NumberText(pair_.associations) +
            " associations connecting, negotiating and releasing took " +
            Text(cost) + " of " + Text(pair_.Busy()) + ".",
        cost);
  }

  bool IsHeldUp(std::size_t role) const {
    // Below, it is the receiver's program that does not read in time.
    return pair_.trip >= 2 * kMillisecond * 1000 &&
           Counts(pair_.limited[role] / 1000, 4);
  }
  bool HasSmallWindow() const { return IsHeldUp(0) || IsHeldUp(1); }

  void ReportWindow(std::size_t role) const {
    if (!IsHeldUp(role)) return;
    const Microseconds limited = pair_.limited[role] / 1000;
    Add("window-too-small",
        "The " + Peer(role) + " waited " + Share(limited) +
            " until the window of the " + Peer(1 - role) +
            " had room again: it is " +
            BytesText(pair_.largest_window[1 - role]) +
            " at most, and a round trip takes " + DurationText(pair_.trip) +
            ".",
        limited);
  }

  void ReportGrowth() const {
    if (!pair_.growth) return;
    const auto& growth = *pair_.growth;
    Finding& found = Add(
        "answers-slow-down",
        "The " + PeerText(*growth.at, growth.direction, growth.association) +
            " answers slower and slower: of " + NumberText(growth.answers) +
            " answers to " + CommandText(growth.command) +
            " the first quarter took " + DurationText(growth.from) +
            ", the last one " + DurationText(growth.to) +
            " (medians): it likely searches or grows something with each.",
        0);
    found.connection = growth.at->index;
  }

  // The part that took half of the time, if there is one: what to look at
  // first.
  void ReportParts() const {
    const TimeSums& sums = pair_.sums;
    for (const TimeOwner owner :
         {TimeOwner::kAcceptor, TimeOwner::kRequestor}) {
      const Microseconds thinking = sums.Of(TimePart::kThinking, owner);
      if (Counts(thinking, 2, kSecond)) ReportSlowAnswers(owner, thinking);
    }
    const Microseconds preparing = sums.Of(TimePart::kPreparing);
    if (Counts(preparing, 2, kSecond)) {
      Add("requests-slow",
          "Look at the requestor first: the " + Peer(0) + " took " +
              Share(preparing) +
              " to make its requests, while nothing was open.",
          0);
    }
    const Microseconds transferring = sums.Of(TimePart::kTransferring);
    if (Counts(transferring, 2, kSecond) && !HasSmallWindow()) {
      const std::uint64_t bytes = pair_.bytes[0] + pair_.bytes[1];
      const auto rate = bytes * 1000 / static_cast<std::uint64_t>(transferring);
      Add("transfer-slow",
          "Look at the network first: transferring " + BytesText(bytes) +
              " took " + Share(transferring) + ", " + NumberText(rate) +
              " kB a second.",
          0);
    }
    ReportEdges();
  }

  void ReportSlowAnswers(TimeOwner owner, Microseconds thinking) const {
    const std::size_t role = owner == TimeOwner::kRequestor ? 0 : 1;
    std::string commands;
    for (const auto& [key, latencies] : pair_.latencies) {
      if (key.second != owner) continue;
      Latencies sorted = latencies;
      std::ranges::sort(sorted);
      commands += (commands.empty() ? ": " : "; ") + CommandText(key.first) +
                  " " + CountText(sorted.size(), "time, ", "times, ") +
                  DurationText(Percentile(sorted, 50)) + " at the median, " +
                  DurationText(sorted.back()) + " at most";
    }
    // Where most of it may be somebody else's, nobody comes first.
    const bool moves =
        owner == TimeOwner::kAcceptor && pair_.sub_operations * 2 > thinking;
    Add("answers-slow",
        (moves ? "The "
               : "Look at the " + std::string(OwnerText(owner)) +
                     " first: the ") +
            Peer(role) + " took " + Share(thinking) + " to answer" + commands +
            (moves ? "; " + Text(pair_.sub_operations) + " of it are between " +
                         SubOperationsText(*pair_.moving->dialogue,
                                           pair_.moved_by)
                   : "") +
            ".",
        0);
  }

  // Before and behind all messages.
  void ReportEdges() const {
    struct Edge {
      TimePart part;
      TimeOwner owner;
      const char* text;
    };
    constexpr Edge kEdges[] = {
        {TimePart::kConnecting, TimeOwner::kNetwork,
         "until the TCP connection was there"},
        {TimePart::kNegotiating, TimeOwner::kAcceptor,
         "until the acceptor answered the A-ASSOCIATE-RQ"},
        {TimePart::kReleasing, TimeOwner::kAcceptor,
         "until the acceptor answered the A-RELEASE-RQ"},
    };
    for (const Edge& edge : kEdges) {
      const Microseconds time = pair_.sums.Of(edge.part, edge.owner);
      if (!Counts(time, 4, kSecond * 9 / 10)) continue;
      Add("association-slow",
          "With the " + Peer(1) + " it took " + Share(time) + " " + edge.text +
              ".",
          0);
    }
  }

  const PairTimes& pair_;
  FindingList& list_;
  const std::uint32_t requestor_;
};

}  // namespace

void FindTimes(const Scene& scene, FindingList& list) {
  const std::vector<PairTimes> pairs = TimesByPair(scene);
  for (const PairTimes& pair : pairs) {
    list.BeginConnection(pair.first->index);
    PairReport(pair, list).Run();
    list.EndConnection();
  }
}

}  // namespace host
