#ifndef TRACKING_PDU_HEADER_H_
#define TRACKING_PDU_HEADER_H_

#include <cstdint>

namespace dicom {

// What every Upper Layer PDU begins with: type, reserved byte, length (4). The
// length counts what follows.
constexpr std::uint32_t kPduHeaderLength = 6;

}  // namespace dicom

#endif  // TRACKING_PDU_HEADER_H_
