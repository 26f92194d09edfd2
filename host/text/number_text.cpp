#include "host/text/number_text.h"

#include <charconv>
#include <system_error>

namespace host {

std::string NumberText(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) {
    at -= 3;
    text.insert(at, 1, ',');
  }
  return text;
}

std::string CountText(std::uint64_t count, std::string_view one,
                      std::string_view many) {
  return NumberText(count).append(" ").append(count == 1 ? one : many);
}

std::optional<std::uint32_t> IndexFromText(std::string_view number) {
  std::string digits(number);
  std::erase(digits, ',');
  std::uint32_t value = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value);
  if (error != std::errc() || stop != end || value == 0) return {};
  return value - 1;
}

std::string BytesText(std::uint64_t count) {
  return CountText(count, "byte", "bytes");
}

std::string HexText(std::uint16_t number) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (int shift = 12; shift >= 0; shift -= 4) {
    text += kDigits[number >> shift & 0xF];
  }
  return text + "h";
}

}  // namespace host
