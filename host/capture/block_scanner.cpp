#include "host/capture/block_scanner.h"

#include <array>

#include "host/capture/capture_file.h"

namespace host {
namespace {

constexpr std::int64_t kLookAhead =
    1 << 20;  // so that a large file is read in slices
constexpr std::uint32_t kShortestBlock = 12;
constexpr std::uint32_t kLongestBlock = 1u << 28;  // longer ones are not read

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;  // in either byte order

bool IsPacketBlock(std::uint32_t type) {
  return type == 2 || type == 3 || type == 6;
}

std::uint32_t Word(const std::uint8_t* bytes, bool big_endian) {
  std::uint32_t word = 0;
  for (int i = 0; i < 4; ++i) word = word << 8 | bytes[big_endian ? i : 3 - i];
  return word;
}

}  // namespace

BlockScanner::Next BlockScanner::Look(std::FILE* file, std::int64_t position) {
  if (position < whole_until_) return Next::kPacket;
  const Next next = Scan(file);
  SetFilePosition(file, position);
  return position < whole_until_ ? Next::kPacket : next;
}

// Answers what stands behind the packets that were found.
BlockScanner::Next BlockScanner::Scan(std::FILE* file) {
  const std::int64_t size = FileEnd(file);
  const std::int64_t from = whole_until_;
  bool big_endian = big_endian_;
  for (std::int64_t at = from; at < size;) {
    if (whole_until_ > from && at - from > kLookAhead) break;
    std::array<std::uint8_t, kShortestBlock> head{};
    SetFilePosition(file, at);
    if (std::fread(head.data(), head.size(), 1, file) != 1) return Next::kCut;
    if (Word(head.data(), false) == kSectionHeader) {
      big_endian = head[8] == 0x1A;  // of the byte order magic, 1A2B3C4Dh
    }
    const std::uint32_t length = Word(&head[4], big_endian);
    if (length < kShortestBlock || length % 4 != 0 || length > kLongestBlock)
      return Next::kDamaged;
    if (std::int64_t{length} > size - at) return Next::kCut;
    at += length;
    if (!IsPacketBlock(Word(head.data(), big_endian))) continue;
    whole_until_ = at;
    big_endian_ = big_endian;
  }
  return Next::kEnd;
}

}  // namespace host
