#include "tracking/number_text.h"

#include <charconv>

namespace dicom {
namespace {

template <typename Number>
void AppendDecimal(std::string& text, Number value) {
  char digits[11];  // "-2147483648"
  const auto end = std::to_chars(std::begin(digits), std::end(digits), value);
  text.append(digits, end.ptr);
}

}  // namespace

void AppendHex(std::string& text, std::uint32_t value, int min_digits) {
  constexpr int kMaxDigits = 8;
  char digits[kMaxDigits];
  int first = kMaxDigits;
  while (value != 0 || kMaxDigits - first < min_digits) {
    digits[--first] = "0123456789ABCDEF"[value & 0xF];
    value >>= 4;
  }
  text.append(digits + first, digits + kMaxDigits);
}

void AppendUnsigned(std::string& text, std::uint32_t value) {
  AppendDecimal(text, value);
}

void AppendSigned(std::string& text, std::int32_t value) {
  AppendDecimal(text, value);
}

std::string TagText(std::uint16_t group, std::uint16_t element) {
  std::string text("(");
  AppendHex(text, group, 4);
  text += ',';
  AppendHex(text, element, 4);
  text += ')';
  return text;
}

}  // namespace dicom
