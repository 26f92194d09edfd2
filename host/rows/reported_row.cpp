#include "host/rows/reported_row.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "host/rows/row_outcome.h"

namespace host {
namespace {

class RowReporter {
 public:
  explicit RowReporter(const std::vector<WireRecord>& records)
      : records_(records) {}

  // The records before the next listed one that have no row.
  void AddUnlisted() {
    for (; next_ < records_.size() && !records_[next_].listed; ++next_) {
      const WireRecord& record = records_[next_];
      ListedRow row;
      row.direction = record.direction;
      row.length = static_cast<std::uint32_t>(record.length);
      Add({{}, std::move(row), &record, {}, {}, {}});
    }
  }

  void AddRow(std::uint32_t index, ListedRow row,
              std::optional<std::size_t> record) {
    AddUnlisted();
    if (record) PassOver(*record);
    Add({index,
         std::move(row),
         record ? &records_[*record] : nullptr,
         {},
         {},
         {}});
  }

  std::vector<ReportedRow> Take() && { return std::move(reported_); }

 private:
  // Listed records that the module has no row for say nothing.
  void PassOver(std::size_t record) {
    while (next_ < record) {
      ++next_;
      AddUnlisted();
    }
    if (next_ == record) ++next_;
  }

  void Add(ReportedRow row) {
    if (row.wire != nullptr) {
      const Nanoseconds now = row.wire->complete_time;
      row.since_previous = latest_ ? std::max(now - *latest_, Nanoseconds{0})
                                   : std::optional<Nanoseconds>();
      latest_ = std::max(now, latest_.value_or(now));
    }
    reported_.push_back(std::move(row));
  }

  const std::vector<WireRecord>& records_;
  std::vector<ReportedRow> reported_;
  std::size_t next_ = 0;  // record that was not passed yet
  // When all rows so far were complete: a message is listed with its command
  // set, and its data set may end after the next one's, or the clock that
  // captured it may have gone backward.
  std::optional<Nanoseconds> latest_;
};

}  // namespace

std::vector<ReportedRow> ReportRows(std::vector<ListedRow> rows,
                                    const RowTrace& trace,
                                    const std::vector<WireRecord>& records) {
  RowReporter reporter(records);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto index = static_cast<std::uint32_t>(i);
    reporter.AddRow(index, std::move(rows[i]), trace.RecordIndexOf(index));
  }
  reporter.AddUnlisted();
  return std::move(reporter).Take();
}

void AddOutcomes(const Connection& connection, ListKind list,
                 std::vector<ReportedRow>& rows) {
  const RowOutcomes outcomes(connection, list);
  for (ReportedRow& row : rows) {
    if (row.wire == nullptr) continue;
    row.outcome = outcomes.Text(*row.wire);
    row.message = outcomes.MessageOf(*row.wire);
  }
}

}  // namespace host
