#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "host/dialogue/outcome.h"
#include "host/findings/rules.h"
#include "host/streams/pdu_header.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// What a sentence about an irregularity can name.
struct Case {
  const SceneConnection& at;
  const Irregularity& what;
  const Association* association;  // or null

  std::string ContextText(std::uint64_t id) const {
    std::string text = "presentation context " + std::to_string(id);
    if (association == nullptr) return text;
    const PresentationContext* const context =
        association->FindContext(static_cast<std::uint8_t>(id));
    if (context == nullptr || context->abstract_syntax.empty()) return text;
    return text + " (" + UidText(context->abstract_syntax) + ")";
  }
  std::string PduText() const {
    const auto& pdus = at.dialogue->pdus;
    return what.place.pdu < pdus.size() ? PduTypeText(pdus[what.place.pdu].type)
                                        : std::string("a PDU");
  }
  // "the data set of a C-STORE".
  std::string MessageText() const {
    if (!what.message || *what.message >= at.dialogue->messages.size()) {
      return "a message";
    }
    const DialogueMessage& message = at.dialogue->messages[*what.message];
    const std::string command = CommandText(message.command_field);
    return OneCommandText(command) + (message.IsAnswer() ? " answer" : "");
  }
};

std::string HexText(std::uint64_t value, int digits) {
  char text[20];
  std::snprintf(text, sizeof text, "%0*lXh", digits,
                static_cast<unsigned long>(value));
  return text;
}

std::string LengthText(const Case& c) {
  if (c.what.expected != 0) {
    return "has a length of " + NumberText(c.what.found) + " bytes, not " +
           NumberText(c.what.expected);
  }
  return "claims " + BytesText(c.what.found);
}

struct IrregularityRow {
  IrregularityKind kind;
  std::string_view slug;
  // What the side did, behind its name.
  std::string (*text)(const Case&);
};

constexpr IrregularityRow kRows[] = {
    {IrregularityKind::kUnknownPduType, "pdu-unknown-type",
     [](const Case& c) {
       return "sent a PDU of the unknown type " + HexText(c.what.found, 2);
     }},
    {IrregularityKind::kWrongPduLength, "pdu-bad-length",
     [](const Case& c) {
       return "sent " + c.PduText() + " that " + LengthText(c) +
              ": the length is wrong";
     }},
    {IrregularityKind::kUnexpectedPdu, "pdu-unexpected",
     [](const Case& c) {
       return "sent " + PduTypeText(static_cast<std::uint8_t>(c.what.found)) +
              " out of turn" +
              (c.association == nullptr ||
                       (!c.association->request && !c.association->accept)
                   ? ", outside of any association"
                   : ", which has no place there");
     }},
    {IrregularityKind::kDamagedItems, "pdu-malformed",
     [](const Case& c) {
       return "sent " + c.PduText() + " with an item (type " +
              HexText(c.what.found, 2) +
              ") whose length leads out of what holds it";
     }},
    {IrregularityKind::kPduAboveMaximum, "pdu-above-maximum",
     [](const Case& c) {
       return "sent " + c.PduText() + " of " + BytesText(c.what.found) +
              ", above the maximum of " + NumberText(c.what.expected) +
              " that the other side announced";
     }},
    {IrregularityKind::kEvenContextId, "context-id-even",
     [](const Case& c) {
       return "used the even presentation context ID " +
              std::to_string(c.what.found) + "; IDs are odd";
     }},
    {IrregularityKind::kDuplicateContextId, "context-id-doubled",
     [](const Case& c) {
       return "proposed the presentation context ID " +
              std::to_string(c.what.found) + " twice";
     }},
    {IrregularityKind::kUnproposedContextId, "context-answer-unproposed",
     [](const Case& c) {
       return "answered the presentation context ID " +
              std::to_string(c.what.found) + ", which was not proposed" +
              (c.what.found % 2 == 0 ? " and is even; IDs are odd" : "");
     }},
    {IrregularityKind::kDuplicateAnswer, "context-answer-doubled",
     [](const Case& c) {
       return "answered the " + c.ContextText(c.what.found) + " twice";
     }},
    {IrregularityKind::kMissingAnswer, "context-answer-missing",
     [](const Case& c) {
       return "left out its answer to the " + c.ContextText(c.what.found);
     }},
    {IrregularityKind::kUnofferedSyntax, "context-syntax-unproposed",
     [](const Case& c) {
       return "chose the transfer syntax " + UidText(c.what.text) +
              " for the " + c.ContextText(c.what.found) +
              ", which was not proposed for it";
     }},
    {IrregularityKind::kWrongPdvLength, "pdv-bad-length",
     [](const Case& c) {
       return "sent a presentation data value with the wrong length " +
              NumberText(c.what.found) + " in " + c.PduText();
     }},
    {IrregularityKind::kOddPdvLength, "pdv-odd-length",
     [](const Case& c) {
       return "cut " + c.MessageText() +
              " into presentation data values of odd length (" +
              NumberText(c.what.found) + ")";
     }},
    {IrregularityKind::kStrayBytes, "pdu-bad-length",
     [](const Case& c) {
       return "sent " + c.PduText() + " with " + BytesText(c.what.found) +
              " behind its last item: a length is wrong";
     }},
    {IrregularityKind::kUnknownContext, "pdv-unknown-context",
     [](const Case& c) {
       return "sent data on presentation context " +
              std::to_string(c.what.found) + ", which was never negotiated";
     }},
    {IrregularityKind::kRefusedContext, "message-on-refused-context",
     [](const Case& c) {
       return "sent " + c.MessageText() + " on the " +
              c.ContextText(c.what.found) + ", which was refused";
     }},
    {IrregularityKind::kInterleavedFragments, "fragments-interleaved",
     [](const Case& c) {
       return "mixed the fragments of two messages, on the contexts " +
              std::to_string(c.what.expected) + " and " +
              std::to_string(c.what.found);
     }},
    {IrregularityKind::kMissingLastFragment, "message-incomplete",
     [](const Case& c) {
       return std::string("sent a ") +
              (c.what.expected == 0 ? "command set" : "data set") +
              " without a last fragment: after " + BytesText(c.what.found) +
              " of it something else came";
     }},
    {IrregularityKind::kDataWithoutCommand, "data-set-without-command",
     [](const Case& c) {
       return "sent a data set without a command that announces it, on "
              "presentation context " +
              std::to_string(c.what.found);
     }},
    {IrregularityKind::kDamagedCommand, "command-set-broken",
     [](const Case&) {
       return std::string(
           "sent a command set that cannot be read as implicit VR little "
           "endian");
     }},
    {IrregularityKind::kUnknownCommand, "command-unknown",
     [](const Case& c) {
       return "sent the command " + HexText(c.what.found, 4) +
              ", which DICOM does not have";
     }},
    {IrregularityKind::kUnaskedAnswer, "response-without-request",
     [](const Case& c) {
       return "answered message ID " + std::to_string(c.what.found) +
              ", which no request had";
     }},
    {IrregularityKind::kWrongAnswer, "response-of-wrong-kind",
     [](const Case& c) {
       return "answered a " +
              CommandText(static_cast<std::uint16_t>(c.what.expected)) +
              " with " +
              CommandFieldText(static_cast<std::uint16_t>(c.what.found)) +
              ", the answer to another command";
     }},
    {IrregularityKind::kWindowExceeded, "window-exceeded",
     [](const Case& c) {
       return "had " + CountText(c.what.found, "request", "requests") +
              " open at once, " + NumberText(c.what.expected) +
              (c.what.expected == 1 ? " is" : " are") + " allowed";
     }},
    {IrregularityKind::kWrongSopClass, "sop-class-not-of-context",
     [](const Case& c) {
       return "sent a C-STORE of " + UidText(c.what.text) + " on the " +
              c.ContextText(c.what.expected) + ", which is for another class";
     }},
    {IrregularityKind::kMessageIdInUse, "message-id-in-use",
     [](const Case& c) {
       return "sent a request with message ID " + std::to_string(c.what.found) +
              ", which another open request has";
     }},
    {IrregularityKind::kBadProtocolVersion, "protocol-version-bad",
     [](const Case& c) {
       return "does not offer version 1 of the protocol but " +
              HexText(c.what.found, 4);
     }},
    {IrregularityKind::kBadApplicationContext, "application-context-bad",
     [](const Case& c) {
       return c.what.text.empty()
                  ? std::string("names no application context")
                  : "names the application context \"" + c.what.text +
                        "\", which is not DICOM's";
     }},
    {IrregularityKind::kUidTooLong, "uid-bad",
     [](const Case& c) {
       return "sent a UID of " + NumberText(c.what.found) +
              " characters, it may have 64: " + c.what.text;
     }},
    {IrregularityKind::kBadUid, "uid-bad",
     [](const Case& c) {
       return "sent a UID that is none: \"" + c.what.text + "\"";
     }},
};

const IrregularityRow* RowOf(IrregularityKind kind) {
  const auto row = std::ranges::find(kRows, kind, &IrregularityRow::kind);
  return row == std::end(kRows) ? nullptr : row;
}

// Both kinds of role, which have names of their own.
void AddRole(const Case& c, const std::string& peer, FindingList& list) {
  std::uint16_t command = 0;
  if (c.what.message && *c.what.message < c.at.dialogue->messages.size()) {
    command = c.at.dialogue->messages[*c.what.message].command_field;
  }
  const bool reports = command == kNEventReportRq;
  Finding& found =
      list.Add(reports ? "event-report-without-role" : "role-not-negotiated",
               "The " + peer + " sent " + c.MessageText() + " for " +
                   UidText(c.what.text) + ", but has not negotiated the " +
                   (reports ? "SCP" : "SCU") + " role for it.");
  SetPlace(c.what.place, found);
}

// A message began inside another one, of which nothing came any more: not mixed
// up with it, but instead of its end.
bool IsNeverGoneOnWith(const Dialogue& dialogue, const Irregularity& what) {
  if (!what.association) return false;
  const Association& association = dialogue.associations[*what.association];
  for (std::uint32_t i = association.end_message;
       i-- > association.first_message;) {
    const DialogueMessage& message = dialogue.messages[i];
    if (message.direction != what.place.direction ||
        message.context != what.expected || message.pieces.empty() ||
        message.pieces.front().pdu >= what.place.pdu) {
      continue;
    }
    return !message.IsComplete() && message.pieces.back().pdu < what.place.pdu;
  }
  return false;
}

// Data came behind the other message, for which no command was open any more.
bool IsGoneOnWith(const Dialogue& dialogue, const Irregularity& mixed) {
  return std::ranges::any_of(
      dialogue.irregularities, [&mixed](const Irregularity& what) {
        return what.kind == IrregularityKind::kDataWithoutCommand &&
               what.place.direction == mixed.place.direction &&
               what.place.pdu >= mixed.place.pdu;
      });
}

void AddRow(const Case& c, const std::string& peer, FindingList& list) {
  const auto number = static_cast<std::size_t>(c.what.kind);
  const IrregularityRow* const row = RowOf(c.what.kind);
  if (row == nullptr) return;
  const std::uint64_t count = c.at.dialogue->irregularity_counts[number];
  Finding& found = list.Add(
      row->slug, "The " + peer + " " + row->text(c) +
                     (count > 1 ? " (" + NumberText(count) + " times)." : "."));
  SetPlace(c.what.place, found);
  found.likeness = c.at.Address(1 - c.at.client) + row->text(c);
  if (row->slug.starts_with("context-")) {
    found.context = static_cast<std::uint8_t>(c.what.found);
  }
  // Without a name nobody minds: the port says it.
  if (c.what.kind == IrregularityKind::kBadApplicationContext &&
      c.what.text.empty()) {
    found.severity = Severity::kNote;
  }
  // A release that comes early or twice, and is answered, hurts nobody.
  if (c.what.kind == IrregularityKind::kUnexpectedPdu &&
      c.what.found == kReleaseRq && c.association != nullptr &&
      c.association->release_answer) {
    found.severity = Severity::kNote;
  }
}

// Fragments are mixed up, and those of the first message do not go on.
bool BreaksOff(const Dialogue& dialogue, const Irregularity& what) {
  return what.kind == IrregularityKind::kInterleavedFragments &&
         IsNeverGoneOnWith(dialogue, what) && !IsGoneOnWith(dialogue, what);
}

}  // namespace

void FindIrregularities(const Scene&, const SceneConnection& at,
                        FindingList& list) {
  if (at.dialogue == nullptr) return;
  const Dialogue& dialogue = *at.dialogue;
  // One of a kind and a side is enough; the counts tell of the others.
  std::array<std::array<bool, 2>, kIrregularityKinds> seen{};
  for (const Irregularity& what : dialogue.irregularities) {
    if (FollowsLoss(dialogue, what.place)) continue;
    const std::uint32_t direction = what.place.direction & 1;
    const auto number = static_cast<std::size_t>(what.kind);
    if (seen[number][direction]) continue;
    seen[number][direction] = true;
    const Association* association =
        what.association && *what.association < dialogue.associations.size()
            ? &dialogue.associations[*what.association]
            : nullptr;
    const Case c{at, what, association};
    const std::string peer = PeerText(at, direction, association);
    if (what.kind == IrregularityKind::kRoleNotNegotiated) {
      AddRole(c, peer, list);
      continue;
    }
    if (BreaksOff(dialogue, what)) {
      Finding& found =
          list.Add("message-incomplete",
                   "The " + peer + " began another message before the one on " +
                       c.ContextText(what.expected) +
                       " had ended: its last fragment never came.");
      SetPlace(what.place, found);
      continue;
    }
    AddRow(c, peer, list);
  }
}

}  // namespace host
