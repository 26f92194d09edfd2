#include "dimse/value_format.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

#include "dimse/dicom_dictionary.h"
#include "tracking/number_text.h"

namespace dicom {
namespace {

// The longest text of LT, ST and UT that is shown.
constexpr std::uint32_t kMaxLongText = 128;

std::string Hex(std::uint32_t value, int min_digits) {
  std::string text;
  AppendHex(text, value, min_digits);
  text += 'h';
  return text;
}

std::string Signed(std::int32_t value) {
  std::string text;
  AppendSigned(text, value);
  return text;
}

// Deliberate: the decimal of an unsigned value is signed.
std::string HexAndSigned(std::uint32_t value, int min_digits) {
  std::string text = Hex(value, min_digits);
  text += ", ";
  AppendSigned(text, static_cast<std::int32_t>(value));
  return text;
}

std::string Scientific(double value, int precision) {
  char digits[96];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), value,
                                 std::chars_format::scientific, precision);
  return {digits, end.ptr};
}

// Whether `value` lies exactly between two numbers of six decimals: ...5000.
// Sixty decimals tell it from every double close to such a number.
bool IsTieAtSixDecimals(double value) {
  const std::string digits = Scientific(value, 60);
  const std::string_view rest =
      std::string_view(digits).substr(digits.find('.') + 7);
  return rest[0] == '5' && rest.find_first_not_of('0', 1) == rest.find('e');
}

// "%e" as the Windows runtime prints it: three exponent digits, ties rounded
// away from zero, infinities and NaNs by its own names.
std::string Exponential(double value) {
  const bool negative = std::signbit(value);
  if (std::isnan(value)) return negative ? "-1.#IND00e+000" : "1.#QNAN0e+000";
  if (std::isinf(value)) return negative ? "-1.#INF00e+000" : "1.#INF00e+000";
  if (IsTieAtSixDecimals(value)) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    value = std::nextafter(value, negative ? -kInfinity : kInfinity);
  }
  std::string text = Scientific(value, 6);
  const std::size_t exponent = text.find('e') + 2;
  text.insert(exponent, 3 - std::min<std::size_t>(3, text.size() - exponent),
              '0');
  return text;
}

float FloatAt(const ByteArrayView& bytes, std::uint32_t position,
              std::uint32_t order) {
  return std::bit_cast<float>(bytes.LongAt(position, order));
}

double DoubleAt(const ByteArrayView& bytes, std::uint32_t position,
                std::uint32_t order) {
  bytes.RequireBytes(position, 8);
  const std::uint64_t first = bytes.LongAt(position, order);
  const std::uint64_t second = bytes.LongAt(position + 4, order);
  return std::bit_cast<double>(order == kBigEndian ? first << 32 | second
                                                   : second << 32 | first);
}

std::string Characters(const ByteArrayView& bytes, std::uint32_t position,
                       std::uint32_t length) {
  return std::string(bytes.CharactersAt(position, length));
}

}  // namespace

std::string ByteDecimal(std::uint8_t value) { return Signed(value); }

std::string ByteHex(std::uint8_t value) { return Hex(value, 2); }

std::string WordHex(std::uint16_t value) { return Hex(value, 4); }

std::string WordHexAndDecimal(std::uint16_t value) {
  return HexAndSigned(value, 4);
}

std::string LongHex(std::uint32_t value) { return Hex(value, 8); }

std::string LongHexAndDecimal(std::uint32_t value) {
  return HexAndSigned(value, 8);
}

std::string HexAndDecimal(std::uint32_t value) {
  return HexAndSigned(value, 1);
}

std::string Unsigned(std::uint32_t value) {
  std::string text;
  AppendUnsigned(text, value);
  return text;
}

// Deliberate: one zero byte at most, and no blank, is removed.
std::string UidText(std::string characters) {
  if (characters.ends_with('\0')) characters.pop_back();
  return characters;
}

// Deliberate: what has a fixed width is read in that width whatever the value
// length says, 0 too, and only the first value is shown. An unknown VR, OB, OW,
// SQ and the default show a word of their own and check no bounds.
std::string ValueText(const ByteArrayView& bytes, std::uint32_t position,
                      std::uint32_t length, std::uint32_t order,
                      std::int32_t vr_code) {
  switch (vr_code) {
    case kVrUnknown:
      // Deliberate: the leading blank, so that the line has two.
      return " Unknown Type";
    case kVrAs:  // Deliberate: always four bytes
      return Characters(bytes, position, 4);
    case kVrAt:
      bytes.RequireBytes(position, 4);
      return TagText(bytes.WordAt(position, order),
                     bytes.WordAt(position + 2, order));
    case kVrAe:
    case kVrCs:
    case kVrDa:
    case kVrDs:
    case kVrDt:
    case kVrIs:
    case kVrLo:
    case kVrPn:
    case kVrSh:
    case kVrTm:
      return Characters(bytes, position, length);
    case kVrFl:
      return Exponential(FloatAt(bytes, position, order));
    case kVrFd:
      return Exponential(DoubleAt(bytes, position, order));
    case kVrLt:
    case kVrSt:
    case kVrUt:
      // Deliberate: the whole value has to lie in the buffer, though no more
      // than its first 128 bytes are shown.
      bytes.RequireBytes(position, length);
      return Characters(bytes, position, std::min(length, kMaxLongText));
    case kVrOb:
      return "OB";
    case kVrOw:
      return "OW";
    case kVrSl:  // Deliberate: shows nothing, but has to lie in the buffer
      bytes.RequireBytes(position, 4);
      return "";
    case kVrSq:
      return "SQ";
    case kVrSs:
      return Signed(static_cast<std::int16_t>(bytes.WordAt(position, order)));
    case kVrUi:
      return UidText(Characters(bytes, position, length));
    case kVrUl:
      return Unsigned(bytes.LongAt(position, order));
    case kVrUs:
      return Unsigned(bytes.WordAt(position, order));
    default:  // Deliberate: VS too
      return "default";
  }
}

}  // namespace dicom
