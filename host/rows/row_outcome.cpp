#include "host/rows/row_outcome.h"

#include "host/dialogue/outcome.h"

namespace host {

RowOutcomes::RowOutcomes(const Connection& connection, ListKind list)
    : dialogue_(DialogueOf(connection)),
      records_(list == ListKind::kPdus ? connection.pdus : connection.messages),
      list_(list) {
  if (dialogue_ == nullptr || list_ == ListKind::kPdus) return;
  messages_.resize(records_.size());
  const auto& messages = dialogue_->messages;
  for (std::size_t i = 0; i < messages.size(); ++i) {
    const auto record = messages[i].record;
    if (record && *record < messages_.size()) {
      messages_[*record] = static_cast<std::uint32_t>(i);
    }
  }
}

std::uint32_t RowOutcomes::IndexOf(const WireRecord& record) const {
  return static_cast<std::uint32_t>(&record - records_.data());
}

std::optional<std::uint32_t> RowOutcomes::MessageOf(
    const WireRecord& record) const {
  const std::uint32_t index = IndexOf(record);
  if (index >= messages_.size()) return {};
  return messages_[index];
}

std::string RowOutcomes::Text(const WireRecord& record) const {
  if (dialogue_ == nullptr) return {};
  if (list_ == ListKind::kPdus) return PduOutcome(*dialogue_, IndexOf(record));
  const auto message = MessageOf(record);
  return message ? MessageOutcome(*dialogue_, *message) : std::string();
}

}  // namespace host
