#include "host/dataset/date_text.h"

#include <chrono>
#include <span>

#include "host/text/number_text.h"

namespace host {
namespace {

bool AreDigits(std::string_view text) {
  return text.find_first_not_of("0123456789") == text.npos;
}

int NumberOf(std::string_view digits) {
  int number = 0;
  for (const char digit : digits) number = number * 10 + (digit - '0');
  return number;
}

// Takes a value apart from its front.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  bool AtEnd() const { return rest_.empty(); }
  bool NextIsDigit() const {
    return !rest_.empty() && AreDigits(rest_.substr(0, 1));
  }
  bool Take(char character) {
    if (!rest_.starts_with(character)) return false;
    rest_.remove_prefix(1);
    return true;
  }
  // As many digits, standing for a number from `least` to `most`.
  std::optional<std::string> TakeNumber(std::size_t digits, int least,
                                        int most) {
    const std::string_view text = rest_.substr(0, digits);
    if (text.size() < digits || !AreDigits(text)) return {};
    if (NumberOf(text) < least || NumberOf(text) > most) return {};
    rest_.remove_prefix(digits);
    return std::string(text);
  }
  std::string TakeDigits() {
    const std::string_view text =
        rest_.substr(0, rest_.find_first_not_of("0123456789"));
    rest_.remove_prefix(text.size());
    return std::string(text);
  }

 private:
  std::string_view rest_;
};

// One part of a date or time with what people write before it.
struct Part {
  char before;
  std::size_t digits;
  int least, most;
};
constexpr Part kDateParts[] = {
    {0, 4, 0, 9999}, {'-', 2, 1, 12}, {'-', 2, 1, 31}};
// A leap second is a second.
constexpr Part kTimeParts[] = {{0, 2, 0, 23}, {':', 2, 0, 59}, {':', 2, 0, 60}};

// At least the first part, and all that follow in digits. False when one of
// them is wrong.
bool TakeParts(std::span<const Part> parts, Scanner& scanner,
               std::string& text) {
  for (const Part& part : parts) {
    if (part.before != 0 && !scanner.NextIsDigit()) return true;
    const auto number = scanner.TakeNumber(part.digits, part.least, part.most);
    if (!number) return false;
    if (part.before != 0) text += part.before;
    text += *number;
  }
  return true;
}

bool TakeClock(Scanner& scanner, std::string& text) {
  const std::size_t begin = text.size();
  if (!TakeParts(kTimeParts, scanner, text)) return false;
  const bool has_seconds = text.size() - begin == 8;
  if (!has_seconds || !scanner.Take('.')) return true;
  const std::string fraction = scanner.TakeDigits();
  text += "." + fraction;
  return !fraction.empty() && fraction.size() <= 6;
}

bool IsDay(std::string_view date) {
  if (date.size() < 10) return true;
  return std::chrono::year_month_day(
             std::chrono::year(NumberOf(date.substr(0, 4))),
             std::chrono::month(
                 static_cast<unsigned>(NumberOf(date.substr(5, 2)))),
             std::chrono::day(
                 static_cast<unsigned>(NumberOf(date.substr(8, 2)))))
      .ok();
}

using OneText = std::optional<std::string>(std::string_view);

std::optional<std::string> OneDate(std::string_view value) {
  std::string text;
  Scanner scanner(value);
  const bool is_date = TakeParts(kDateParts, scanner, text) && scanner.AtEnd();
  if (!is_date || text.size() != 10 || !IsDay(text)) return {};
  return text;
}

std::optional<std::string> OneTime(std::string_view value) {
  std::string text;
  Scanner scanner(value);
  if (!TakeClock(scanner, text) || !scanner.AtEnd()) return {};
  return text;
}

std::optional<std::string> OneDateTime(std::string_view value) {
  std::string text;
  Scanner scanner(value);
  if (!TakeParts(kDateParts, scanner, text) || !IsDay(text)) return {};
  if (scanner.NextIsDigit()) {
    text += ' ';
    if (!TakeClock(scanner, text)) return {};
  }
  if (scanner.AtEnd()) return text;
  const bool is_plus = scanner.Take('+');
  if (!is_plus && !scanner.Take('-')) return {};
  const auto hours = scanner.TakeNumber(2, 0, 14);
  const auto minutes = scanner.TakeNumber(2, 0, 59);
  if (!hours || !minutes || !scanner.AtEnd()) return {};
  return text + (is_plus ? " +" : " -") + *hours + ":" + *minutes;
}

// A "-" may be the range's or belong to an offset from UTC.
std::optional<std::string> OneOrRange(std::string_view value, OneText* one) {
  if (const auto whole = one(value)) return whole;
  if (value.size() == 1) return {};
  if (value.starts_with('-')) {
    const auto last = one(value.substr(1));
    return last ? std::optional("until " + *last) : last;
  }
  for (std::size_t at = value.find('-'); at != value.npos;
       at = value.find('-', at + 1)) {
    const auto first = one(value.substr(0, at));
    if (!first) continue;
    if (at + 1 == value.size()) return "from " + *first;
    if (const auto last = one(value.substr(at + 1))) {
      return *first + " to " + *last;
    }
  }
  return {};
}

}  // namespace

std::optional<std::string> DateText(std::string_view value) {
  return OneOrRange(value, OneDate);
}

std::optional<std::string> TimeText(std::string_view value) {
  return OneOrRange(value, OneTime);
}

std::optional<std::string> DateTimeText(std::string_view value) {
  return OneOrRange(value, OneDateTime);
}

std::optional<std::string> AgeText(std::string_view value) {
  constexpr struct {
    char letter;
    std::string_view one, many;
  } kUnits[] = {{'D', "day", "days"},
                {'W', "week", "weeks"},
                {'M', "month", "months"},
                {'Y', "year", "years"}};
  if (value.size() != 4 || !AreDigits(value.substr(0, 3))) return {};
  for (const auto& unit : kUnits) {
    if (unit.letter != value[3]) continue;
    const int count = NumberOf(value.substr(0, 3));
    return CountText(static_cast<std::uint64_t>(count), unit.one, unit.many);
  }
  return {};
}

}  // namespace host
