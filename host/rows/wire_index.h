#ifndef HOST_ROWS_WIRE_INDEX_H_
#define HOST_ROWS_WIRE_INDEX_H_

#include <cstdint>
#include <vector>

#include "host/rows/decoded_row.h"
#include "host/streams/connection.h"

namespace host {

// Finds the wire's record of a row without looking at the rows before it.
class WireIndex {
 public:
  // The records may grow at their end; they must outlive the index.
  explicit WireIndex(const std::vector<WireRecord>& records)
      : records_(records) {}

  // The record of the row at `position`, which counts from 0: the listed one of
  // that number, or, where the module listed something else than was expected,
  // one nearby of the same direction and length. Null when there is none.
  const WireRecord* Find(std::uint32_t position, const ListedRow& row);
  // The record of that number as it is; null when there is none.
  const WireRecord* At(std::uint32_t position);
  // The position of the first record that ends in `frame` or behind it; of the
  // same direction if one follows at once.
  std::uint32_t PositionOfFrame(std::uint32_t frame, std::uint32_t direction);

 private:
  void Extend();

  const std::vector<WireRecord>& records_;
  std::vector<std::uint32_t> listed_;  // indices of the listed records
  std::size_t looked_at_ = 0;
};

}  // namespace host

#endif  // HOST_ROWS_WIRE_INDEX_H_
