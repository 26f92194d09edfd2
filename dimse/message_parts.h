#ifndef DIMSE_MESSAGE_PARTS_H_
#define DIMSE_MESSAGE_PARTS_H_

#include <cstdint>
#include <string>

#include "tracking/byte_array_view.h"

namespace dicom {

// One DIMSE message as the display driver hands it over: the gathered bytes and
// what the list knows of them. The bytes are those of the hex window; there may
// be fewer than the two lengths say.
struct MessageParts {
  ByteArrayView bytes;           // command set, then data set
  std::uint32_t command_length;  // bytes
  std::uint32_t data_length;     // bytes; 0: no data set
  std::string caption_suffix;    // the message's first text
  std::uint8_t presentation_context_id;
};

}  // namespace dicom

#endif  // DIMSE_MESSAGE_PARTS_H_
