#include <algorithm>
#include <map>
#include <set>
#include <string_view>

#include "host/dialogue/negotiation.h"
#include "host/dialogue/outcome.h"
#include "host/findings/rules.h"
#include "host/streams/pdu_header.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// What became of one SOP class over all contexts that propose it.
struct ClassResult {
  bool accepted = false;
  bool for_syntax = false;          // refused for its transfer syntaxes
  bool compressed_refused = false;  // a context with compressed ones only was
  bool uncompressed_only = true;    // of those that were accepted
  std::uint32_t refused = 0;
  std::uint8_t result = 0;  // of a refusal
  std::uint8_t id = 0;
  std::uint32_t messages = 0;
  std::set<std::string> proposed;
  std::string chosen;
};

std::map<std::string, ClassResult> ResultsOf(const Association& association) {
  std::map<std::string, ClassResult> results;
  for (const PresentationContext& context : association.contexts) {
    if (!context.proposed || !context.result) continue;
    ClassResult& result = results[context.abstract_syntax];
    result.messages += context.messages;
    const bool compressed =
        std::ranges::none_of(context.transfer_syntaxes, IsUncompressed);
    if (context.IsAccepted()) {
      result.accepted = true;
      result.uncompressed_only &= IsUncompressed(context.chosen_syntax);
      result.chosen = context.chosen_syntax;
      continue;
    }
    ++result.refused;
    result.result = *context.result;
    result.id = context.id;
    result.for_syntax |= context.result == kTransferSyntaxesNotSupported;
    result.compressed_refused |= compressed;
    result.proposed.insert(context.transfer_syntaxes.begin(),
                           context.transfer_syntaxes.end());
  }
  return results;
}

std::string SyntaxesText(const std::set<std::string>& syntaxes) {
  constexpr std::size_t kNamed = 3;
  std::string text;
  std::size_t named = 0;
  for (const std::string& syntax : syntaxes) {
    if (named++ == kNamed) {
      return text + " and " + NumberText(syntaxes.size() - kNamed) + " more";
    }
    text += (text.empty() ? "" : ", ") + UidText(syntax);
  }
  return text;
}

// How the requestor took it: by a proper release, or by going away.
bool EndedBadly(const SceneConnection& at, const Association& association) {
  const Ending ending = EndingOf(at, association);
  const auto requestor = association.RequestorDirection();
  return ending.kind != Ending::Kind::kReleased &&
         ending.kind != Ending::Kind::kNone && requestor == ending.direction;
}

struct Negotiation {
  const Scene& scene;
  const SceneConnection& at;
  const Association& association;
  FindingList& list;

  std::string Acceptor() const {
    return PeerText(at, association.accept->place.direction, &association);
  }
  bool HasMessages() const {
    return association.end_message != association.first_message;
  }

  Finding& Add(std::string_view slug, const std::string& what,
               const std::string& likeness) const {
    Finding& found = list.Add(slug, "The " + Acceptor() + " " + what + ".");
    SetPlace(association.accept->place, found);
    found.likeness = at.Address(1 - at.client) + likeness;
    return found;
  }

  // Of the same acceptor, in another association of the capture.
  std::string AcceptedElsewhere(const std::string& sop_class) const {
    const std::string& address =
        at.Address(association.accept->place.direction);
    for (const Scene::Accepted& other : scene.AcceptedAt(address)) {
      for (const PresentationContext& context : other.association->contexts) {
        if (context.IsAccepted() && context.abstract_syntax == sop_class) {
          return "; in connection " + std::to_string(other.connection + 1) +
                 " it accepted it with " + UidText(context.chosen_syntax);
        }
      }
    }
    return {};
  }

  void NothingAccepted(
      const std::map<std::string, ClassResult>& results) const {
    const auto& [sop_class, result] = *results.begin();
    const std::string why =
        result.for_syntax ? "none of the transfer syntaxes (" +
                                SyntaxesText(result.proposed) + ") suits it"
                          : ContextResultText(result.result);
    Finding& found =
        Add("no-context-accepted",
            "accepted the association but none of its " +
                CountText(association.contexts.size(), "presentation context",
                          "presentation contexts") +
                ": " + UidText(sop_class) + ": " + why +
                AcceptedElsewhere(sop_class) +
                (HasMessages() ? "" : "; so nothing was sent"),
            sop_class);
    found.context = result.id;
    if (results.size() > 1) {
      found.evidence.push_back(NumberText(results.size()) +
                               " SOP classes were proposed.");
    }
  }

  // Nothing was sent in the class, though it was accepted.
  void UncompressedOnly(const std::string& sop_class,
                        const ClassResult& result) const {
    Add("compressed-only-implicit-accepted",
        "accepted " + UidText(sop_class) + " with " + UidText(result.chosen) +
            " only, not with " + SyntaxesText(result.proposed) +
            "; the requestor then sent nothing: likely its data are "
            "compressed and it does not convert them",
        sop_class)
        .context = result.id;
  }

  void RefusedClass(const std::string& sop_class,
                    const ClassResult& result) const {
    const bool fatal = EndedBadly(at, association) ||
                       (!HasMessages() && !association.release_request);
    const std::string name = UidText(sop_class);
    Finding& found =
        result.for_syntax
            ? Add("context-refused-transfer-syntax",
                  "supports " + name + ", but not with " +
                      SyntaxesText(result.proposed) +
                      AcceptedElsewhere(sop_class),
                  sop_class)
            : Add("context-refused-abstract-syntax",
                  "refused " + name + " (" + ContextResultText(result.result) +
                      "), so nothing of it could be sent" +
                      AcceptedElsewhere(sop_class),
                  sop_class);
    found.context = result.id;
    if (fatal) found.severity = Severity::kFault;
  }
};

}  // namespace

void FindRefusedContexts(const Scene& scene, const SceneConnection& at,
                         FindingList& list) {
  if (at.dialogue == nullptr) return;
  for (const Association& association : at.dialogue->associations) {
    if (!association.request || !association.accept ||
        !IsRead(*at.dialogue, association.request->place) ||
        !IsRead(*at.dialogue, association.accept->place)) {
      continue;
    }
    const Negotiation negotiation{scene, at, association, list};
    const auto results = ResultsOf(association);
    if (results.empty()) continue;
    const auto accepted = [](const auto& entry) {
      return entry.second.accepted;
    };
    if (std::ranges::none_of(results, accepted)) {
      negotiation.NothingAccepted(results);
      continue;
    }
    const bool unused = !negotiation.HasMessages();
    for (const auto& [sop_class, result] : results) {
      const bool gave_up = result.accepted && result.messages == 0 && unused;
      if (gave_up && result.uncompressed_only && result.compressed_refused) {
        negotiation.UncompressedOnly(sop_class, result);
      } else if (!result.accepted) {
        negotiation.RefusedClass(sop_class, result);
      } else if (result.refused != 0) {
        negotiation
            .Add("class-accepted-in-another-context",
                 "refused " + UidText(sop_class) + " with " +
                     SyntaxesText(result.proposed) +
                     " but accepted it in another context with " +
                     UidText(result.chosen),
                 sop_class)
            .context = result.id;
      }
    }
  }
}

namespace {

// What so short PDUs cost where many were sent to this side, else nothing.
std::string CostOfShortPdus(const Dialogue& dialogue,
                            const Association& association,
                            std::uint32_t direction) {
  constexpr std::uint64_t kMany = 100;
  constexpr std::uint64_t kHeaders = kPduHeaderBytes + kPdvHeaderBytes;
  std::uint64_t count = 0, bytes = 0;
  for (std::uint32_t i = association.first_pdu; i < association.end_pdu; ++i) {
    const DialoguePdu& pdu = dialogue.pdus[i];
    if (pdu.type != kPDataTf || pdu.direction == direction) continue;
    ++count;
    bytes += kPduHeaderBytes + pdu.length;
  }
  if (count < kMany) return {};
  return ": " + NumberText(count) + " PDUs were sent to it, and " +
         NumberText(
             std::min(count * kHeaders * 100 / bytes, std::uint64_t{100})) +
         " % of their bytes are headers";
}

void NoteMaximumLength(const SceneConnection& at,
                       const Association& association,
                       const AssociationSide& side, FindingList& list) {
  constexpr std::uint32_t kTiny = 4096;
  if (!side.max_pdu_bytes || *side.max_pdu_bytes >= kTiny) return;
  const std::uint32_t most = *side.max_pdu_bytes;
  Finding& found =
      list.Add(most == 0 ? "maximum-length-unlimited" : "maximum-length-tiny",
               "The " + PeerText(at, side.place.direction, &association) +
                   " announced a maximum PDU length of " + NumberText(most) +
                   (most == 0 ? ", that is, no limit."
                              : " bytes only" +
                                    CostOfShortPdus(*at.dialogue, association,
                                                    side.place.direction) +
                                    "."));
  SetPlace(side.place, found);
  found.likeness = std::to_string(most) + "\n" + at.Address(1 - at.client);
}

void NoteMissingImplicit(const SceneConnection& at,
                         const Association& association, FindingList& list) {
  std::set<std::string_view> with_implicit;
  for (const PresentationContext& context : association.contexts) {
    if (std::ranges::find(context.transfer_syntaxes, kImplicitVrLittleEndian) !=
        context.transfer_syntaxes.end()) {
      with_implicit.insert(context.abstract_syntax);
    }
  }
  for (const PresentationContext& context : association.contexts) {
    const bool native =
        std::ranges::any_of(context.transfer_syntaxes, IsUncompressed);
    if (!context.proposed || !native ||
        with_implicit.contains(context.abstract_syntax)) {
      continue;
    }
    Finding& found = list.Add(
        "implicit-not-proposed",
        "The " +
            PeerText(at, association.request->place.direction, &association) +
            " does not offer implicit VR little endian, the default that "
            "every side has to know, for " +
            UidText(context.abstract_syntax) +
            (context.IsAccepted() ? "; the acceptor took what it offers."
                                  : "."));
    SetPlace(association.request->place, found);
    found.likeness = at.Address(1 - at.client);
    return;
  }
}

}  // namespace

void FindNegotiationNotes(const Scene&, const SceneConnection& at,
                          FindingList& list) {
  if (at.dialogue == nullptr) return;
  for (const Association& association : at.dialogue->associations) {
    if (association.request &&
        IsRead(*at.dialogue, association.request->place)) {
      NoteMaximumLength(at, association, *association.request, list);
      NoteMissingImplicit(at, association, list);
    }
    if (association.accept) {
      NoteMaximumLength(at, association, *association.accept, list);
    }
  }
}

}  // namespace host
