#include "tracking/command_set_walk.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace dicom {
namespace {

struct NamedCommand {
  std::uint16_t field;
  const char* name;
};

// Deliberate: C-STORE is called C-SEND, N-EVENT-REPORT is C-EVENT-REPORT, and
// its response has an underscore.
constexpr NamedCommand kCommands[] = {
    {0x0001, "C-SEND-RQ"},    {0x0010, "C-GET-RQ"},
    {0x0020, "C-FIND-RQ"},    {0x0021, "C-MOVE-RQ"},
    {0x0030, "C-ECHO-RQ"},    {0x0100, "C-EVENT-REPORT-RQ"},
    {0x0110, "N-GET-RQ"},     {0x0120, "N-SET-RQ"},
    {0x0130, "N-ACTION-RQ"},  {0x0140, "N-CREATE-RQ"},
    {0x0150, "N-DELETE-RQ"},  {0x0FFF, "C-CANCEL-RQ"},
    {0x8001, "C-SEND-RSP"},   {0x8010, "C-GET-RSP"},
    {0x8020, "C-FIND-RSP"},   {0x8021, "C-MOVE-RSP"},
    {0x8030, "C-ECHO-RSP"},   {0x8100, "C-EVENT_REPORT-RSP"},
    {0x8110, "N-GET-RSP"},    {0x8120, "N-SET-RSP"},
    {0x8130, "N-ACTION-RSP"}, {0x8140, "N-CREATE-RSP"},
    {0x8150, "N-DELETE-RSP"},
};
static_assert(std::ranges::adjacent_find(kCommands, std::greater_equal{},
                                         &NamedCommand::field) ==
                  std::ranges::end(kCommands),
              "ascending, no value twice");

}  // namespace

std::optional<CommandElement> CommandElementAt(const ByteArrayView& command_set,
                                               std::uint32_t position) {
  if (position >= command_set.Length()) return std::nullopt;
  return CommandElement{
      .group = command_set.WordAt(position, kLittleEndian),
      .element = command_set.WordAt(position + 2, kLittleEndian),
      .value_offset = position + 8,
      .value_length = command_set.LongAt(position + 4, kLittleEndian)};
}

const char* CommandName(std::uint16_t command_field) {
  const auto* found = std::ranges::lower_bound(kCommands, command_field, {},
                                               &NamedCommand::field);
  if (found == std::ranges::end(kCommands) || found->field != command_field) {
    return "Unknown Type";
  }
  return found->name;
}

}  // namespace dicom
