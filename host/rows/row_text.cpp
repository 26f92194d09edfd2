#include "host/rows/row_text.h"

#include <charconv>
#include <string_view>

#include "host/streams/dimse_status.h"

namespace host {
namespace {

constexpr std::string_view kMessageId = "Message Id: ";

RowKind KindOfSummary(std::string_view summary) {
  if (summary.starts_with("A-ABORT")) return RowKind::kFault;
  if (summary.starts_with("A-ASSOCIATE-RJ")) return RowKind::kFault;
  if (summary.starts_with("A-ASSOCIATE")) return RowKind::kAssociate;
  if (summary.starts_with("A-RELEASE")) return RowKind::kRelease;
  return RowKind::kPlain;
}

// "C-FIND" of "C-FIND-RQ" and of "C-FIND-RSP".
std::string_view Service(std::string_view summary) {
  return summary.substr(0, summary.rfind('-'));
}

}  // namespace

RowKind KindOf(const ListedRow& row, const WireRecord* wire) {
  if (wire != nullptr && wire->status) {
    const StatusKind status = KindOfStatus(*wire->status);
    if (status == StatusKind::kFailure) return RowKind::kFault;
    if (status == StatusKind::kWarning) return RowKind::kWarning;
  }
  if (wire != nullptr && !wire->note.empty()) return RowKind::kWarning;
  return KindOfSummary(row.summary);
}

std::optional<std::uint32_t> MessageIdOf(const ListedRow& row) {
  if (!row.detail.starts_with(kMessageId)) return {};
  std::uint32_t id = 0;
  const char* end = row.detail.data() + row.detail.size();
  const auto result =
      std::from_chars(row.detail.data() + kMessageId.size(), end, id);
  if (result.ec != std::errc()) return {};
  return id;
}

bool IsResponse(const ListedRow& row) { return row.summary.ends_with("-RSP"); }

bool AreCommandAndResponse(const ListedRow& one, const ListedRow& other) {
  const auto id = MessageIdOf(one);
  return id && id == MessageIdOf(other) && one.direction != other.direction &&
         IsResponse(one) != IsResponse(other) &&
         Service(one.summary) == Service(other.summary);
}

}  // namespace host
