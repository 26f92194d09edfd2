#include <utility>

#include "host/findings/rules.h"
#include "host/streams/pdu_header.h"
#include "host/text/number_text.h"

namespace host {

void FindUnnegotiated(const Scene&, const SceneConnection& at,
                      FindingList& list) {
  if (at.dialogue == nullptr) return;
  const Dialogue& dialogue = *at.dialogue;
  const Association* before = nullptr;
  for (const Association& association : dialogue.associations) {
    const Association* const last = std::exchange(before, &association);
    if (association.request || association.first_pdu == association.end_pdu) {
      continue;
    }
    const WirePlace place = dialogue.PlaceOfPdu(association.first_pdu);
    if (FollowsLoss(dialogue, place) || at.LacksBytes(0) || at.LacksBytes(1)) {
      continue;
    }
    const bool is_first = last == nullptr;
    if (is_first && !at.Facts(place.direction).syn) continue;
    const std::string what =
        PduTypeText(dialogue.pdus[association.first_pdu].type);
    Finding& found = list.Add(
        "pdu-unexpected",
        "The " + PeerText(at, place.direction, last) + " sent " + what +
            (is_first ? " before any association was asked for."
                      : " in an association, where it has no place."));
    SetPlace(place, found);
    found.likeness = at.Address(1 - at.client) + what;
    return;
  }
}

namespace {

// The bytes of a PDU that has no end: the whole claimed length and what came.
std::string PartText(const StreamEnd& end) {
  return NumberText(end.unfinished_captured) + " of " +
         BytesText(std::uint64_t{kPduHeaderBytes} + end.unfinished_length);
}

void JudgeUnfinished(const SceneConnection& at, std::uint32_t direction,
                     const Ending& ending, FindingList& list) {
  // Who has sent nothing more for so long had nothing more to send.
  constexpr Nanoseconds kHasNoMore = 1'000'000'000;
  constexpr std::uint32_t kNoPduIsSoLong = 1u << 28;
  const StreamEnd& end = at.dialogue->ends[direction];
  const Association* const association =
      at.dialogue->associations.empty() ? nullptr
                                        : &at.dialogue->associations.back();
  const std::string peer = "The " + PeerText(at, direction, association);
  const std::string type =
      end.unfinished_type == 0 ? "a PDU" : PduTypeText(end.unfinished_type);
  if (end.unfinished_length >= kNoPduIsSoLong) {
    Finding& found = list.Add(
        "pdu-bad-length",
        peer + " sent " + type + " that claims " +
            BytesText(std::uint64_t{kPduHeaderBytes} + end.unfinished_length) +
            ": its length is wrong; " + BytesText(end.unfinished_captured) +
            " of it came.");
    SetPlace(ending, found);
  } else if (ending.silence >= kHasNoMore && end.unfinished_type != 0) {
    Finding& found = list.Add(
        "pdu-bad-length",
        peer + " sent " + type + " of which only " + PartText(end) +
            " came in " + DurationText(ending.silence) +
            ": likely its length is wrong, and the other side waited for the "
            "rest.");
    SetPlace(ending, found);
  } else if (ending.direction == direction) {
    Finding& found = list.Add("ended-inside-pdu",
                              peer +
                                  (ending.kind == Ending::Kind::kReset
                                       ? " reset the connection (RST)"
                                       : " closed the connection (FIN)") +
                                  " in the middle of " + type + ": " +
                                  PartText(end) + " came.");
    SetPlace(ending, found);
  }
}

}  // namespace

void FindUnfinishedPdu(const Scene&, const SceneConnection& at,
                       FindingList& list) {
  if (at.dialogue == nullptr) return;
  const Ending ending = ClosingOf(at);
  if (ending.kind == Ending::Kind::kNone) return;
  for (const std::uint32_t direction : {0u, 1u}) {
    if (at.dialogue->ends[direction].unfinished_pdu &&
        !at.LacksBytes(direction)) {
      JudgeUnfinished(at, direction, ending, list);
    }
  }
}

void FindBadTitles(const Scene&, const SceneConnection& at, FindingList& list) {
  if (at.dialogue == nullptr) return;
  for (const Association& association : at.dialogue->associations) {
    if (!association.request || association.request->is_damaged) continue;
    const AssociationSide& side = *association.request;
    const bool called = side.called_ae_title.empty();
    if (!called && !side.calling_ae_title.empty()) continue;
    Finding& found =
        list.Add("ae-title-bad",
                 "The " + PeerText(at, side.place.direction, &association) +
                     (called ? " names no called AE title: it is empty."
                             : " does not say its own AE title: it is empty."));
    if (association.accept) found.severity = Severity::kWarning;
    SetPlace(side.place, found);
    found.likeness = at.Address(1 - at.client);
  }
}

}  // namespace host
