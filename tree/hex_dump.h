#ifndef TREE_HEX_DUMP_H_
#define TREE_HEX_DUMP_H_

#include <windows.h>

#include <cstdint>
#include <span>

#include "tree/tree_lines.h"

namespace dicom {

// Replaces the hex window's text with a dump of the bytes, 16 a line: offset,
// hexadecimal, characters. Without bytes, or without the memory for the text,
// the window is left empty.
void ShowHexDump(HWND hex_window, std::span<const std::uint8_t> bytes);

// Adds `caption` as a top line with a dump of `bytes` below it, one line for
// 16 bytes, numbered from 0; `offset` is the place of the first one in the hex
// window's buffer. Without bytes, or when the host shows no message data, it
// adds nothing.
void AddHexDumpSection(const LineTarget& target,
                       std::span<const std::uint8_t> bytes,
                       std::uint32_t offset, const char* caption);

}  // namespace dicom

#endif  // TREE_HEX_DUMP_H_
