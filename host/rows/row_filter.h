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
// > or 0, < or 1, or a part of the sending endpoint, like "dir:192.0.2.2".
class RowFilter {
 public:
  RowFilter() = default;  // every row passes
  // Code page 1252; the endpoints are those of the connection.
  RowFilter(std::string_view text, const std::string& first_endpoint,
            const std::string& second_endpoint);

  bool IsEmpty() const { return part_.empty() && passes_[0] && passes_[1]; }
  // `position` counts from 0; `wire` may be null.
  bool Passes(std::uint32_t position, const ListedRow& row,
              const WireRecord* wire) const;

 private:
  bool PassesNumbers(std::uint32_t position, const ListedRow& row,
                     const WireRecord* wire) const;
  void TakeDirection(std::string_view direction, const std::string& first,
                     const std::string& second);

  std::string part_;
  bool may_be_number_ = false;
  bool passes_[2] = {true, true};  // by direction
};

}  // namespace host

#endif  // HOST_ROWS_ROW_FILTER_H_
