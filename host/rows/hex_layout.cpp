#include "host/rows/hex_layout.h"

#include <algorithm>

namespace host {
namespace {

constexpr std::uint32_t kFirstDigits = 6;
constexpr std::uint32_t kFirstCharacter = 58;
constexpr std::uint32_t kHalf = 8;  // a second blank separates the halves

std::uint32_t DigitsColumn(std::uint32_t byte) {
  return kFirstDigits + 3 * byte + (byte >= kHalf ? 1 : 0);
}

std::optional<std::uint32_t> ByteInLine(std::uint32_t column) {
  if (column >= kFirstCharacter) {
    const std::uint32_t byte = column - kFirstCharacter;
    if (byte >= kDumpBytesPerLine) return {};
    return byte;
  }
  for (std::uint32_t byte = 0; byte < kDumpBytesPerLine; ++byte) {
    const std::uint32_t first = DigitsColumn(byte);
    if (column >= first && column < first + 3) return byte;
  }
  return {};
}

}  // namespace

std::optional<DumpHighlight> HighlightInLine(std::uint32_t line,
                                             std::uint32_t offset,
                                             std::uint32_t length) {
  const std::uint64_t begin = std::uint64_t{line} * kDumpBytesPerLine;
  const std::uint64_t end = begin + kDumpBytesPerLine;
  const std::uint64_t first = std::max<std::uint64_t>(begin, offset);
  const std::uint64_t past =
      std::min<std::uint64_t>(end, std::uint64_t{offset} + length);
  if (first >= past) return {};
  const auto from = static_cast<std::uint32_t>(first - begin);
  const auto to = static_cast<std::uint32_t>(past - begin);
  return DumpHighlight{{DigitsColumn(from), DigitsColumn(to - 1) + 2},
                       {kFirstCharacter + from, kFirstCharacter + to}};
}

std::optional<std::uint32_t> ByteAt(std::uint32_t line, std::uint32_t column) {
  const auto byte = ByteInLine(column);
  if (!byte) return {};
  return line * kDumpBytesPerLine + *byte;
}

}  // namespace host
