#ifndef TRACKING_COMMAND_SET_WALK_H_
#define TRACKING_COMMAND_SET_WALK_H_

#include <cstdint>
#include <string_view>

#include "tracking/byte_array_view.h"

namespace dicom {

// One element of a command set. The value may reach past the end of the bytes.
struct CommandElement {
  std::uint16_t group;
  std::uint16_t element;
  std::uint32_t value_offset;
  std::uint32_t value_length;

  bool Is(std::uint16_t of_group, std::uint16_t of_element) const {
    return group == of_group && element == of_element;
  }
};

// Deliberate: a command set is implicit VR little endian whatever its
// presentation context agreed.
//
// Reads tag and value length of the element at `position` and moves `position`
// behind its value; false, with nothing changed, when `position` has reached or
// passed the end. Throws OutOfRange, `position` unmoved, when the end cuts the
// tag or the length.
bool NextCommandElement(const ByteArrayView& command_set,
                        std::uint32_t& position, CommandElement& element);

// The name of a Command Field (0000,0100) value as users know it, "Unknown
// Type" for any other value.
std::string_view CommandName(std::uint16_t command_field);

}  // namespace dicom

#endif  // TRACKING_COMMAND_SET_WALK_H_
