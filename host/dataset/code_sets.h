#ifndef HOST_DATASET_CODE_SETS_H_
#define HOST_DATASET_CODE_SETS_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace host {

// Rows of `trails` characters for the lead bytes from `first` to `last`.
struct TwoByteSet {
  std::uint8_t first, last;
  std::uint8_t trails;
  const char16_t* characters;  // a blank for none
};

// A coded character set that ISO 2022 can switch to.
struct CodeSet {
  int number;                         // of its registration, ISO-IR
  std::string_view escape;            // what switches to it, without the ESC
  bool is_right;                      // of the bytes above 7Fh
  const char16_t* single = nullptr;   // 96 characters from A0h on, 0 for none
  const TwoByteSet* pairs = nullptr;  // with the high bits set
};

constexpr char32_t kNoCharacter = 0;

// Null when there is none.
const CodeSet* FindCodeSet(int number);
// The one whose escape `bytes` begin with; null when there is none.
const CodeSet* FindEscape(std::string_view bytes);

// kNoCharacter when the bytes have none. `byte` is 21h to 7Eh or A0h to FFh.
// Of one byte in a set of 94 or 96 characters.
char32_t SingleCharacter(const CodeSet& set, unsigned byte);
// Of two bytes in a set of ISO 2022, with or without their high bits.
char32_t PairCharacter(const CodeSet& set, unsigned lead, unsigned trail);
// Of two bytes that belong together in encodings that are no ISO 2022.
char32_t ShiftJisCharacter(unsigned lead, unsigned trail);
char32_t GbPairCharacter(unsigned lead, unsigned trail);
// `bytes` are four.
char32_t GbFourByteCharacter(std::string_view bytes);

}  // namespace host

#endif  // HOST_DATASET_CODE_SETS_H_
