#include "host/dataset/vr.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <iterator>

#include "host/dataset/tag.h"

namespace host {
namespace {

// VR, what its bytes are, bytes of a value, long header, most characters.
constexpr VrTraits kTraits[] = {
    {Vr::kAE, VrKind::kString, 1, false, 16},
    {Vr::kAS, VrKind::kString, 1, false, 4},
    {Vr::kAT, VrKind::kTags, 4, false, 0},
    {Vr::kCS, VrKind::kString, 1, false, 16},
    {Vr::kDA, VrKind::kString, 1, false, 8},
    {Vr::kDS, VrKind::kString, 1, false, 16},
    {Vr::kDT, VrKind::kString, 1, false, 26},
    {Vr::kFD, VrKind::kFloat, 8, false, 0},
    {Vr::kFL, VrKind::kFloat, 4, false, 0},
    {Vr::kIS, VrKind::kString, 1, false, 12},
    {Vr::kLO, VrKind::kText, 1, false, 64},
    {Vr::kLT, VrKind::kLongText, 1, false, 10240},
    {Vr::kOB, VrKind::kBytes, 1, true, 0},
    {Vr::kOD, VrKind::kBytes, 8, true, 0},
    {Vr::kOF, VrKind::kBytes, 4, true, 0},
    {Vr::kOL, VrKind::kBytes, 4, true, 0},
    {Vr::kOV, VrKind::kBytes, 8, true, 0},
    {Vr::kOW, VrKind::kBytes, 2, true, 0},
    {Vr::kPN, VrKind::kPersonName, 1, false, 0},
    {Vr::kSH, VrKind::kText, 1, false, 16},
    {Vr::kSL, VrKind::kSigned, 4, false, 0},
    {Vr::kSQ, VrKind::kSequence, 1, true, 0},
    {Vr::kSS, VrKind::kSigned, 2, false, 0},
    {Vr::kST, VrKind::kLongText, 1, false, 1024},
    {Vr::kSV, VrKind::kSigned, 8, true, 0},
    {Vr::kTM, VrKind::kString, 1, false, 16},
    {Vr::kUC, VrKind::kText, 1, true, 0},
    {Vr::kUI, VrKind::kString, 1, false, 64},
    {Vr::kUL, VrKind::kUnsigned, 4, false, 0},
    {Vr::kUN, VrKind::kBytes, 1, true, 0},
    {Vr::kUR, VrKind::kUrl, 1, true, 0},
    {Vr::kUS, VrKind::kUnsigned, 2, false, 0},
    {Vr::kUT, VrKind::kLongText, 1, true, 0},
    {Vr::kUV, VrKind::kUnsigned, 8, true, 0},
};
static_assert(std::ranges::adjacent_find(kTraits, std::greater_equal{},
                                         &VrTraits::vr) ==
                  std::ranges::end(kTraits),
              "ascending, none twice");

char FirstLetter(Vr vr) {
  return static_cast<char>(static_cast<unsigned>(vr) >> 8);
}
char SecondLetter(Vr vr) {
  return static_cast<char>(static_cast<unsigned>(vr) & 0xFF);
}
bool IsCapital(char letter) { return letter >= 'A' && letter <= 'Z'; }

}  // namespace

const VrTraits* FindVr(Vr vr) {
  const auto* const found =
      std::ranges::lower_bound(kTraits, vr, {}, &VrTraits::vr);
  return found != std::end(kTraits) && found->vr == vr ? found : nullptr;
}

const VrTraits& TraitsOf(Vr vr) {
  static constexpr VrTraits kUnknown{Vr::kUN, VrKind::kBytes, 1, true, 0};
  const VrTraits* const traits = FindVr(vr);
  return traits == nullptr ? kUnknown : *traits;
}

bool AreVrLetters(Vr vr) {
  return IsCapital(FirstLetter(vr)) && IsCapital(SecondLetter(vr));
}

std::string VrText(Vr vr) {
  if (vr == Vr::kNone) return "--";
  if (AreVrLetters(vr)) return {FirstLetter(vr), SecondLetter(vr)};
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "%02Xh%02Xh",
                static_cast<unsigned>(vr) >> 8,
                static_cast<unsigned>(vr) & 0xFF);
  return text.data();
}

Vr VrOfRegistry(std::string_view vr, bool pixels_are_signed) {
  if (vr.size() == 2) return Vr{VrLetters(vr[0], vr[1])};
  if (vr.starts_with("US or SS")) {
    return pixels_are_signed ? Vr::kSS : Vr::kUS;
  }
  return vr.ends_with("OW") || vr.starts_with("OW") ? Vr::kOW : Vr::kNone;
}

std::string TagText(Tag tag) {
  std::array<char, 12> text{};
  std::snprintf(text.data(), text.size(), "%04X,%04X", tag.group, tag.element);
  return text.data();
}

}  // namespace host
