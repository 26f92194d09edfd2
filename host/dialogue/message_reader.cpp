#include "host/dialogue/message_reader.h"

#include <algorithm>
#include <utility>

namespace host {
namespace {

constexpr std::uint64_t kMostKept = 32;  // irregularities of a kind

}  // namespace

void NoteIrregularity(Irregularity irregularity, Dialogue& dialogue) {
  auto& count =
      dialogue.irregularity_counts[static_cast<std::size_t>(irregularity.kind)];
  if (++count <= kMostKept) {
    dialogue.irregularities.push_back(std::move(irregularity));
  }
}

std::optional<std::uint32_t> MessageReader::Read(const ReadItem& item) {
  CheckOrder(item);
  const bool is_command = item.header.IsCommand();
  if (is_command && stage_ != Stage::kCommand) BeginMessage(item);
  if (!open_) return {};
  AddPiece(item);
  DialogueMessage& message = Open();
  if (!item.header.IsLast()) {
    stage_ = is_command ? Stage::kCommand : Stage::kData;
    return {};
  }
  if (!is_command) {
    message.data_set_complete = true;
    message.pieces.shrink_to_fit();
    stage_ = Stage::kNone;
    open_.reset();
    return {};
  }
  message.command_complete = true;
  // Only the command set says whether a data set follows; a fragment that comes
  // shows it as well.
  stage_ = Stage::kBeforeData;
  return open_;
}

void MessageReader::CheckOrder(const ReadItem& item) {
  const bool is_command = item.header.IsCommand();
  const bool begins = is_command && stage_ != Stage::kCommand;
  if (!open_) {
    if (!is_command && in_step_) {
      Note(IrregularityKind::kDataWithoutCommand, item, 0, item.header.context);
    }
    return;
  }
  const DialogueMessage& message = Open();
  if (stage_ == Stage::kBeforeData && !message.announces_data_set) {
    open_.reset();
    stage_ = Stage::kNone;
    return CheckOrder(item);
  }
  if (item.header.context != message.context &&
      (!begins || stage_ == Stage::kData)) {
    if (in_step_) {
      Note(IrregularityKind::kInterleavedFragments, item, message.context,
           item.header.context);
    }
  } else if (begins || (!is_command && stage_ == Stage::kCommand)) {
    NoteUnfinished(item);
  }
}

void MessageReader::NoteUnfinished(const ReadItem& next) {
  if (!in_step_) return;
  const DialogueMessage& message = Open();
  Note(IrregularityKind::kMissingLastFragment, next,
       stage_ == Stage::kCommand ? 0 : 1,
       stage_ == Stage::kCommand ? message.command_bytes : message.data_bytes);
}

void MessageReader::BeginMessage(const ReadItem& item) {
  open_ = static_cast<std::uint32_t>(dialogue_.messages.size());
  const DialoguePdu& pdu = dialogue_.pdus[item.value.pdu];
  in_step_ = !pdu.has_lost_bytes;
  DialogueMessage message;
  message.direction = direction_;
  message.association = item.association;
  message.context = item.header.context;
  message.first_frame = pdu.first_frame;
  message.first_time = pdu.time;
  dialogue_.messages.push_back(std::move(message));
}

void MessageReader::AddPiece(const ReadItem& item) {
  DialogueMessage& message = Open();
  message.pieces.push_back(item.value);
  if (item.header.IsCommand()) {
    message.command_bytes += item.value.length;
  } else {
    message.data_bytes += item.value.length;
    ++message.data_pieces;
  }
  const DialoguePdu& pdu = dialogue_.pdus[item.value.pdu];
  message.last_frame = std::max(message.last_frame, pdu.last_frame);
  message.last_time = std::max(message.last_time, pdu.time);
}

void MessageReader::ForgetStep() { in_step_ = false; }

void MessageReader::BeginAssociation() {
  in_step_ = true;
  open_.reset();
  stage_ = Stage::kNone;
}

void MessageReader::Note(IrregularityKind kind, const ReadItem& item,
                         std::uint64_t expected, std::uint64_t found) {
  Irregularity irregularity;
  irregularity.kind = kind;
  irregularity.place = dialogue_.PlaceOfPdu(item.value.pdu);
  irregularity.expected = expected;
  irregularity.found = found;
  irregularity.association = item.association;
  irregularity.message = open_;
  NoteIrregularity(std::move(irregularity), dialogue_);
}

}  // namespace host
