#ifndef UPPER_LAYER_CODE_TEXT_H_
#define UPPER_LAYER_CODE_TEXT_H_

#include <cstdint>
#include <iterator>
#include <span>
#include <string>

namespace dicom {

// One row of a table of enumerated bytes (tables of PS3.8 section 9.3). The
// text follows the code in decimal.
struct CodeRow {
  std::uint8_t first;
  std::uint8_t last;
  const char* text;
};

// Ascending; codes between the rows are "other".
using CodeRows = std::span<const CodeRow>;

// For a static_assert beside each table: no code twice, no range upside down.
constexpr bool RowsAscend(CodeRows rows) {
  for (auto row = rows.begin(); row != rows.end(); ++row) {
    if (row->first > row->last) return false;
    if (row != rows.begin() && std::prev(row)->last >= row->first) return false;
  }
  return true;
}

// The code in decimal and the text of its row; `other` for a code without one.
std::string CodeText(std::uint8_t code, CodeRows rows,
                     const std::string& other);

// Behind a code that no row has.
constexpr char kWrongValue[] = " ERROR - wrong value!";

}  // namespace dicom

#endif  // UPPER_LAYER_CODE_TEXT_H_
