#include "host/dataset/command_values.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "host/text/number_text.h"

namespace host {
namespace {

constexpr Tag kCommandField{0x0000, 0x0100};
constexpr Tag kPriority{0x0000, 0x0700};
constexpr Tag kDataSetType{0x0000, 0x0800};
constexpr Tag kStatus{0x0000, 0x0900};

struct NamedValue {
  Tag tag;
  std::uint16_t value;
  std::string_view text;
};

constexpr NamedValue kValues[] = {
    {kCommandField, 0x0001, "C-STORE-RQ"},
    {kCommandField, 0x8001, "C-STORE-RSP"},
    {kCommandField, 0x0010, "C-GET-RQ"},
    {kCommandField, 0x8010, "C-GET-RSP"},
    {kCommandField, 0x0020, "C-FIND-RQ"},
    {kCommandField, 0x8020, "C-FIND-RSP"},
    {kCommandField, 0x0021, "C-MOVE-RQ"},
    {kCommandField, 0x8021, "C-MOVE-RSP"},
    {kCommandField, 0x0030, "C-ECHO-RQ"},
    {kCommandField, 0x8030, "C-ECHO-RSP"},
    {kCommandField, 0x0100, "N-EVENT-REPORT-RQ"},
    {kCommandField, 0x8100, "N-EVENT-REPORT-RSP"},
    {kCommandField, 0x0110, "N-GET-RQ"},
    {kCommandField, 0x8110, "N-GET-RSP"},
    {kCommandField, 0x0120, "N-SET-RQ"},
    {kCommandField, 0x8120, "N-SET-RSP"},
    {kCommandField, 0x0130, "N-ACTION-RQ"},
    {kCommandField, 0x8130, "N-ACTION-RSP"},
    {kCommandField, 0x0140, "N-CREATE-RQ"},
    {kCommandField, 0x8140, "N-CREATE-RSP"},
    {kCommandField, 0x0150, "N-DELETE-RQ"},
    {kCommandField, 0x8150, "N-DELETE-RSP"},
    {kCommandField, 0x0FFF, "C-CANCEL-RQ"},
    {kPriority, 0, "medium"},
    {kPriority, 1, "high"},
    {kPriority, 2, "low"},
    {kDataSetType, 0x0101, "no data set"},
};

}  // namespace

std::string CommandValueText(Tag tag, std::uint64_t value) {
  const auto* const found =
      std::ranges::find_if(kValues, [&](const NamedValue& row) {
        return row.tag == tag && row.value == value;
      });
  if (found != std::end(kValues)) return std::string(found->text);
  if (tag == kStatus) return HexText(static_cast<std::uint16_t>(value));
  return tag == kDataSetType ? "a data set follows" : "";
}

}  // namespace host
