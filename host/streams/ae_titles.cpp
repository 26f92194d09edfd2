#include "host/streams/ae_titles.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "interface/host_interface.h"

namespace host {
namespace {

constexpr std::uint32_t kPacketsLookedAt = 64;
constexpr std::size_t kDataOffsetByte = 12;  // of the TCP header
// The A-ASSOCIATE-RQ: type 01h, reserved, length, version, reserved, then the
// called and the calling title with 16 characters each.
constexpr std::size_t kCalledTitle = 10;
constexpr std::size_t kCallingTitle = 26;
constexpr std::size_t kTitleBytes = 16;

std::string Title(std::string_view payload, std::size_t offset) {
  std::string_view title = payload.substr(offset, kTitleBytes);
  title = title.substr(0, title.find('\0'));
  const std::size_t first = title.find_first_not_of(' ');
  if (first == title.npos) return {};
  return std::string(
      title.substr(first, title.find_last_not_of(' ') - first + 1));
}

std::string_view Payload(std::string_view packet) {
  if (packet.size() <= kDataOffsetByte) return {};
  const auto data_offset = static_cast<unsigned char>(packet[kDataOffsetByte]);
  const std::size_t header_bytes = data_offset / 16u * 4u;
  return packet.substr(std::min(packet.size(), header_bytes));
}

}  // namespace

std::optional<AeTitles> FindAeTitles(const PacketFeed& feed) {
  std::vector<std::uint8_t> room(DICOM_PACKET_BYTES);
  const std::uint32_t count = std::min(feed.PacketCount(), kPacketsLookedAt);
  for (std::uint32_t number = 0; number < count; ++number) {
    const CopiedPacket copied = feed.CopyPacket(number, PacketRoom(room));
    const auto payload =
        Payload({reinterpret_cast<const char*>(room.data()), copied.bytes});
    if (payload.size() >= kCallingTitle + kTitleBytes && payload[0] == 1 &&
        payload[1] == 0) {
      return AeTitles{copied.direction, Title(payload, kCallingTitle),
                      Title(payload, kCalledTitle)};
    }
  }
  return {};
}

}  // namespace host
