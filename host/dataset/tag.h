#ifndef HOST_DATASET_TAG_H_
#define HOST_DATASET_TAG_H_

#include <compare>
#include <cstdint>
#include <string>

namespace host {

// The tag of a data element.
struct Tag {
  std::uint16_t group = 0;
  std::uint16_t element = 0;

  constexpr auto operator<=>(const Tag&) const = default;

  // Group and element as one number: tags ascend by it.
  constexpr std::uint32_t Number() const {
    return std::uint32_t{group} << 16 | element;
  }
  constexpr bool IsPrivate() const { return (group & 1) != 0; }
  // Reserves the block of this number of its group for a maker.
  constexpr bool IsPrivateCreator() const {
    return IsPrivate() && element >= 0x10 && element <= 0xFF;
  }
  // Holds the length of its group; retired but in command sets and file heads.
  constexpr bool IsGroupLength() const { return element == 0; }
};

constexpr Tag kItemTag{0xFFFE, 0xE000};
constexpr Tag kItemEndTag{0xFFFE, 0xE00D};
constexpr Tag kSequenceEndTag{0xFFFE, 0xE0DD};
constexpr Tag kPixelDataTag{0x7FE0, 0x0010};

std::string TagText(Tag tag);  // "0008,103E"

}  // namespace host

#endif  // HOST_DATASET_TAG_H_
