#include "host/dialogue/irregularity_text.h"

#include "host/dialogue/dialogue_message.h"
#include "host/dialogue/outcome.h"
#include "host/streams/pdu_header.h"
#include "host/text/number_text.h"

namespace host {
namespace {

using Kind = IrregularityKind;

std::string PduIrregularity(const Irregularity& one) {
  const std::string found = NumberText(one.found);
  switch (one.kind) {
    case Kind::kUnknownPduType:
      return "A PDU has the unknown type " + found;
    case Kind::kWrongPduLength:
      return "A PDU has the length " + found +
             (one.expected == 0
                  ? ", which none of its type may have"
                  : ", where " + NumberText(one.expected) + " is due");
    case Kind::kUnexpectedPdu:
      return PduTypeText(static_cast<std::uint8_t>(one.found)) +
             " comes where none may";
    case Kind::kDamagedItems:
      return "An item of type " + found +
             " ends outside of its association PDU";
    case Kind::kBadProtocolVersion:
      return "The protocol version is " + found + " instead of 1";
    case Kind::kBadApplicationContext:
      return "The application context is " +
             (one.text.empty() ? "missing" : one.text);
    case Kind::kPduAboveMaximum:
      return "A P-DATA-TF PDU has " + BytesText(one.found) +
             ", more than the maximum of " + NumberText(one.expected) +
             " that the other side announced";
    default:
      return {};
  }
}

std::string ContextIrregularity(const Irregularity& one) {
  const std::string context = "Context " + NumberText(one.found);
  switch (one.kind) {
    case Kind::kEvenContextId:
      return context + " has an even ID";
    case Kind::kDuplicateContextId:
      return context + " was proposed twice";
    case Kind::kUnproposedContextId:
      return context + " was answered, but never proposed";
    case Kind::kDuplicateAnswer:
      return context + " was answered twice";
    case Kind::kMissingAnswer:
      return context + " was not answered";
    case Kind::kUnofferedSyntax:
      return context + " was accepted with " + UidText(one.text) +
             ", which was not proposed";
    case Kind::kTooManyItems:
      return "The association PDU has more than " + NumberText(one.found) +
             " contexts";
    case Kind::kUnknownContext:
      return "A message came on context " + NumberText(one.found) +
             ", which was never proposed";
    case Kind::kRefusedContext:
      return "A message came on context " + NumberText(one.found) +
             ", which was not accepted";
    case Kind::kAnswerOnOtherContext:
      return "A request on context " + NumberText(one.expected) +
             " was answered on context " + NumberText(one.found);
    case Kind::kRoleNotNegotiated:
      return "A request for " + UidText(one.text) +
             " came from the side that has no SCU role for it";
    case Kind::kWindowExceeded:
      return NumberText(one.found) + " operations are open, where " +
             NumberText(one.expected) + " may be";
    default:
      return {};
  }
}

std::string PdvIrregularity(const Irregularity& one) {
  switch (one.kind) {
    case Kind::kWrongPdvLength:
      return "A PDV has the impossible length " + NumberText(one.found);
    case Kind::kOddPdvLength:
      return "A PDV has the odd length " + NumberText(one.found);
    case Kind::kStrayBytes:
      return BytesText(one.found) + " follow the last PDV of a PDU";
    case Kind::kInterleavedFragments:
      return "A fragment on context " + NumberText(one.found) +
             " comes inside a message on context " + NumberText(one.expected);
    case Kind::kMissingLastFragment:
      return std::string("The last fragment of a ") +
             (one.expected == 0 ? "command set" : "data set") +
             " is missing, behind " + BytesText(one.found);
    case Kind::kDataWithoutCommand:
      return "Data came on context " + NumberText(one.found) +
             " without a command that announces it";
    default:
      return {};
  }
}

std::string MessageIrregularity(const Irregularity& one) {
  const auto command = [](std::uint64_t field) {
    return CommandFieldText(static_cast<std::uint16_t>(field));
  };
  switch (one.kind) {
    case Kind::kDamagedCommand:
      return "A command set cannot be read";
    case Kind::kUnknownCommand:
      return "A message has the unknown Command Field " +
             HexText(static_cast<std::uint16_t>(one.found));
    case Kind::kWrongSopClass:
      return "A C-STORE of " + UidText(one.text) + " came on context " +
             NumberText(one.expected) + ", which is of another class";
    case Kind::kMessageIdInUse:
      return "Message ID " + NumberText(one.found) +
             " was used again before its request was answered";
    case Kind::kUnaskedAnswer:
      return "An answer goes with message ID " + NumberText(one.found) +
             ", which no open request has";
    case Kind::kWrongAnswer:
      return "A " + command(one.found) + " came where a " +
             command(one.expected) + " is due";
    case Kind::kMissingElement:
      return "A command set has no " + one.text;
    case Kind::kUidTooLong:
      return "A UID has " + NumberText(one.found) +
             " characters, more than 64: " + one.text;
    case Kind::kBadUid:
      return "A UID is none: " + one.text;
    default:
      return {};
  }
}

}  // namespace

std::string IrregularityText(const Irregularity& irregularity) {
  for (const auto text : {PduIrregularity, ContextIrregularity, PdvIrregularity,
                          MessageIrregularity}) {
    std::string found = text(irregularity);
    if (!found.empty()) return found;
  }
  return {};
}

bool IsAboutNegotiation(IrregularityKind kind) {
  return !ContextIrregularity({kind, {}, 0, 0, {}, {}, {}}).empty() ||
         kind == Kind::kPduAboveMaximum || kind == Kind::kWrongSopClass;
}

}  // namespace host
