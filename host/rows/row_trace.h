#ifndef HOST_ROWS_ROW_TRACE_H_
#define HOST_ROWS_ROW_TRACE_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "host/rows/decoded_row.h"

namespace host {

// One row of a list, with what the capture says about it; or something that was
// on the wire and has no row.
struct ReportedRow {
  std::uint32_t position = 0;  // in the module's list, counted from 1; 0: none
  ListedRow listed;
  const WireRecord* wire = nullptr;           // null: not known
  std::optional<Nanoseconds> since_previous;  // since the one before in time
};

// Puts the rows of the module's list and the records of the wire together, in
// list order. The n-th row is the n-th listed record; where the module listed
// something else than was expected, the rows behind are found again by
// direction and length. The result points into `wire`.
std::vector<ReportedRow> TraceRows(const std::vector<ListedRow>& rows,
                                   const std::vector<WireRecord>& wire);

}  // namespace host

#endif  // HOST_ROWS_ROW_TRACE_H_
