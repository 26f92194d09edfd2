#include "host/capture/ipv6_extensions.h"

namespace host {
namespace {

bool IsExtensionHeader(std::uint8_t type) {
  return type == 0 || type == 43 || type == 60 || type == 135 || type == 139 ||
         type == 140;
}

}  // namespace

std::optional<Ipv6Content> SkipExtensionHeaders(std::uint8_t next,
                                                WireReader& in) {
  constexpr std::uint8_t kFragment = 44;
  constexpr std::uint8_t kAuthentication = 51;
  while (IsExtensionHeader(next) || next == kFragment ||
         next == kAuthentication) {
    const std::uint8_t type = next;
    next = in.Byte();
    const std::uint8_t length = in.Byte();
    const std::uint16_t place = in.Word16();
    const std::uint32_t identification = in.Word32();
    if (type == kAuthentication) in.Skip(length * 4u);
    if (IsExtensionHeader(type)) in.Skip(length * 8u);
    if (!in.ok()) return {};
    // Else it is the whole packet.
    const bool is_last = (place & 1) == 0;
    const std::uint32_t offset = place & 0xFFF8u;
    if (type == kFragment && (offset != 0 || !is_last)) {
      return Ipv6Content{next, true, identification, offset, is_last};
    }
  }
  return Ipv6Content{next};
}

}  // namespace host
