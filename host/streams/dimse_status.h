#ifndef HOST_STREAMS_DIMSE_STATUS_H_
#define HOST_STREAMS_DIMSE_STATUS_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace host {

// The classes of status codes, DICOM PS3.7 annex C.
enum class StatusKind { kSuccess, kPending, kCancel, kWarning, kFailure };
StatusKind KindOfStatus(std::uint16_t status);

// "status A700h, a failure"; empty for success and for pending, which are
// nothing to remark on.
std::string StatusNote(std::uint16_t status);

// The Status element (0000,0900) of a command set in implicit VR little endian;
// none in a request, or when the bytes, which may be cut, do not reach it.
std::optional<std::uint16_t> FindStatus(
    std::span<const std::uint8_t> command_set);

}  // namespace host

#endif  // HOST_STREAMS_DIMSE_STATUS_H_
