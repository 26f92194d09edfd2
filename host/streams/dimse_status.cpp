#include "host/streams/dimse_status.h"

#include <array>
#include <cstdio>

#include "host/capture/wire_bytes.h"

namespace host {
namespace {

constexpr std::uint16_t kCommandGroup = 0x0000;
constexpr std::uint16_t kStatusElement = 0x0900;

}  // namespace

StatusKind KindOfStatus(std::uint16_t status) {
  if (status == 0) return StatusKind::kSuccess;
  if (status == 0xFF00 || status == 0xFF01) return StatusKind::kPending;
  if (status == 0xFE00) return StatusKind::kCancel;
  if (status >> 12 == 0xB || status == 0x0001 || status == 0x0107 ||
      status == 0x0116) {
    return StatusKind::kWarning;
  }
  return StatusKind::kFailure;
}

std::string StatusNote(std::uint16_t status) {
  const char* kind = nullptr;
  switch (KindOfStatus(status)) {
    case StatusKind::kCancel:
      kind = "cancelled";
      break;
    case StatusKind::kWarning:
      kind = "a warning";
      break;
    case StatusKind::kFailure:
      kind = "a failure";
      break;
    default:
      return {};
  }
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "status %04Xh, %s", status, kind);
  return text.data();
}

std::optional<std::uint16_t> FindStatus(
    std::span<const std::uint8_t> command_set) {
  // Implicit VR little endian, as every command set.
  WireReader in(command_set, std::endian::little);
  while (true) {
    const std::uint16_t group = in.Word16();
    const std::uint16_t element = in.Word16();
    const std::uint32_t length = in.Word32();
    const auto value = in.Bytes(length);
    if (!in.ok()) return {};
    if (group == kCommandGroup && element == kStatusElement && length >= 2) {
      return WireReader(value, std::endian::little).Word16();
    }
  }
}

}  // namespace host
