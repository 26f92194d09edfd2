#include "host/dialogue/message_linker.h"

#include <algorithm>
#include <utility>

#include "host/dataset/command_values.h"
#include "host/dialogue/associate_pdu.h"
#include "host/dialogue/message_reader.h"

namespace host {
namespace {

constexpr std::uint16_t kNoDataSet = 0x0101;

bool IsKnownCommand(std::uint16_t command_field) {
  constexpr Tag kCommandField{0x0000, 0x0100};
  return !CommandValueText(kCommandField, command_field).empty();
}

}  // namespace

bool IsPendingStatus(std::optional<std::uint16_t> status) {
  return status == 0xFF00 || status == 0xFF01;
}

void MessageLinker::Link(std::uint32_t index) {
  DialogueMessage& message = dialogue_.messages[index];
  const CommandSet set = dialogue_.ReadCommand(message);
  TakeCommand(set, message);
  CheckCommand(set, index);
  if (message.has_command_field) {
    message.IsAnswer() ? LinkAnswer(index, message)
                       : LinkRequest(index, message);
  }
  UseContext(message);
}

void MessageLinker::CheckCommand(const CommandSet& set, std::uint32_t index) {
  const DialogueMessage& message = dialogue_.messages[index];
  const auto has_lost_bytes = [this](const PdvPiece& piece) {
    return dialogue_.pdus[piece.pdu].has_lost_bytes;
  };
  if (std::ranges::any_of(message.pieces, has_lost_bytes)) return;
  if (set.is_damaged) {
    return Note(IrregularityKind::kDamagedCommand, index, 0, 0);
  }
  if (!IsKnownCommand(message.command_field)) {
    Note(IrregularityKind::kUnknownCommand, index, 0, message.command_field);
  }
  std::vector<Irregularity> problems;
  CheckUid(set.sop_class, problems);
  CheckUid(set.sop_instance, problems);
  const auto require = [&problems](bool is_there, const char* name) {
    if (is_there) return;
    problems.push_back(
        {IrregularityKind::kMissingElement, {}, 0, 0, name, {}, {}});
  };
  const bool is_cancel = message.command_field == kCCancelRq;
  require(message.message_id.has_value(), message.IsAnswer() || is_cancel
                                              ? "Message ID Being Responded To"
                                              : "Message ID");
  require(message.status || !message.IsAnswer(), "Status");
  for (Irregularity& problem : problems) NoteAt(index, std::move(problem));
}

void MessageLinker::TakeCommand(const CommandSet& set,
                                DialogueMessage& message) {
  message.has_command_field = set.command_field.has_value();
  message.command_field = set.command_field.value_or(0);
  const bool refers = message.IsAnswer() || message.command_field == kCCancelRq;
  message.message_id = refers ? set.responded_to : set.message_id;
  message.status = set.status;
  message.sop_class = Keep(set.sop_class);
  message.announces_data_set =
      set.data_set_type && *set.data_set_type != kNoDataSet;
}

std::string_view MessageLinker::Keep(const std::string& text) {
  if (text.empty()) return {};
  return *texts_.insert(text).first;
}

void MessageLinker::LinkRequest(std::uint32_t index, DialogueMessage& message) {
  if (!message.message_id) return;
  const std::uint16_t id = *message.message_id;
  MessagesById& open = open_[message.direction];
  if (message.command_field == kCCancelRq) {
    const auto found = open.find(id);
    if (found != open.end()) message.request = found->second;
    return;
  }
  if (message.command_field == kCGetRq) get_[message.direction] = index;
  if (message.command_field == kCStoreRq) {
    message.parent = get_[1 - message.direction];
  }
  open[id] = index;
  // Where both directions are captured in two places, an answer may stand
  // before its request.
  MessagesById& unasked = unasked_[1 - message.direction];
  const auto early = unasked.find(id);
  if (early == unasked.end()) return;
  const std::uint32_t answer = early->second;
  unasked.erase(early);
  const std::uint16_t answered =
      dialogue_.messages[answer].command_field & ~kAnswerBit;
  if (answered == message.command_field) LinkPair(index, answer);
}

void MessageLinker::LinkAnswer(std::uint32_t index, DialogueMessage& message) {
  if (!message.message_id) return;
  MessagesById& open = open_[1 - message.direction];
  const auto found = open.find(*message.message_id);
  if (found == open.end()) {
    unasked_[message.direction].emplace(*message.message_id, index);
    return;
  }
  LinkPair(found->second, index);
}

void MessageLinker::LinkPair(std::uint32_t request, std::uint32_t answer) {
  DialogueMessage& asked = dialogue_.messages[request];
  DialogueMessage& answered = dialogue_.messages[answer];
  answered.request = request;
  asked.last_answer = answer;
  ++asked.answers;
  if (answered.sop_class.empty()) answered.sop_class = asked.sop_class;
  const std::uint16_t expected = asked.command_field | kAnswerBit;
  if (answered.command_field != expected) {
    Note(IrregularityKind::kWrongAnswer, answer, expected,
         answered.command_field);
  }
  if (answered.context != asked.context) {
    Note(IrregularityKind::kAnswerOnOtherContext, answer, asked.context,
         answered.context);
  }
  if (IsPendingStatus(answered.status)) return;
  open_[asked.direction].erase(*asked.message_id);
  if (get_[asked.direction] == request) get_[asked.direction].reset();
}

void MessageLinker::UseContext(DialogueMessage& message) {
  Association& association = dialogue_.associations[message.association];
  for (PresentationContext& context : association.contexts) {
    if (context.id != message.context) continue;
    ++context.messages;
    if (message.sop_class.empty()) {
      message.sop_class = Keep(context.abstract_syntax);
    }
    return;
  }
  if (association.request || association.accept) return;
  PresentationContext context;
  context.id = message.context;
  context.messages = 1;
  association.contexts.push_back(std::move(context));
}

void MessageLinker::EndAssociation(bool is_whole) {
  for (const MessagesById& unasked : unasked_) {
    for (const auto& [id, message] : unasked) {
      if (is_whole) Note(IrregularityKind::kUnaskedAnswer, message, 0, id);
    }
  }
  open_ = {};
  unasked_ = {};
  get_ = {};
}

void MessageLinker::Note(IrregularityKind kind, std::uint32_t message,
                         std::uint64_t expected, std::uint64_t found) {
  NoteAt(message, {kind, {}, expected, found, {}, {}, {}});
}

void MessageLinker::NoteAt(std::uint32_t message, Irregularity irregularity) {
  const DialogueMessage& one = dialogue_.messages[message];
  irregularity.place = dialogue_.PlaceOfPdu(one.pieces.back().pdu);
  irregularity.association = one.association;
  irregularity.message = message;
  NoteIrregularity(std::move(irregularity), dialogue_);
}

}  // namespace host
