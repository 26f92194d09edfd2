#ifndef HOST_ROWS_DECODED_ROW_H_
#define HOST_ROWS_DECODED_ROW_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/streams/connection.h"

namespace host {

// The two lists that the module keeps of a connection.
enum class ListKind { kPdus, kMessages };
using View = ListKind;  // until the window has been told

// A row of one of the lists; `index` counts from 0.
struct RowRef {
  ListKind list = ListKind::kPdus;
  std::uint32_t index = 0;
};

// One row of the module's packet list. Texts are bytes of code page 1252.
struct ListedRow {
  std::uint32_t number =
      0;  // the module's own, counted from 1, maybe with gaps
  std::uint32_t direction = 0;
  std::uint32_t length = 0;  // bytes
  std::string summary;
  std::string detail;
};

// The bytes that a tree line describes, as a range of the hex window's bytes.
struct ByteRange {
  std::uint32_t section = 0;
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
};

// One line of a decode tree, as it was read back from the tree view. The lines
// of a tree are kept in the order in which they are shown fully expanded.
struct TreeLine {
  std::uint32_t depth = 0;         // 0: a top line
  std::string text;                // code page 1252
  std::optional<ByteRange> bytes;  // nothing when the module had no memory
};

// What DisplayDicomPacket showed for one row.
struct DecodedRow {
  std::vector<TreeLine> tree;
  std::string hex;      // the hex window's text, code page 1252
  std::string stopped;  // why the decoding stopped early; empty when it did not
};

}  // namespace host

#endif  // HOST_ROWS_DECODED_ROW_H_
