#ifndef TRACKING_COMMAND_SET_WALK_H_
#define TRACKING_COMMAND_SET_WALK_H_

#include <cstdint>
#include <optional>

#include "tracking/byte_array_view.h"
#include "tracking/saturating_sum.h"

namespace dicom {

// One element of a command set: tag, 32-bit value length, value. The value may
// reach past the end of the bytes.
struct CommandElement {
  std::uint16_t group;
  std::uint16_t element;
  std::uint32_t value_offset;
  std::uint32_t value_length;

  bool Is(std::uint16_t of_group, std::uint16_t of_element) const {
    return group == of_group && element == of_element;
  }
  // Where the next element begins.
  std::uint32_t End() const {
    return SaturatingSum(value_offset, value_length);
  }
};

// Deliberate: a command set is implicit VR little endian whatever its
// presentation context agreed.
//
// The element that begins at `position`; nothing when that has reached or
// passed the end. Throws OutOfRange when the end cuts the tag or the length.
std::optional<CommandElement> CommandElementAt(const ByteArrayView& command_set,
                                               std::uint32_t position);

// The name of a Command Field (0000,0100) value as users know it, "Unknown
// Type" for any other value. The texts live forever.
const char* CommandName(std::uint16_t command_field);

}  // namespace dicom

#endif  // TRACKING_COMMAND_SET_WALK_H_
