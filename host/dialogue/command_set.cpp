#include "host/dialogue/command_set.h"

#include <bit>
#include <string>

#include "host/capture/wire_bytes.h"
#include "host/dialogue/associate_pdu.h"

namespace host {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint16_t kCommandGroup = 0x0000;
constexpr std::size_t kMostOffendingElements = 64;

std::optional<std::uint16_t> NumberIn(Bytes value) {
  WireReader in(value, std::endian::little);
  const std::uint16_t number = in.Word16();
  if (!in.ok()) return {};
  return number;
}

std::vector<Tag> TagsIn(Bytes value) {
  std::vector<Tag> tags;
  WireReader in(value, std::endian::little);
  while (tags.size() < kMostOffendingElements) {
    const std::uint16_t group = in.Word16();
    const std::uint16_t element = in.Word16();
    if (!in.ok()) break;
    tags.push_back({group, element});
  }
  return tags;
}

// Affected comes before Requested, wherever both are.
void TakeUid(Bytes value, bool is_affected, std::string& uid) {
  if (is_affected || uid.empty()) uid = TrimmedText(value);
}

void TakeElement(std::uint16_t element, Bytes value, CommandSet& set) {
  switch (element) {
    case 0x0002:
    case 0x0003:
      return TakeUid(value, element == 0x0002, set.sop_class);
    case 0x0100:
      set.command_field = NumberIn(value);
      break;
    case 0x0110:
      set.message_id = NumberIn(value);
      break;
    case 0x0120:
      set.responded_to = NumberIn(value);
      break;
    case 0x0600:
      set.move_destination = TrimmedText(value);
      break;
    case 0x0700:
      set.priority = NumberIn(value);
      break;
    case 0x0800:
      set.data_set_type = NumberIn(value);
      break;
    case 0x0900:
      set.status = NumberIn(value);
      break;
    case 0x0901:
      set.offending_elements = TagsIn(value);
      break;
    case 0x0902:
      set.error_comment = TrimmedText(value);
      break;
    case 0x0903:
      set.error_id = NumberIn(value);
      break;
    case 0x1000:
    case 0x1001:
      return TakeUid(value, element == 0x1000, set.sop_instance);
    case 0x1002:
      set.event_type = NumberIn(value);
      break;
    case 0x1008:
      set.action_type = NumberIn(value);
      break;
    case 0x1020:
      set.sub_operations.remaining = NumberIn(value);
      break;
    case 0x1021:
      set.sub_operations.completed = NumberIn(value);
      break;
    case 0x1022:
      set.sub_operations.failed = NumberIn(value);
      break;
    case 0x1023:
      set.sub_operations.warning = NumberIn(value);
      break;
    case 0x1030:
      set.move_originator_title = TrimmedText(value);
      break;
    case 0x1031:
      set.move_originator_id = NumberIn(value);
      break;
    default:
      break;
  }
}

}  // namespace

CommandSet ReadCommandSet(Bytes bytes) {
  CommandSet set;
  WireReader in(bytes, std::endian::little);
  while (!in.rest().empty()) {
    const std::uint16_t group = in.Word16();
    const std::uint16_t element = in.Word16();
    const std::uint32_t length = in.Word32();
    const Bytes value = in.Bytes(length);
    if (!in.ok() || group != kCommandGroup) {
      set.is_damaged = true;
      break;
    }
    TakeElement(element, value, set);
  }
  set.is_damaged |= !set.command_field;
  return set;
}

}  // namespace host
