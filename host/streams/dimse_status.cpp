#include "host/streams/dimse_status.h"

#include <array>
#include <cstdio>

namespace host {
namespace {

constexpr std::size_t kElementHeaderBytes = 8;  // implicit VR little endian
constexpr std::uint32_t kStatusTag = 0x0000'0900;

std::uint32_t LittleEndian(std::span<const std::uint8_t> bytes, std::size_t at,
                           std::size_t width) {
  std::uint32_t value = 0;
  for (std::size_t i = width; i > 0; --i)
    value = value << 8 | bytes[at + i - 1];
  return value;
}

std::uint32_t TagAt(std::span<const std::uint8_t> bytes, std::size_t at) {
  return LittleEndian(bytes, at, 2) << 16 | LittleEndian(bytes, at + 2, 2);
}

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
  std::size_t at = 0;
  while (command_set.size() - at >= kElementHeaderBytes) {
    const std::uint32_t length = LittleEndian(command_set, at + 4, 4);
    const std::uint32_t tag = TagAt(command_set, at);
    at += kElementHeaderBytes;
    if (length > command_set.size() - at) break;
    if (tag == kStatusTag && length >= 2) {
      return static_cast<std::uint16_t>(LittleEndian(command_set, at, 2));
    }
    at += length;
  }
  return {};
}

}  // namespace host
