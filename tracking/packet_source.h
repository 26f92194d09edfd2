#ifndef TRACKING_PACKET_SOURCE_H_
#define TRACKING_PACKET_SOURCE_H_

#include <cstdint>

#include "tracking/byte_array_view.h"

namespace dicom {

// Where earlier packets' bytes come from: records keep packet numbers and
// offsets only, the bytes stay with the host.
class PacketSource {
 public:
  virtual ~PacketSource() = default;

  // The TCP bytes (header included) of packet `number`; valid until the next
  // call. Throws UnableToGetPacketFromTapvane when the host does not deliver
  // exactly that packet.
  virtual ByteArrayView PacketBytes(std::uint32_t number) = 0;
};

}  // namespace dicom

#endif  // TRACKING_PACKET_SOURCE_H_
