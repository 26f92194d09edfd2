#include "host/capture/block_scanner.h"

#include <array>

#include "host/capture/capture_file.h"
#include "host/capture/wire_bytes.h"

namespace host {
namespace {

// So that a large file is read in slices.
constexpr std::int64_t kLookAhead = 1 << 20;
constexpr std::uint32_t kShortestBlock = 12;
constexpr std::uint32_t kLongestBlock = 1u << 28;  // longer ones are not read

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;  // in either byte order

bool IsPacketBlock(std::uint32_t type) {
  return type == 2 || type == 3 || type == 6;
}

}  // namespace

BlockScanner::Next BlockScanner::Look(std::FILE* file, std::int64_t position) {
  if (position < whole_until_) return Next::kPacket;
  const Next next = Scan(file);
  SetFilePosition(file, position);
  return position < whole_until_ ? Next::kPacket : next;
}

BlockScanner::Next BlockScanner::Scan(std::FILE* file) {
  const std::int64_t size = FileEnd(file);
  const std::int64_t from = whole_until_;
  std::endian order = order_;
  for (std::int64_t at = from; at < size;) {
    if (whole_until_ > from && at - from > kLookAhead) break;
    std::array<std::uint8_t, kShortestBlock> head{};
    SetFilePosition(file, at);
    if (std::fread(head.data(), head.size(), 1, file) != 1) return Next::kCut;
    if (WireReader(head).Word32() == kSectionHeader) {
      // By the first byte of the byte order magic, 1A2B3C4Dh.
      order = head[8] == 0x1A ? std::endian::big : std::endian::little;
    }
    WireReader in(head, order);
    const std::uint32_t type = in.Word32();
    const std::uint32_t length = in.Word32();
    if (length < kShortestBlock || length % 4 != 0 || length > kLongestBlock) {
      return Next::kDamaged;
    }
    if (std::int64_t{length} > size - at) return Next::kCut;
    at += length;
    if (!IsPacketBlock(type)) continue;
    whole_until_ = at;
    order_ = order;
  }
  return Next::kEnd;
}

}  // namespace host
