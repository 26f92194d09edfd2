#ifndef HOST_ROWS_HEX_LAYOUT_H_
#define HOST_ROWS_HEX_LAYOUT_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace host {

// Where the bytes stand in a hex dump, as the module writes it: 16 bytes a
// line, each as two hexadecimal digits and as a character.
//
//   0010  38 2E 31 2E 31 00 00 00  00 01 02 00 00 00 30 00    8.1.1.........0.
inline constexpr std::uint32_t kDumpBytesPerLine = 16;

// A run of columns [first, end).
struct ColumnRun {
  std::uint32_t first = 0;
  std::uint32_t end = 0;
};

// What of one line belongs to a range of bytes.
struct DumpHighlight {
  ColumnRun digits;
  ColumnRun characters;
};

// Lines count from 0. Nothing when no byte of [offset, offset + length) stands
// in the line.
std::optional<DumpHighlight> HighlightInLine(std::uint32_t line,
                                             std::uint32_t offset,
                                             std::uint32_t length);

// The byte whose digits or character stand at this place, both from 0; the
// blank behind a byte's digits counts as the byte's. The dump may have fewer
// bytes. Nothing beside and between the two columns.
std::optional<std::uint32_t> ByteAt(std::uint32_t line, std::uint32_t column);

// The dump of bytes whose first stands at `address`, a multiple of 16, with CR
// LF. All columns stand further right by ExtraAddressColumns() than above, as
// addresses that do not fit into 4 digits have 8.
std::string DumpText(std::span<const std::uint8_t> bytes,
                     std::uint64_t address);
std::uint32_t ExtraAddressColumns(std::uint64_t bytes, std::uint64_t address);

// "38 2E 31".
std::string HexDigits(std::span<const std::uint8_t> bytes);

}  // namespace host

#endif  // HOST_ROWS_HEX_LAYOUT_H_
