#ifndef HOST_ROWS_REPORTED_ROW_H_
#define HOST_ROWS_REPORTED_ROW_H_

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/rows/decoded_row.h"
#include "host/rows/row_trace.h"
#include "host/streams/connection.h"
#include "host/text/time_text.h"

namespace host {

// One line of a list that is written out: a row, with what the capture says
// about it, or something that was on the wire and has no row.
struct ReportedRow {
  std::optional<std::uint32_t> index;  // in the module's list, from 0
  ListedRow listed;  // of something without a row: its direction and length
  const WireRecord* wire = nullptr;  // null: not known
  // Since all before it were complete.
  std::optional<Nanoseconds> since_previous;
  // What became of it, in one line, and its message in the connection's
  // dialogue; see AddOutcomes().
  std::string outcome = {};
  std::optional<std::uint32_t> message = {};
};

// Puts rows and the records that are not to be listed together in the order of
// the wire, as they come.
class RowReporter {
 public:
  // The records may grow at their end; they must outlive the reporter.
  explicit RowReporter(const std::vector<WireRecord>& records)
      : records_(records) {}

  // The next row, which shows this record, or one that is not known.
  void AddRow(std::uint32_t index, ListedRow row,
              std::optional<std::size_t> record);
  // The records that have no row, up to the next one that should have.
  void AddUnlisted();
  // What was put together since the last call. It points into the records: gone
  // when they grow.
  std::vector<ReportedRow> Take() { return std::exchange(reported_, {}); }

 private:
  void PassOver(std::size_t record);
  void Add(ReportedRow row);

  const std::vector<WireRecord>& records_;
  std::vector<ReportedRow> reported_;
  std::size_t next_ = 0;  // record that was not passed yet
  // When all rows so far were complete: a message is listed with its command
  // set, and its data set may end after the next one's, or the clock that
  // captured it may have gone backward.
  std::optional<Nanoseconds> latest_;
};

// Puts the rows of a list, which `trace` has traced, and the records that are
// not to be listed together in the order of the wire. The result points into
// `records`.
std::vector<ReportedRow> ReportRows(std::vector<ListedRow> rows,
                                    const RowTrace& trace,
                                    const std::vector<WireRecord>& records);

// Says of the rows of one list what became of them. Throws Failure when what
// they were made of cannot be read back.
void AddOutcomes(const Connection& connection, ListKind list,
                 std::vector<ReportedRow>& rows);

}  // namespace host

#endif  // HOST_ROWS_REPORTED_ROW_H_
