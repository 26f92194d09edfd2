#include "host/streams/ae_titles.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "host/capture/frame_parser.h"
#include "host/capture/wire_bytes.h"
#include "host/streams/pdu_header.h"

namespace host {
namespace {

constexpr std::uint32_t kPacketsLookedAt = 64;
constexpr std::size_t kTitleBytes = 16;

using Bytes = std::span<const std::uint8_t>;

std::string Title(Bytes bytes) {
  std::string_view title(reinterpret_cast<const char*>(bytes.data()),
                         bytes.size());
  title = title.substr(0, title.find('\0'));
  const std::size_t first = title.find_first_not_of(' ');
  if (first == title.npos) return {};
  return std::string(
      title.substr(first, title.find_last_not_of(' ') - first + 1));
}

Bytes Payload(Bytes packet) {
  const auto header = TcpHeader::Parse(packet);
  if (!header) return {};
  return packet.subspan(std::min<std::size_t>(packet.size(), header->length));
}

// The titles in a payload that begins with an A-ASSOCIATE-RQ.
std::optional<AeTitles> TitlesIn(Bytes payload) {
  WireReader in(payload);
  const std::uint8_t type = in.Byte();
  const std::uint8_t reserved = in.Byte();
  in.Skip(8);  // length, protocol version, reserved
  const Bytes called = in.Bytes(kTitleBytes);
  const Bytes calling = in.Bytes(kTitleBytes);
  if (!in.ok() || type != kAssociateRq || reserved != 0) return {};
  return AeTitles{0, Title(calling), Title(called)};
}

}  // namespace

std::optional<AeTitles> FindAeTitles(const PacketFeed& feed) {
  std::vector<std::uint8_t> room(DICOM_PACKET_BYTES);
  const std::uint32_t count = std::min(feed.PacketCount(), kPacketsLookedAt);
  for (std::uint32_t number = 0; number < count; ++number) {
    const CopiedPacket copied = feed.CopyPacket(number, PacketRoom(room));
    auto titles = TitlesIn(Payload(Bytes(room).first(copied.bytes)));
    if (!titles) continue;
    titles->caller_direction = copied.direction;
    return titles;
  }
  return {};
}

}  // namespace host
