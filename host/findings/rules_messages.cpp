#include <map>
#include <tuple>

#include "host/dialogue/outcome.h"
#include "host/findings/rules.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

// Answers of one kind: the same request, SOP class and status.
struct Answers {
  std::uint64_t count = 0;
  std::uint32_t first = 0;  // index of the message
  std::vector<FindingPlace> others;
  SubOperations sub_operations;
};
using AnswerKey =
    std::tuple<std::uint32_t, std::uint16_t, std::string_view, std::uint16_t>;

// What Dialogue::ReadCommand() answers, or an empty set if that fails: the
// finding is then made from what is kept.
CommandSet CommandOf(const Dialogue& dialogue, std::uint32_t message) {
  return dialogue.ReadCommand(dialogue.messages[message]);
}

// Error Comment and Offending Elements, in brackets behind a status.
std::string CommentText(const CommandSet& set) {
  std::string text;
  if (!set.error_comment.empty()) {
    text = "; it says \"" + PrintableFromCodePage1252(set.error_comment) + "\"";
  }
  if (!set.offending_elements.empty()) {
    text += "; " + OffendingElementsText(set.offending_elements);
  }
  return text;
}

std::string PluralText(std::uint64_t count, const std::string& command) {
  return count == 1 ? OneCommandText(command)
                    : NumberText(count) + " " + command + " requests";
}

// The answers of one connection by kind.
class StatusRule {
 public:
  StatusRule(const Scene& scene, const SceneConnection& at, FindingList& list)
      : scene_(scene), at_(at), dialogue_(*at.dialogue), list_(list) {}

  void Run() {
    Count();
    for (const auto& [key, answers] : answers_) Judge(key, answers);
  }

 private:
  void Count() {
    for (std::uint32_t i = 0; i < dialogue_.messages.size(); ++i) {
      const DialogueMessage& message = dialogue_.messages[i];
      if (!message.IsAnswer() || !message.status || message.pieces.empty() ||
          dialogue_.pdus[message.pieces.front().pdu].has_lost_bytes) {
        continue;
      }
      const StatusText status = ExplainStatus(
          *message.status, message.command_field, message.sop_class);
      if (status.status_class == StatusClass::kPending) continue;
      ++all_[{message.association, message.command_field}];
      if (status.status_class == StatusClass::kSuccess &&
          message.command_field != (kCGetRq | kAnswerBit) &&
          message.command_field != (kCMoveRq | kAnswerBit)) {
        continue;
      }
      Answers& answers = answers_[{message.association, message.command_field,
                                   message.sop_class, *message.status}];
      if (answers.count++ == 0) {
        answers.first = i;
      } else if (answers.others.size() < Finding::kPlacesKept) {
        answers.others.push_back({at_.index, {}, message.record});
      }
    }
  }

  void Judge(const AnswerKey& key, const Answers& answers) {
    const auto& [association, command, sop_class, code] = key;
    const StatusText status = ExplainStatus(code, command, sop_class);
    const CommandSet set = CommandOf(dialogue_, answers.first);
    const std::uint16_t failed = set.sub_operations.failed.value_or(0);
    const bool retrieves =
        command == (kCGetRq | kAnswerBit) || command == (kCMoveRq | kAnswerBit);
    if (retrieves && failed != 0 && LacksScpRole(association, command)) {
      Report("get-without-scp-role", key, answers, set, status);
    } else if (status.status_class == StatusClass::kFailure) {
      Report(status.is_listed ? "status-failure" : "status-unknown", key,
             answers, set, status);
    } else if (retrieves && failed != 0) {
      Report("suboperations-failed", key, answers, set, status);
    } else if (status.status_class == StatusClass::kWarning) {
      Report("status-warning", key, answers, set, status);
    }
  }

  // A C-GET whose requestor has no accepted context with the SCP role.
  bool LacksScpRole(std::uint32_t association, std::uint16_t command) const {
    if (command != (kCGetRq | kAnswerBit)) return false;
    const Association& all = dialogue_.associations[association];
    if (!all.request || !all.accept) return false;
    for (const RoleSelection& role : all.accept->roles) {
      if (role.scp) return false;
    }
    return true;
  }

  void Report(std::string_view slug, const AnswerKey& key,
              const Answers& answers, const CommandSet& set,
              const StatusText& status) {
    const auto& [association, command, sop_class, code] = key;
    const DialogueMessage& first = dialogue_.messages[answers.first];
    const std::uint64_t all = all_[{association, command}];
    const bool refused = status.status_class == StatusClass::kFailure;
    std::string sentence =
        WhyNothingIsSent(slug, dialogue_.associations[association]) +
        Peer(first.direction, association) +
        (refused ? " refused " : " answered ") +
        PluralText(answers.count, CommandText(command));
    if (all > 1) {
      sentence += all == answers.count ? ", all that were sent,"
                                       : " of " + NumberText(all);
    }
    if (!sop_class.empty()) sentence += " (" + UidText(sop_class) + ")";
    sentence += " with " + StatusWithText(code, command, sop_class);
    const std::string sub = SubOperationsText(set.sub_operations);
    if (!sub.empty()) sentence += ": sub-operations " + sub;
    sentence += CommentText(set);
    const std::string destination = Destination(first);
    sentence += destination;
    const bool lacks_role = refused && LacksReportRole(first);
    if (lacks_role) {
      sentence +=
          "; its sender has not negotiated the SCP role for it, likely "
          "the cause";
    }
    Finding& found = list_.Add(slug, sentence + ".");
    if (lacks_role) {
      found.advice = RoleAdvice(Peer(1 - first.direction, association));
    } else if (refused && !destination.empty()) {
      found.advice = kDestinationAdvice;
    }
    SetPlace(first, found);
    found.others = answers.others;
    found.likeness = at_.Address(first.direction) + '\n' +
                     StatusWithText(code, command, sop_class) +
                     set.error_comment;
  }

  static constexpr std::string_view kDestinationAdvice =
      "Does the acceptor know this destination, with the right address and "
      "port? Its log says more about this status.";
  static std::string RoleAdvice(const std::string& sender) {
    return "Let the " + sender +
           " propose the SCP role for this class, and the other side grant it.";
  }

  std::string Peer(std::uint32_t direction, std::uint32_t association) const {
    return PeerText(at_, direction, &dialogue_.associations[association]);
  }

  // The beginning of a sentence that goes on with the acceptor's name.
  std::string WhyNothingIsSent(std::string_view slug,
                               const Association& association) const {
    if (slug != "get-without-scp-role") return "The ";
    return "The " +
           PeerText(at_, association.request->place.direction, &association) +
           " has not negotiated the SCP role, so that it cannot be sent "
           "anything: the ";
  }

  // Whether this refuses a report of a side that must not send any.
  bool LacksReportRole(const DialogueMessage& answer) const {
    return answer.command_field == (kNEventReportRq | kAnswerBit) &&
           answer.request &&
           std::ranges::any_of(
               dialogue_.irregularities, [&answer](const Irregularity& one) {
                 return one.kind == IrregularityKind::kRoleNotNegotiated &&
                        one.message == answer.request;
               });
  }

  // Where a C-MOVE was to go.
  std::string Destination(const DialogueMessage& answer) const {
    if (!answer.request ||
        dialogue_.messages[*answer.request].command_field != kCMoveRq) {
      return {};
    }
    const CommandSet request = CommandOf(dialogue_, *answer.request);
    return "; the move destination is \"" +
           PrintableFromCodePage1252(request.move_destination) + "\"" +
           Unreachable(dialogue_.messages[*answer.request], answer);
  }

  // A connection that the acceptor tried meanwhile and that did not come about.
  std::string Unreachable(const DialogueMessage& request,
                          const DialogueMessage& answer) const {
    const SceneConnection* const other =
        scene_.FailedBetween(request.first_time, answer.last_time);
    if (other == nullptr) return {};
    return ", likely the one at " + other->Address(1 - other->client) +
           (other->Facts(1 - other->client).rst
                ? ", which refused the connection"
                : ", which did not answer") +
           " (connection " + std::to_string(other->index + 1) + ")";
  }

  const Scene& scene_;
  const SceneConnection& at_;
  const Dialogue& dialogue_;
  FindingList& list_;
  std::map<AnswerKey, Answers> answers_;
  std::map<std::pair<std::uint32_t, std::uint16_t>, std::uint64_t> all_;
};

bool IsStorageClass(std::string_view sop_class) {
  return sop_class.starts_with("1.2.840.10008.5.1.4.1.1.") &&
         UidText(sop_class).find("Storage") != std::string::npos;
}

bool IsQueryClass(std::string_view sop_class) {
  return sop_class.starts_with("1.2.840.10008.5.1.4.1.2.") ||
         sop_class == "1.2.840.10008.5.1.4.31";
}

bool IsOfOtherService(std::uint16_t command, std::string_view sop_class) {
  switch (command) {
    case kCStoreRq:
      return IsQueryClass(sop_class) || sop_class == "1.2.840.10008.1.1";
    case kCFindRq:
    case kCMoveRq:
    case kCGetRq:
      return IsStorageClass(sop_class) || sop_class == "1.2.840.10008.1.1";
    default:
      return false;
  }
}

}  // namespace

void FindStatuses(const Scene& scene, const SceneConnection& at,
                  FindingList& list) {
  if (at.dialogue != nullptr) StatusRule(scene, at, list).Run();
}

void FindFailedCommitments(const Scene&, const SceneConnection& at,
                           FindingList& list) {
  constexpr std::string_view kCommitment = "1.2.840.10008.1.20.1";
  constexpr std::uint16_t kFailuresExist = 2;
  if (at.dialogue == nullptr) return;
  const Dialogue& dialogue = *at.dialogue;
  for (std::uint32_t i = 0; i < dialogue.messages.size(); ++i) {
    const DialogueMessage& message = dialogue.messages[i];
    if (message.command_field != kNEventReportRq ||
        message.sop_class != kCommitment ||
        CommandOf(dialogue, i).event_type != kFailuresExist) {
      continue;
    }
    Finding& found = list.Add(
        "commitment-failed",
        "The " +
            PeerText(at, message.direction,
                     &dialogue.associations[message.association]) +
            " reports that storage commitment failed for objects (event type "
            "2): its list of failed instances names them and the reasons.");
    SetPlace(message, found);
    found.likeness = at.Address(message.direction);
  }
}

namespace {

// One message and what belongs to it.
struct MessageAt {
  const SceneConnection& at;
  const DialogueMessage& message;
  const Association& association;

  Finding& Add(std::string_view slug, const std::string& what,
               FindingList& list) const {
    Finding& found =
        list.Add(slug, "The " + PeerText(at, message.direction, &association) +
                           " " + what + ".");
    SetPlace(message, found);
    found.likeness = at.Address(message.direction);
    return found;
  }
};

void JudgeAnswer(const MessageAt& m, FindingList& list) {
  const DialogueMessage& request = m.at.dialogue->messages[*m.message.request];
  if (request.context == m.message.context) return;
  Finding& found =
      m.Add("response-on-another-context",
            "answered a " + CommandText(request.command_field) +
                " of presentation context " + std::to_string(request.context) +
                " on context " + std::to_string(m.message.context),
            list);
  // Some requestors do not mind.
  if (EndingOf(m.at, m.association).kind == Ending::Kind::kReleased) {
    found.severity = Severity::kNote;
  }
}

void JudgeRequest(const MessageAt& m, FindingList& list) {
  const DialogueMessage& message = m.message;
  const std::string command = CommandText(message.command_field);
  if (message.command_complete && !message.message_id &&
      !m.at.LacksBytes(message.direction)) {
    m.Add("command-set-incomplete",
          "sent a " + command +
              " without a message ID, which every request must have",
          list);
    return;
  }
  const PresentationContext* const context = m.at.dialogue->ContextOf(message);
  if (context == nullptr ||
      !IsOfOtherService(message.command_field, context->abstract_syntax)) {
    return;
  }
  m.Add("command-of-wrong-service",
        "sent a " + command + " on presentation context " +
            std::to_string(message.context) + ", which is for " +
            UidText(context->abstract_syntax),
        list);
}

}  // namespace

void FindOddAnswers(const Scene&, const SceneConnection& at,
                    FindingList& list) {
  if (at.dialogue == nullptr) return;
  for (const DialogueMessage& message : at.dialogue->messages) {
    const MessageAt m{at, message,
                      at.dialogue->associations[message.association]};
    if (message.IsAnswer() && message.request) {
      JudgeAnswer(m, list);
    } else if (message.IsRequest()) {
      JudgeRequest(m, list);
    }
  }
}

}  // namespace host
