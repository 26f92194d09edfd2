#ifndef HOST_ROWS_ROW_TRACE_H_
#define HOST_ROWS_ROW_TRACE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/rows/decoded_row.h"
#include "host/streams/connection.h"

namespace host {

// Traces the rows of one of the module's lists back to the wire: which record,
// and with it which frames, each row came from. The host and the module read
// the same bytes independently, so that the n-th row is the n-th listed record
// as a rule. Where they disagree, the rows themselves show how:
//
// - A row of another length stands for the record in its place, since what
//   follows fits.
// - Records without a row are passed over: the row fits one further on.
// - A row without a record of its own is one that the module lists again, and
//   has the frames of the row before it; or else its frames are not known.
//
// Of these the explanation is taken that most of the next rows bear out. The
// rows are handed over once and in order, in portions of any size; the portions
// make no difference to the result. Costs a few comparisons a row.
class RowTrace {
 public:
  // The records may grow at their end; they must outlive the trace.
  explicit RowTrace(const std::vector<WireRecord>& records)
      : records_(&records) {}

  // The next rows of the list. The last few rows may be traced otherwise when
  // more of them are known.
  void Append(std::span<const ListedRow> rows);

  // Rows that were handed over.
  std::uint32_t RowCount() const {
    return static_cast<std::uint32_t>(places_.size());
  }
  // The index of the row's record; empty when it is not known, or not yet.
  std::optional<std::size_t> RecordIndexOf(std::uint32_t row) const;
  const WireRecord* RecordOf(std::uint32_t row) const;  // null: not known

  // The row that shows the record, or else the first one behind it. For a
  // record that the rows have not come to yet, the row to be expected.
  std::uint32_t RowOfRecord(std::size_t record) const;
  // The row of the first listed record that ends in `frame` or behind it, of
  // the same direction if one follows at once.
  std::uint32_t RowAtFrame(std::uint32_t frame, std::uint32_t direction) const;

 private:
  // What can be compared of a row and a record.
  struct Shape {
    std::uint32_t direction = 0;
    std::uint64_t length = 0;
    bool operator==(const Shape&) const = default;
  };
  // Where a row stands among the listed records, counted from 0. Never less
  // than the row before.
  struct Place {
    std::uint32_t record = 0;  // the row's, or the next one when it has none
    bool known = true;

    // The first listed record behind the row.
    std::uint32_t Next() const { return record + (known ? 1 : 0); }
  };

  void IndexRecords() const;
  Shape ListedShape(std::size_t place) const;
  // The places of the rows from the first unsettled one on.
  void PlaceUnsettled();
  Place PlaceOf(std::size_t unsettled, std::uint32_t next) const;
  // How many of the rows behind `unsettled` fit the records from `next` on, one
  // by one, up to the first that does not.
  unsigned Agreement(std::size_t unsettled, std::uint32_t next) const;
  // Whether no later row or record can change the row's place.
  bool IsSettled(std::size_t unsettled) const;
  void DropSettled();

  const std::vector<WireRecord>* records_;
  // The indices of the listed records among those that were looked at.
  mutable std::size_t looked_at_ = 0;
  mutable std::vector<std::uint32_t> listed_;
  std::vector<Place> places_;     // of all rows
  std::vector<Shape> unsettled_;  // the last rows
};

// The row of each record, as long as the module lists what is `listed`; empty
// for the others.
std::vector<std::optional<std::size_t>> ListedRows(
    const std::vector<WireRecord>& records);

}  // namespace host

#endif  // HOST_ROWS_ROW_TRACE_H_
