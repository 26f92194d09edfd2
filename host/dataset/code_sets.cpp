#include "host/dataset/code_sets.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace host {
namespace {

#include "host/dataset/character_tables.inc"

// Registered number, escape, side, characters. DICOM PS3.3 tables C.12-3 and
// C.12-4.
constexpr CodeSet kCodeSets[] = {
    {6, "(B", false},
    {14, "(J", false},
    {13, ")I", true},
    {100, "-A", true, kRightHalves[0]},
    {101, "-B", true, kRightHalves[1]},
    {109, "-C", true, kRightHalves[2]},
    {110, "-D", true, kRightHalves[3]},
    {144, "-L", true, kRightHalves[4]},
    {127, "-G", true, kRightHalves[5]},
    {126, "-F", true, kRightHalves[6]},
    {138, "-H", true, kRightHalves[7]},
    {148, "-M", true, kRightHalves[8]},
    {203, "-b", true, kRightHalves[9]},
    {166, "-T", true, kRightHalves[10]},
    {87, "$B", false, nullptr, &kJisX0208},
    {159, "$(D", false, nullptr, &kJisX0212},
    {149, "$)C", true, nullptr, &kKsX1001},
    {58, "$)A", true, nullptr, &kGb},
};

constexpr int kRomaji = 14, kKatakana = 13, kGb2312 = 58;

char32_t CharacterOf(const TwoByteSet& set, unsigned lead, unsigned column) {
  if (lead < set.first || lead > set.last || column >= set.trails) {
    return kNoCharacter;
  }
  const char16_t character =
      set.characters[(lead - set.first) * set.trails + column];
  return character == u' ' ? kNoCharacter : char32_t{character};
}

bool IsGb2312Row(unsigned lead) {
  return (lead >= 0xA1 && lead <= 0xA9) || (lead >= 0xB0 && lead <= 0xF7);
}

}  // namespace

const CodeSet* FindCodeSet(int number) {
  const auto* const found =
      std::ranges::find(kCodeSets, number, &CodeSet::number);
  return found == std::end(kCodeSets) ? nullptr : found;
}

const CodeSet* FindEscape(std::string_view bytes) {
  const auto* const found = std::ranges::find_if(
      kCodeSets,
      [bytes](const CodeSet& set) { return bytes.starts_with(set.escape); });
  return found == std::end(kCodeSets) ? nullptr : found;
}

char32_t SingleCharacter(const CodeSet& set, unsigned byte) {
  if (byte < 0x80) {
    if (set.number == kRomaji && byte == '\\') return 0xA5;   // yen sign
    if (set.number == kRomaji && byte == '~') return 0x203E;  // overline
    return byte;
  }
  if (set.number == kKatakana) {
    return byte >= 0xA1 && byte <= 0xDF ? 0xFF61 + byte - 0xA1 : kNoCharacter;
  }
  return set.single == nullptr ? kNoCharacter : set.single[byte - 0xA0];
}

char32_t PairCharacter(const CodeSet& set, unsigned lead, unsigned trail) {
  lead |= 0x80;
  trail |= 0x80;
  if (set.number == kGb2312) {
    if (lead == 0xA1 && trail == 0xA4) return 0x30FB;
    if (lead == 0xA1 && trail == 0xAA) return 0x2015;
    return IsGb2312Row(lead) ? GbPairCharacter(lead, trail) : kNoCharacter;
  }
  return CharacterOf(*set.pairs, lead, trail - 0xA1);
}

// Two rows of JIS X 0208 under each lead byte.
char32_t ShiftJisCharacter(unsigned lead, unsigned trail) {
  if (trail < 0x40 || trail == 0x7F || trail > 0xFC) return kNoCharacter;
  const unsigned pair = lead - (lead < 0xA0 ? 0x81 : 0xC1);
  const bool second = trail >= 0x9F;
  const unsigned column = second ? trail - 0x9F : trail - 0x40 - (trail > 0x7F);
  return CharacterOf(kJisX0208, 0xA1 + 2 * pair + second, column);
}

char32_t GbPairCharacter(unsigned lead, unsigned trail) {
  if (trail < 0x40 || trail == 0x7F) return kNoCharacter;
  return CharacterOf(kGb, lead, trail - 0x40 - (trail > 0x7F));
}

char32_t GbFourByteCharacter(std::string_view bytes) {
  constexpr std::uint32_t kFirstAstral = 189000, kBehindBasic = 39420;
  const auto digit = [bytes](std::size_t at, unsigned from, unsigned count) {
    const unsigned value = static_cast<unsigned char>(bytes[at]) - from;
    return value < count ? value : 0xFFFF;
  };
  const unsigned a = digit(0, 0x81, 126), b = digit(1, 0x30, 10);
  const unsigned c = digit(2, 0x81, 126), d = digit(3, 0x30, 10);
  if (std::max({a, b, c, d}) == 0xFFFF) return kNoCharacter;
  const std::uint32_t number = (a * 10 + b) * 1260 + c * 10 + d;
  if (number >= kFirstAstral) {
    const char32_t point = number - kFirstAstral + 0x10000;
    return point <= 0x10FFFF ? point : kNoCharacter;
  }
  if (number >= kBehindBasic) return kNoCharacter;
  const auto* const behind = std::ranges::upper_bound(
      kGb18030Runs, number, {}, [](const auto& run) { return run.first; });
  const auto& [first, character] = behind[-1];
  return character + (number - first);
}

}  // namespace host
