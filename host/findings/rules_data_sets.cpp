#include <memory>
#include <utility>

#include "host/dataset/data_set_reader.h"
#include "host/dataset/transfer_syntax.h"
#include "host/dialogue/outcome.h"
#include "host/findings/rules.h"
#include "host/findings/text_faults.h"

namespace host {
namespace {

// Of one data set: far more elements than lie before the pixels of an image.
constexpr int kEventsLookedAt = 2000;
// Of one connection that are read without another reason than to look.
constexpr int kLookedAtWithoutReason = 64;

// Reads the first elements of a data set, and `texts` with them. Answers what
// is wrong: "is implicit VR little endian, but explicit VR little endian was
// agreed"; empty when nothing is wrong.
std::string ProblemOf(ByteSource& source, std::string_view syntax,
                      TextFaults& texts) {
  std::uint8_t head[132] = {};
  if (source.Read(0, head) == sizeof head && head[128] == 'D' &&
      head[129] == 'I' && head[130] == 'C' && head[131] == 'M') {
    return "is a whole file with its preamble; only the data set behind the "
           "file's header may be sent";
  }
  const ChosenEncoding chosen = ChooseEncoding(source, syntax);
  if (chosen.origin == EncodingOrigin::kContradicts) {
    const auto agreed = EncodingOf(syntax);
    return "is " + std::string(EncodingText(chosen.encoding)) + ", but " +
           (agreed ? std::string(EncodingText(*agreed)) : std::string()) +
           " was agreed (" + UidText(syntax) + ")";
  }
  if (chosen.encoding.deflated) return {};
  DataSetReader reader(source, chosen.encoding);
  for (int i = 0; i < kEventsLookedAt; ++i) {
    const DataSetEvent& event = reader.Next();
    if (event.kind == DataSetEvent::Kind::kEnd) break;
    texts.Look(reader);
    if (event.problem == DataSetProblem::kPastEnd ||
        event.problem == DataSetProblem::kNotAnElement ||
        event.problem == DataSetProblem::kNotAnItem) {
      return "does not parse as " + std::string(EncodingText(chosen.encoding)) +
             ": " + reader.ProblemSentence();
    }
  }
  return {};
}

bool HasLosses(const Dialogue& dialogue, const DialogueMessage& message) {
  for (const PdvPiece& piece : message.pieces) {
    const DialoguePdu& pdu = dialogue.pdus[piece.pdu];
    if (pdu.has_lost_bytes || pdu.follows_lost_bytes) return true;
  }
  return false;
}

// Whether somebody may have refused it: then it is worth a look.
bool IsSuspect(const Dialogue& dialogue, const DialogueMessage& message) {
  if (!message.IsRequest()) return false;
  if (!message.last_answer) return true;
  const auto& status = dialogue.messages[*message.last_answer].status;
  return status && *status != 0 && (*status & 0xFF00) != 0xFF00;
}

}  // namespace

void FindBrokenDataSets(const Scene&, const SceneConnection& at,
                        FindingList& list) {
  if (at.dialogue == nullptr) return;
  const Dialogue& dialogue = *at.dialogue;
  int without_reason = 0;
  for (const DialogueMessage& message : dialogue.messages) {
    if (!message.data_set_complete || message.data_bytes == 0) continue;
    if (!IsSuspect(dialogue, message) &&
        ++without_reason > kLookedAtWithoutReason) {
      continue;
    }
    if (HasLosses(dialogue, message)) continue;
    const std::string_view syntax = dialogue.TransferSyntaxOf(message);
    if (syntax.empty()) continue;
    const std::unique_ptr<ByteSource> source = dialogue.DataSetOf(message);
    TextFaults texts;
    const std::string problem = ProblemOf(*source, syntax, texts);
    if (problem.empty()) {
      texts.Report(at, message, list);
      continue;
    }
    Finding& found =
        list.Add("data-set-does-not-parse",
                 "The " +
                     PeerText(at, message.direction,
                              &dialogue.associations[message.association]) +
                     " sent a broken data set with a " +
                     CommandText(message.command_field) +
                     (message.IsAnswer() ? " answer" : "") + ": it " + problem +
                     (problem.ends_with('.') ? "" : "."));
    SetPlace(message, found);
    if (!IsSuspect(dialogue, message)) found.severity = Severity::kWarning;
    found.likeness = at.Address(1 - at.client) + problem;
  }
}

}  // namespace host
