#ifndef HOST_ROWS_DECODED_ROW_H_
#define HOST_ROWS_DECODED_ROW_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host {

// What the module shows of a connection, read back as plain data. Its texts are
// bytes of code page 1252.

// The two lists that it keeps of a connection.
enum class ListKind { kPdus, kMessages };

// A row of one of the lists.
struct RowRef {
  ListKind list = ListKind::kPdus;
  std::uint32_t index = 0;  // from 0
};

// What stands in a row of a list.
struct ListedRow {
  std::uint32_t number = 0;  // the module's own, from 1, maybe with gaps
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

// One line of a decode tree. The lines of a tree are kept in the order in which
// they are shown fully expanded.
struct TreeLine {
  std::uint32_t depth = 0;  // 0: a top line
  std::string text;
  std::optional<ByteRange> bytes;  // empty when the module had no memory
};

// The decode of one row. What nobody asked for is empty.
struct DecodedRow {
  std::optional<std::vector<TreeLine>> tree;
  std::optional<std::string> hex;      // the hex window's text
  std::optional<std::string> stopped;  // why the decoding stopped early
};

}  // namespace host

#endif  // HOST_ROWS_DECODED_ROW_H_
