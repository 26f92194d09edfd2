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
    const bool is_fragment = (in.Word16() & 0xFFF9) != 0;
    in.Skip(4);
    if (type == kAuthentication) in.Skip(length * 4u);
    if (IsExtensionHeader(type)) in.Skip(length * 8u);
    if (!in.ok()) return {};
    // Else it is the whole packet.
    if (type == kFragment && is_fragment) return Ipv6Content{next, true};
  }
  return Ipv6Content{next, false};
}

}  // namespace host
