#include "host/findings/rules.h"
#include "host/streams/pdu_header.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// Begins with what opens an association, so that nothing before it is missed.
bool BeginsWithAssociation(const SceneConnection& at) {
  if (at.dialogue == nullptr || at.dialogue->associations.empty()) return false;
  const Association& first = at.dialogue->associations.front();
  return first.request.has_value() || first.accept.has_value();
}

void FindOneDirection(const SceneConnection& at, FindingList& list) {
  for (const std::uint32_t direction : {0u, 1u}) {
    const SideFacts& facts = at.Facts(direction);
    const SideFacts& other = at.Facts(1 - direction);
    if (facts.packets != 0 || !other.acknowledged) continue;
    Finding& found =
        list.Add("capture-one-direction",
                 "The capture holds one direction only, what the " +
                     PeerText(at, 1 - direction, nullptr) +
                     " sent: all that the other side sent is missing.");
    SetFrame(*other.last, found);
    found.likeness = std::to_string(direction == at.client);
    return;
  }
}

void FindMissingBeginning(const SceneConnection& at, FindingList& list) {
  const bool begins = at.Facts(0).syn || at.Facts(1).syn;
  if (begins || !at.connection->carries_dicom || BeginsWithAssociation(at)) {
    return;
  }
  Finding& found =
      list.Add("capture-starts-in-the-middle",
               "The capture begins in the middle of the connection of " +
                   at.Address(at.client) + " and " + at.Address(1 - at.client) +
                   ": the association's negotiation is not in it.");
  const auto& first = at.Facts(at.client).first_payload;
  if (first) SetFrame(*first, found);
  found.likeness = "middle";
}

}  // namespace

void FindMissingParts(const Scene&, const SceneConnection& at,
                      FindingList& list) {
  FindOneDirection(at, list);
  std::uint64_t lost = 0, cut = 0, longest_kept = 0;
  std::string by;
  for (const std::uint32_t direction : {0u, 1u}) {
    const SideFacts& facts = at.Facts(direction);
    lost += facts.packets != 0 ? facts.lost_bytes : 0;
    cut += facts.cut_packets;
    longest_kept += facts.cut_bytes;
    if (facts.lost_bytes != 0 && by.empty()) {
      by = PeerText(at, direction, nullptr);
    }
  }
  if (cut != 0) {
    Finding& found = list.Add("capture-snap-length",
                              "The capture was taken with a snap length: " +
                                  CountText(cut, "packet is", "packets are") +
                                  " cut, " + BytesText(longest_kept) +
                                  " of what was sent are missing.");
    found.likeness = "cut";
  }
  const bool one_sided = at.Facts(0).packets == 0 || at.Facts(1).packets == 0;
  if (lost != 0 && !one_sided) {
    Finding& found =
        list.Add("capture-lost-packets",
                 "The capture has lost packets, the network has not: " +
                     BytesText(lost) + " (first of the " + by +
                     ") are missing that the other side acknowledged.");
    found.likeness = "lost";
  }
  FindMissingBeginning(at, list);
}

void FindOddPackets(const Scene&, const SceneConnection& at,
                    FindingList& list) {
  constexpr std::uint32_t kSomeDuplicates = 5;
  const SideFacts& zero = at.Facts(0);
  const SideFacts& one = at.Facts(1);
  const std::uint64_t packets = zero.packets + one.packets;
  const std::uint32_t duplicates = zero.duplicates + one.duplicates;
  if (duplicates >= kSomeDuplicates && duplicates * 50 >= packets) {
    Finding& found = list.Add(
        "capture-duplicated-frames",
        NumberText(duplicates) + " of " + NumberText(packets + duplicates) +
            " packets are in the capture twice, as a mirror port that copies "
            "both ways makes them.");
    found.likeness = "twice";
  }
  const std::uint32_t offloaded =
      zero.offloaded_packets + one.offloaded_packets;
  if (offloaded != 0) {
    const bool unfinished =
        zero.unfinished_checksums + one.unfinished_checksums != 0;
    Finding& found = list.Add(
        "capture-offload",
        "The capture was taken on one of the hosts, before its network "
        "adapter cut the packets (offload): " +
            CountText(offloaded, "packet is", "packets are") +
            " longer than the other side takes, up to " +
            BytesText(std::max(zero.longest_payload, one.longest_payload)) +
            (unfinished ? ", and checksums are not computed yet." : "."));
    found.likeness = "offload";
  }
}

void FindDamage(const Scene& scene, FindingList& list) {
  if (scene.condition().damage.empty()) return;
  list.BeginConnection(0);
  list.Add("capture-file-damaged", scene.condition().damage);
  list.EndConnection();
}

}  // namespace host
