#include "host/dataset/value_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <functional>

#include "host/dataset/command_values.h"
#include "host/dataset/date_text.h"
#include "host/dataset/person_name.h"
#include "host/dataset/registry.h"
#include "host/dataset/value_check.h"
#include "host/dataset/value_list.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

constexpr std::size_t kShownBytesOfStream = 16;
constexpr std::string_view kMore = "...";
constexpr std::size_t kMostMeanings = 8;

std::string HexText(std::span<const std::uint8_t> bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    std::array<char, 4> digits{};
    std::snprintf(digits.data(), digits.size(), "%02X", byte);
    if (!text.empty()) text += ' ';
    text += digits.data();
  }
  return text;
}

std::string UidText(std::string_view uid) {
  const auto entry = FindUid(uid);
  if (!entry) return {};
  return std::string(entry->name) + (entry->retired ? " (Retired)" : "");
}

std::string NameOfTag(std::string_view value) {
  Tag tag;
  std::from_chars(value.data(), value.data() + 4, tag.group, 16);
  std::from_chars(value.data() + 5, value.data() + 9, tag.element, 16);
  const auto entry = FindElement(tag);
  return std::string(entry ? entry->name : "");
}

// The unit that a name ends in, "ms" of "Exposure Time in ms" or of "Delta
// Start Time [ms]"; empty when it has none.
std::string_view UnitOf(std::string_view name) {
  constexpr std::pair<std::string_view, std::string_view> kUnits[] = {
      {"ms", "ms"},       {"msec", "ms"}, {"milliseconds", "ms"},
      {"uS", "us"},       {"s", "s"},     {"sec", "s"},
      {"mm", "mm"},       {"cm", "cm"},   {"mA", "mA"},
      {"uA", "uA"},       {"mAs", "mAs"}, {"uAs", "uAs"},
      {"mGy", "mGy"},     {"Hz", "Hz"},   {"degree", "degrees"},
      {"bytes", "bytes"}, {"MB", "MB"},   {"percent", "%"},
  };
  const bool in_brackets = name.ends_with(']') || name.ends_with(')');
  if (in_brackets) name.remove_suffix(1);
  const std::size_t at = name.find_last_of(in_brackets ? "[(" : " ");
  if (at == name.npos || at == 0) return {};
  const std::string_view before = name.substr(0, at);
  // Not "Depth(s)", a plural.
  if (in_brackets ? name[at] == '(' && before.back() != ' '
                  : !before.ends_with(" in")) {
    return {};
  }
  const auto* const found = std::ranges::find(
      kUnits, name.substr(at + 1), [](const auto& unit) { return unit.first; });
  return found == std::end(kUnits) ? std::string_view() : found->second;
}

std::string WithUnit(const DataSetEvent& event, std::string_view value) {
  const std::string_view unit =
      event.entry ? UnitOf(event.entry->name) : std::string_view();
  return unit.empty() ? std::string()
                      : std::string(value).append(" ").append(unit);
}

std::string MeaningOf(const DataSetEvent& event, const std::string& value) {
  if (value.empty()) return {};
  switch (event.value_vr) {
    case Vr::kAS:
      return AgeText(value).value_or("");
    case Vr::kAT:
      return NameOfTag(value);
    case Vr::kDA:
      return DateText(value).value_or("");
    case Vr::kDT:
      return DateTimeText(value).value_or("");
    case Vr::kPN:
      return ComponentsText(PersonNameOf(value));
    case Vr::kTM:
      return TimeText(value).value_or("");
    case Vr::kUI:
      return UidText(value);
    case Vr::kUS:
      if (event.tag.group == 0) {
        return CommandValueText(event.tag,
                                static_cast<std::uint64_t>(std::stoul(value)));
      }
      return WithUnit(event, value);
    case Vr::kDS:
    case Vr::kFD:
    case Vr::kFL:
    case Vr::kIS:
    case Vr::kSL:
    case Vr::kSS:
    case Vr::kUL:
      return WithUnit(event, value);
    default:
      return {};
  }
}

template <class TextOf>
std::string Joined(const std::vector<std::string>& values,
                   std::string_view between, TextOf text_of) {
  std::string text;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) text += between;
    text += text_of(values[i]);
  }
  return text;
}

// Empty when none of the values has one.
std::string MeaningOf(const DataSetEvent& event,
                      std::vector<std::string> values) {
  bool any = false;
  const bool is_long = values.size() > kMostMeanings;
  if (is_long) values.resize(kMostMeanings);
  const std::string text = Joined(values, "; ", [&](const std::string& value) {
    std::string meaning = MeaningOf(event, value);
    any = any || !meaning.empty();
    return meaning.empty() ? "?" : meaning;
  });
  if (!any) return {};
  return is_long ? text + "; " + std::string(kMore) : text;
}

std::uint64_t CountOf(const DataSetEvent& event, const ValueList& list) {
  const std::uint8_t width = TraitsOf(event.value_vr).width;
  return width > 1 ? event.available / width : list.values.size();
}

std::string FindingOf(const DataSetEvent& event, const ValueList& list) {
  if (!list.finding.empty()) return list.finding;
  const std::size_t whole =
      list.values.size() - (list.is_cut && !list.values.empty() ? 1 : 0);
  for (std::size_t i = 0; i < whole; ++i) {
    std::string finding = CheckValue(event.value_vr, list.values[i]);
    if (!finding.empty()) return finding;
  }
  const std::uint64_t count = CountOf(event, list);
  const bool is_list = event.value_vr == Vr::kUI;  // as queries have them
  const bool is_empty =
      count == 1 && list.values.size() == 1 && list.values.front().empty();
  if (event.kind != DataSetEvent::Kind::kElement || !event.entry || is_list ||
      is_empty || list.is_cut || FitsMultiplicity(count, event.entry->vm)) {
    return {};
  }
  return CountText(count, "value is", "values are") + " not the " +
         std::string(event.entry->vm) + " that it may have";
}

ShownValue ShowStream(const DataSetEvent& event,
                      std::span<const std::uint8_t> bytes) {
  ShownValue shown;
  shown.text =
      HexText(bytes.first(std::min(bytes.size(), kShownBytesOfStream)));
  if (event.available > kShownBytesOfStream) shown.text += kMore;
  shown.meaning = BytesText(event.available);
  return shown;
}

}  // namespace

ShownValue ShowValue(const DataSetEvent& event,
                     std::span<const std::uint8_t> bytes,
                     const CharacterSet& characters) {
  if (TraitsOf(event.value_vr).kind == VrKind::kBytes) {
    return ShowStream(event, bytes);
  }
  const ValueList list = ReadValues(event, bytes, characters);
  ShownValue shown;
  shown.text = PrintableFromUtf8(Joined(list.values, "\\", std::identity()));
  shown.finding = FindingOf(event, list);
  if (list.is_cut) {
    shown.text += kMore;
    return shown;
  }
  const bool is_offset_table = event.kind == DataSetEvent::Kind::kFragment;
  shown.meaning =
      is_offset_table
          ? "offsets of " + CountText(list.values.size(), "frame", "frames")
          : PrintableFromUtf8(MeaningOf(event, list.values));
  return shown;
}

}  // namespace host
