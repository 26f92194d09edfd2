#ifndef HOST_ROWS_ROW_FILTER_H_
#define HOST_ROWS_ROW_FILTER_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "host/rows/decoded_row.h"
#include "host/streams/connection.h"

namespace host {

// Decides which rows of a list are shown. The text is looked for in each of a
// row's columns, in capitals or not. The word "dir:X" keeps one direction: X is
// > or 0, < or 1, or a part of the sending endpoint, like "dir:192.0.2.2". Any
// text is a filter; at worst nothing passes it.
class RowFilter {
 public:
  RowFilter() = default;  // every row passes
  // Code page 1252; the endpoints are those of the connection.
  RowFilter(std::string_view text, const std::string& first_endpoint,
            const std::string& second_endpoint);

  bool IsEmpty() const { return part_.empty() && passes_[0] && passes_[1]; }
  // `index` is the row's in its list, from 0; `wire` is null when the row's
  // record is not known. Asked for every row of a list, hence quick.
  bool Passes(std::uint32_t index, const ListedRow& row,
              const WireRecord* wire) const;

 private:
  // The columns that show a number or a time. Their texts are made only when
  // they can contain what is looked for.
  bool PassesNumbers(std::uint32_t index, const ListedRow& row,
                     const WireRecord* wire) const;
  // What stands behind "dir:".
  void TakeDirection(std::string_view direction, const std::string& first,
                     const std::string& second);

  std::string part_;  // what is looked for; the words but for "dir:X"
  bool may_be_number_ = false;
  bool passes_[2] = {true, true};  // by direction
};

}  // namespace host

#endif  // HOST_ROWS_ROW_FILTER_H_
