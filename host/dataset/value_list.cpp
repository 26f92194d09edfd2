#include "host/dataset/value_list.h"

#include <array>
#include <bit>
#include <charconv>

#include "host/dataset/element_bytes.h"
#include "host/text/number_text.h"

namespace host {
namespace {

template <class Number>
std::string Digits(Number number) {
  std::array<char, 40> text{};
  const auto [end, error] =
      std::to_chars(text.data(), text.data() + text.size(), number);
  return {text.data(), end};
}

// `bits` of a number of `width` bytes.
std::string NumberValue(std::uint64_t bits, const VrTraits& traits) {
  const unsigned unused = 64 - 8u * traits.width;
  switch (traits.kind) {
    case VrKind::kTags:
      return TagText({static_cast<std::uint16_t>(bits >> 16),
                      static_cast<std::uint16_t>(bits)});
    case VrKind::kSigned:
      return Digits(static_cast<std::int64_t>(bits << unused) >> unused);
    case VrKind::kFloat:
      return traits.width == 4 ? Digits(std::bit_cast<float>(
                                     static_cast<std::uint32_t>(bits)))
                               : Digits(std::bit_cast<double>(bits));
    default:
      return Digits(bits);
  }
}

// A tag is two words, each in the byte order.
std::uint64_t BitsAt(std::span<const std::uint8_t> bytes,
                     const VrTraits& traits, ByteOrder order) {
  return traits.kind == VrKind::kTags ? TagAt(bytes, order).Number()
                                      : NumberAt(bytes, traits.width, order);
}

void ReadNumbers(const DataSetEvent& event, std::span<const std::uint8_t> bytes,
                 const VrTraits& traits, ValueList& list) {
  for (; bytes.size() >= traits.width; bytes = bytes.subspan(traits.width)) {
    list.values.push_back(
        NumberValue(BitsAt(bytes, traits, event.order), traits));
  }
  if (event.available % traits.width != 0) {
    list.finding = "its " + BytesText(event.available) +
                   " are no whole number of values of " +
                   BytesText(traits.width);
  }
}

void RemovePadding(std::string& value) {
  value.erase(value.find_last_not_of(std::string_view("\0 ", 2)) + 1);
}

TextForm FormOf(VrKind kind) {
  if (kind == VrKind::kPersonName) return TextForm::kName;
  const bool is_one = kind == VrKind::kLongText || kind == VrKind::kUrl;
  return is_one ? TextForm::kLong : TextForm::kValues;
}

void ReadTexts(std::span<const std::uint8_t> bytes, VrKind kind,
               const CharacterSet& characters, ValueList& list) {
  // Codes are of the default repertoire, whatever is declared.
  static const CharacterSet kDefault;
  const bool is_code = kind == VrKind::kString || kind == VrKind::kUrl;
  DecodedText text =
      (is_code ? kDefault : characters)
          .Decode({reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                  FormOf(kind), list.is_cut);
  list.values = std::move(text.values);
  for (std::string& value : list.values) RemovePadding(value);
  list.text_fault = text.fault;
  list.finding = is_code && !text.finding.empty()
                     ? "holds bytes above 7Fh, which this VR must not"
                     : std::move(text.finding);
}

}  // namespace

ValueList ReadValues(const DataSetEvent& event,
                     std::span<const std::uint8_t> bytes,
                     const CharacterSet& characters) {
  ValueList list;
  list.is_cut = bytes.size() < event.available;
  const VrTraits& traits = TraitsOf(event.value_vr);
  if (bytes.empty()) return list;
  switch (traits.kind) {
    case VrKind::kUnsigned:
    case VrKind::kSigned:
    case VrKind::kFloat:
    case VrKind::kTags:
      ReadNumbers(event, bytes, traits, list);
      break;
    case VrKind::kBytes:
    case VrKind::kSequence:
      break;
    default:
      ReadTexts(bytes, traits.kind, characters, list);
  }
  return list;
}

}  // namespace host
