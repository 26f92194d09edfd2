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

std::uint32_t ExtraAddressColumns(std::uint64_t bytes, std::uint64_t address) {
  return address + bytes > 0x10000 ? 4 : 0;
}

std::string HexDigits(std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) text += ' ';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

std::string DumpText(std::span<const std::uint8_t> bytes,
                     std::uint64_t address) {
  const std::uint32_t extra = ExtraAddressColumns(bytes.size(), address);
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); at += kDumpBytesPerLine) {
    const auto line = bytes.subspan(
        at, std::min<std::size_t>(kDumpBytesPerLine, bytes.size() - at));
    std::string place(4 + extra, '0');
    std::uint64_t rest = address + at;
    for (std::size_t i = place.size(); i-- > 0; rest >>= 4) {
      place[i] = "0123456789ABCDEF"[rest & 15];
    }
    const std::size_t half = std::min<std::size_t>(kHalf, line.size());
    place += "  " + HexDigits(line.first(half)) + "  " +
             HexDigits(line.subspan(half));
    place.resize(kFirstCharacter + extra, ' ');
    for (const std::uint8_t byte : line) {
      place += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
    }
    text += place + "\r\n";
  }
  return text;
}

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
