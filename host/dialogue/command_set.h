#ifndef HOST_DIALOGUE_COMMAND_SET_H_
#define HOST_DIALOGUE_COMMAND_SET_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "host/dialogue/dialogue_message.h"

namespace host {

// Bytes of a command set that are looked at; real ones have some hundred.
inline constexpr std::size_t kMostCommandBytes = 1 << 16;

// Reads a command set, which is implicit VR little endian always, DICOM PS3.7
// section 6.3. Never fails: what follows damage is empty. Linear.
CommandSet ReadCommandSet(std::span<const std::uint8_t> bytes);

}  // namespace host

#endif  // HOST_DIALOGUE_COMMAND_SET_H_
