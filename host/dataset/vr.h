#ifndef HOST_DATASET_VR_H_
#define HOST_DATASET_VR_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace host {

// The number that two letters have as a Vr.
constexpr std::uint16_t VrLetters(char first, char second) {
  return static_cast<std::uint16_t>(static_cast<unsigned char>(first) << 8 |
                                    static_cast<unsigned char>(second));
}

// A value representation by its two letters. Explicit VR may hold any letters,
// so a Vr need not be one of these.
enum class Vr : std::uint16_t {
  kNone = 0,  // items and delimiters
  kAE = VrLetters('A', 'E'),
  kAS = VrLetters('A', 'S'),
  kAT = VrLetters('A', 'T'),
  kCS = VrLetters('C', 'S'),
  kDA = VrLetters('D', 'A'),
  kDS = VrLetters('D', 'S'),
  kDT = VrLetters('D', 'T'),
  kFD = VrLetters('F', 'D'),
  kFL = VrLetters('F', 'L'),
  kIS = VrLetters('I', 'S'),
  kLO = VrLetters('L', 'O'),
  kLT = VrLetters('L', 'T'),
  kOB = VrLetters('O', 'B'),
  kOD = VrLetters('O', 'D'),
  kOF = VrLetters('O', 'F'),
  kOL = VrLetters('O', 'L'),
  kOV = VrLetters('O', 'V'),
  kOW = VrLetters('O', 'W'),
  kPN = VrLetters('P', 'N'),
  kSH = VrLetters('S', 'H'),
  kSL = VrLetters('S', 'L'),
  kSQ = VrLetters('S', 'Q'),
  kSS = VrLetters('S', 'S'),
  kST = VrLetters('S', 'T'),
  kSV = VrLetters('S', 'V'),
  kTM = VrLetters('T', 'M'),
  kUC = VrLetters('U', 'C'),
  kUI = VrLetters('U', 'I'),
  kUL = VrLetters('U', 'L'),
  kUN = VrLetters('U', 'N'),
  kUR = VrLetters('U', 'R'),
  kUS = VrLetters('U', 'S'),
  kUT = VrLetters('U', 'T'),
  kUV = VrLetters('U', 'V'),
};

// What the bytes of a value are.
enum class VrKind : std::uint8_t {
  kString,      // of the default repertoire; values between backslashes
  kText,        // in the declared character sets; values between backslashes
  kLongText,    // in the declared character sets; one value
  kUrl,         // of the default repertoire; one value
  kPersonName,  // kText with components
  kUnsigned,
  kSigned,
  kFloat,
  kTags,
  kBytes,  // a stream of bytes or words that nobody reads
  kSequence,
};

// What the standard says of one VR, DICOM PS3.5 section 6.2.
struct VrTraits {
  Vr vr = Vr::kUN;
  VrKind kind = VrKind::kBytes;
  std::uint8_t width = 1;    // bytes of one value, 1 for texts
  bool long_header = false;  // explicit VR: the length has 32 bits
  std::uint16_t most = 0;    // characters that a value may have, 0 for any
};

// Null for letters that no registry has.
const VrTraits* FindVr(Vr vr);

// Those of UN for unknown letters.
const VrTraits& TraitsOf(Vr vr);

std::string VrText(Vr vr);  // "PN"; "3Fh 00h" for what are no letters

// Whether the letters can be a VR at all: two capitals.
bool AreVrLetters(Vr vr);

// The VR of a registry entry: "US or SS" and the like leave it open. Implicit
// VR gives no choice but in the sign, which Pixel Representation tells.
Vr VrOfRegistry(std::string_view vr, bool pixels_are_signed);

}  // namespace host

#endif  // HOST_DATASET_VR_H_
