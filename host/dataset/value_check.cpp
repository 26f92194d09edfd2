#include "host/dataset/value_check.h"

#include <charconv>
#include <cstdint>

#include "host/dataset/date_text.h"
#include "host/dataset/person_name.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr std::size_t kMostOfNameGroup = 64;

bool ConsistsOf(std::string_view text, std::string_view characters) {
  return text.find_first_not_of(characters) == text.npos;
}

std::string_view WithoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

template <class Number>
bool IsWhole(std::string_view text, Number& number) {
  if (text.starts_with('+')) text.remove_prefix(1);
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number);
  return last == end && error == std::errc();
}

bool IsDecimal(std::string_view text) {
  double number = 0;
  return ConsistsOf(text, "0123456789+-.eE") && IsWhole(text, number);
}

bool IsInteger(std::string_view text) {
  std::int32_t number = 0;
  return ConsistsOf(text, "0123456789+-") && IsWhole(text, number);
}

bool IsUid(std::string_view text) {
  for (;;) {
    const std::size_t end = text.find('.');
    const std::string_view component = text.substr(0, end);
    if (component.empty() || !ConsistsOf(component, kDigits)) return false;
    if (component.size() > 1 && component.front() == '0') return false;
    if (end == text.npos) return true;
    text.remove_prefix(end + 1);
  }
}

// Wildcards are of queries.
bool IsCode(std::string_view text) {
  return ConsistsOf(text, "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 _*?");
}

// What a value of the VR is called; null when it is one, or may be anything.
const char* NameOfWhatItIsNot(Vr vr, std::string_view value) {
  const std::string_view core = WithoutBlanks(value);
  switch (vr) {
    case Vr::kAS:
      return AgeText(value) ? nullptr : "age";
    case Vr::kCS:
      return IsCode(value) ? nullptr : "code string";
    case Vr::kDA:
      return DateText(value) ? nullptr : "date";
    case Vr::kDS:
      return IsDecimal(core) ? nullptr : "decimal number";
    case Vr::kDT:
      return DateTimeText(value) ? nullptr : "date and time";
    case Vr::kIS:
      return IsInteger(core) ? nullptr : "integer of 32 bits";
    case Vr::kTM:
      return TimeText(value) ? nullptr : "time";
    case Vr::kUI:
      return IsUid(value) ? nullptr : "UID";
    default:
      return nullptr;
  }
}

bool IsRangeable(Vr vr) {
  return vr == Vr::kDA || vr == Vr::kDT || vr == Vr::kTM;
}

std::string CheckLength(std::size_t length, std::size_t most,
                        std::string_view what) {
  if (most == 0 || length <= most) return {};
  return "a value of " + CountText(length, "character", "characters") +
         " is longer than the " + NumberText(most) + " of " + std::string(what);
}

}  // namespace

std::string CheckValue(Vr vr, std::string_view value) {
  if (value.empty()) return {};
  if (const char* const what = NameOfWhatItIsNot(vr, value)) {
    return '"' + PrintableFromUtf8(value) + "\" is no " + what;
  }
  if (vr == Vr::kPN) {
    const PersonName name = PersonNameOf(value);
    if (name.has_more) return "a name has more than three groups";
    for (const std::string& group : name.groups) {
      const std::string finding =
          CheckLength(ColumnsOf(group), kMostOfNameGroup, "a group of PN");
      if (!finding.empty()) return finding;
    }
    return {};
  }
  if (IsRangeable(vr)) return {};
  return CheckLength(ColumnsOf(value), TraitsOf(vr).most, VrText(vr));
}

bool FitsMultiplicity(std::uint64_t count, std::string_view vm) {
  const std::size_t dash = vm.find('-');
  std::uint64_t least = 0, most = 0;
  const char* const end = vm.data() + vm.size();
  std::from_chars(vm.data(), end, least);
  if (count == 0 || least == 0) return true;
  if (dash == vm.npos) return count == least;
  const bool is_open = vm.ends_with('n');
  const char* const last = vm.data() + dash + 1;
  const bool has_factor = std::from_chars(last, end, most).ec == std::errc();
  if (count < least) return false;
  if (!is_open) return count <= most;
  return !has_factor || count % most == 0;
}

}  // namespace host
