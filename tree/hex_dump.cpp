#include "tree/hex_dump.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

#include "tree/display_state.h"

namespace dicom {
namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";
constexpr std::uint32_t kRowBytes = 16;
constexpr std::size_t kRowCharacters = 74;
constexpr std::size_t kHexColumn = 6;
constexpr std::size_t kSecondHalfGap = 1;  // a blank between bytes 7 and 8
constexpr std::size_t kCharacterColumn = 58;

// "%.04lX" at the start of the row: more digits only where four do not do.
void WriteRowOffset(char* row, std::uint32_t offset) {
  int digits = 4;
  while (digits < 8 && (offset >> 4 * digits) != 0) ++digits;
  while (digits-- > 0) *row++ = kHexDigits[offset >> 4 * digits & 0xF];
}

// Writes the 74 characters that show up to 16 bytes, without an end.
void WriteHexRow(char* row, std::uint32_t offset,
                 std::span<const std::uint8_t> bytes) {
  std::memset(row, ' ', kRowCharacters);
  WriteRowOffset(row, offset);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    char* const pair =
        row + kHexColumn + 3 * i + (i < kRowBytes / 2 ? 0 : kSecondHalfGap);
    pair[0] = kHexDigits[bytes[i] >> 4];
    pair[1] = kHexDigits[bytes[i] & 0xF];
    // Deliberate: bytes from 127 on are shown as themselves.
    row[kCharacterColumn + i] =
        bytes[i] < ' ' ? '.' : static_cast<char>(bytes[i]);
  }
}

// Calls `show` with the offset and the bytes of every row.
template <typename Show>
void ForEachRow(std::span<const std::uint8_t> bytes, Show show) {
  for (std::size_t offset = 0; offset < bytes.size(); offset += kRowBytes) {
    const std::size_t count =
        std::min<std::size_t>(kRowBytes, bytes.size() - offset);
    show(static_cast<std::uint32_t>(offset), bytes.subspan(offset, count));
  }
}

// Deliberate: every hex dump section is number 8, with the same images and the
// same expand bit, however many sections come before it.
constexpr std::uint32_t kHexSection = 8;
constexpr std::int32_t kHexCaptionImage = 6;
constexpr std::int32_t kHexRowImage = 13;
constexpr std::uint32_t kHexSectionExpandBit = 1u << kHexSection;

// The bytes of a hex dump section of `length` bytes that its row at `start`
// stands for, as a range of the hex window's buffer.
GlobalBlock<DicomByteRangeRecord> MakeRowRange(std::uint32_t offset,
                                               std::uint32_t start,
                                               std::uint32_t length) {
  if (start + kRowBytes < length) {
    return MakeByteRange(kHexSection, offset + start, kRowBytes);
  }
  // Deliberate: a last row of 16 bytes gets none of them but a place behind
  // the section.
  const std::uint32_t rest = length % kRowBytes;
  return MakeByteRange(kHexSection, offset + length - rest, rest);
}

}  // namespace

void ShowHexDump(HWND hex_window, std::span<const std::uint8_t> bytes) {
  // Room for five characters a byte and some rows more is enough.
  const std::uint64_t size = (std::uint64_t{bytes.size()} + 36) * 5;
  GlobalBlock<char> text;
  if (size <= std::numeric_limits<std::uint32_t>::max()) {
    text = AllocateGlobalBlock<char>(static_cast<std::size_t>(size));
  }
  if (text != nullptr) {
    char* end = text.get();
    ForEachRow(bytes, [&end](std::uint32_t offset, auto row_bytes) {
      WriteHexRow(end, offset, row_bytes);
      end += kRowCharacters;
      *end++ = '\r';
      *end++ = '\n';
    });
  }
  ::SetWindowTextA(hex_window, text != nullptr ? text.get() : "");
}

void AddHexDumpSection(const LineTarget& target,
                       std::span<const std::uint8_t> bytes,
                       std::uint32_t offset, const char* caption) {
  if (bytes.empty()) return;
  if (!HostDisplayState(target.host_window).ShowsMessageData()) return;
  const auto length = static_cast<std::uint32_t>(bytes.size());
  const HTREEITEM section =
      InsertTopLine(target, caption, kHexCaptionImage,
                    MakeByteRange(kHexSection, offset, length));
  ForEachRow(bytes, [&](std::uint32_t start, auto row_bytes) {
    char row[kRowCharacters + 1] = {};
    WriteHexRow(row, start, row_bytes);
    InsertTreeLine(target, section, row, kHexRowImage,
                   MakeRowRange(offset, start, length));
  });
  // Deliberate: by the host's own mask; every other section goes by the
  // writer's.
  const HostDisplayState state(target.host_window);
  ExpandTreeLine(target, section,
                 (state.SectionExpandMask() & kHexSectionExpandBit) != 0);
}

}  // namespace dicom
