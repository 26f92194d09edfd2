#include "host/dialogue/outcome.h"

#include <algorithm>
#include <optional>

#include "host/dataset/registry.h"
#include "host/streams/pdu_header.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

constexpr std::size_t kMostNamed = 3;  // of a list in one line
constexpr std::string_view kBetween = "; ";

void Append(std::string_view part, std::string& line) {
  if (part.empty()) return;
  if (!line.empty()) line += kBetween;
  line += part;
}

// "C-STORE" of "C-STORE-RQ".
std::string ServiceName(std::uint16_t command_field) {
  std::string text = CommandFieldText(command_field);
  for (const std::string_view end : {"-RQ", "-RSP"}) {
    if (text.ends_with(end)) text.resize(text.size() - end.size());
  }
  return text;
}

std::string RequestText(const DialogueMessage& message) {
  std::string text = ServiceName(message.command_field);
  if (!message.sop_class.empty()) text += " " + UidText(message.sop_class);
  return text;
}

std::string RequestOutcome(const Dialogue& dialogue,
                           const DialogueMessage& message) {
  std::string line = RequestText(message);
  if (message.command_field == kCMoveRq) {
    const std::string destination = PrintableFromCodePage1252(
        dialogue.ReadCommand(message).move_destination);
    if (!destination.empty()) line += " to " + destination;
  }
  if (message.parent) Append("part of a C-GET", line);
  if (!message.IsComplete()) Append("not complete", line);
  if (dialogue.is_over && message.IsRequest() && !message.last_answer) {
    Append("no answer", line);
  }
  return line;
}

std::string AnswerOutcome(const Dialogue& dialogue,
                          const DialogueMessage& message) {
  const CommandSet set = dialogue.ReadCommand(message);
  std::string line;
  if (message.status) {
    line = StatusWithText(*message.status, message.command_field,
                          message.sop_class);
  }
  if (!set.error_comment.empty()) {
    Append('"' + PrintableFromCodePage1252(set.error_comment) + '"', line);
  }
  Append(OffendingElementsText(set.offending_elements), line);
  Append(SubOperationsText(set.sub_operations), line);
  if (!message.IsComplete()) Append("not complete", line);
  return line;
}

std::string ContextText(const PresentationContext& context) {
  std::string text = context.abstract_syntax.empty()
                         ? "context " + std::to_string(context.id)
                         : UidText(context.abstract_syntax);
  return text + " (" +
         (context.result ? ContextResultText(*context.result) : "no answer") +
         ")";
}

std::string AcceptOutcome(const Association& association) {
  const auto& contexts = association.contexts;
  const auto accepted = static_cast<std::size_t>(
      std::ranges::count_if(contexts, &PresentationContext::IsAccepted));
  std::string line =
      association.request
          ? NumberText(accepted) + " of " +
                CountText(contexts.size(), "context", "contexts") + " accepted"
          : CountText(accepted, "context", "contexts") + " accepted";
  std::size_t named = 0;
  for (const PresentationContext& context : contexts) {
    if (context.IsAccepted()) continue;
    if (named == kMostNamed) {
      return line + " and " + NumberText(contexts.size() - accepted - named) +
             " more";
    }
    line += named++ == 0 ? ", not " : ", ";
    line += ContextText(context);
  }
  return line;
}

std::string RejectOutcome(const Rejection& reject) {
  return RejectResultText(reject.result) + ", by " +
         RejectSourceText(reject.source) + ": " +
         RejectReasonText(reject.source, reject.reason);
}

// What stands before a PDU in its association; empty when nothing does.
std::string TextOfPduBefore(const Dialogue& dialogue,
                            const Association& association, std::uint32_t pdu) {
  if (pdu == association.first_pdu) return {};
  const DialoguePdu& before = dialogue.pdus[pdu - 1];
  for (std::uint32_t i = association.end_message;
       i > association.first_message && before.type == kPDataTf; --i) {
    const DialogueMessage& message = dialogue.messages[i - 1];
    if (message.pieces.empty() || message.pieces.back().pdu != pdu - 1) {
      continue;
    }
    return CommandFieldText(message.command_field) +
           (message.IsComplete() ? "" : ", not complete");
  }
  return PduTypeText(before.type);
}

std::string AbortOutcome(const Dialogue& dialogue,
                         const Association& association, const Abort& abort) {
  std::string line = "by " + AbortSourceText(abort.source);
  const std::string reason = AbortReasonText(abort.source, abort.reason);
  if (!reason.empty()) line += ": " + reason;
  const std::string before =
      TextOfPduBefore(dialogue, association, abort.place.pdu);
  return before.empty() ? line : line + ", after " + before;
}

}  // namespace

std::string OffendingElementsText(const std::vector<Tag>& tags) {
  if (tags.empty()) return {};
  std::string text =
      tags.size() == 1 ? "offending element " : "offending elements ";
  for (std::size_t i = 0; i < tags.size(); ++i) {
    if (i == kMostNamed) {
      return text + " and " + NumberText(tags.size() - i) + " more";
    }
    text += i == 0 ? "(" : ", (";
    text += TagText(tags[i]) + ")";
    const auto entry = FindElement(tags[i]);
    if (entry) text += " " + std::string(entry->name);
  }
  return text;
}

std::string SubOperationsText(const SubOperations& operations) {
  std::string text;
  const auto add = [&text](std::optional<std::uint16_t> count,
                           std::string_view what) {
    if (!count) return;
    text += text.empty() ? "" : ", ";
    text += NumberText(*count) + " ";
    text += what;
  };
  add(operations.remaining, "to do");
  add(operations.completed, "done");
  add(operations.failed, "failed");
  add(operations.warning, operations.warning == 1 ? "warning" : "warnings");
  return text;
}

std::string PduOutcome(const Dialogue& dialogue, std::uint32_t index) {
  const auto number = dialogue.AssociationOfPdu(index);
  if (!number) return {};
  const Association& association = dialogue.associations[*number];
  const auto is_here = [index](const auto& said) {
    return said && said->place.pdu == index;
  };
  if (is_here(association.request)) {
    return CountText(association.contexts.size(), "context", "contexts") +
           " proposed";
  }
  if (is_here(association.accept)) return AcceptOutcome(association);
  if (is_here(association.reject)) return RejectOutcome(*association.reject);
  for (const Abort& abort : association.aborts) {
    if (abort.place.pdu == index) {
      return AbortOutcome(dialogue, association, abort);
    }
  }
  return {};
}

std::string MessageOutcome(const Dialogue& dialogue, std::uint32_t index) {
  const DialogueMessage& message = dialogue.messages[index];
  if (!message.has_command_field) return "the command set cannot be read";
  return message.IsAnswer() ? AnswerOutcome(dialogue, message)
                            : RequestOutcome(dialogue, message);
}

}  // namespace host
