#include "host/rows/reported_row.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "host/rows/row_outcome.h"

namespace host {

// The records before the next listed one that have no row.
void RowReporter::AddUnlisted() {
  for (; next_ < records_.size() && !records_[next_].listed; ++next_) {
    const WireRecord& record = records_[next_];
    ListedRow row;
    row.direction = record.direction;
    row.length = static_cast<std::uint32_t>(record.length);
    Add({{}, std::move(row), &record, {}, {}, {}});
  }
}

void RowReporter::AddRow(std::uint32_t index, ListedRow row,
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

// Listed records that the module has no row for say nothing.
void RowReporter::PassOver(std::size_t record) {
  while (next_ < record) {
    ++next_;
    AddUnlisted();
  }
  if (next_ == record) ++next_;
}

void RowReporter::Add(ReportedRow row) {
  if (row.wire != nullptr) {
    const Nanoseconds now = row.wire->complete_time;
    row.since_previous = latest_ ? std::max(now - *latest_, Nanoseconds{0})
                                 : std::optional<Nanoseconds>();
    latest_ = std::max(now, latest_.value_or(now));
  }
  reported_.push_back(std::move(row));
}

std::vector<ReportedRow> ReportRows(std::vector<ListedRow> rows,
                                    const RowTrace& trace,
                                    const std::vector<WireRecord>& records) {
  RowReporter reporter(records);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto index = static_cast<std::uint32_t>(i);
    reporter.AddRow(index, std::move(rows[i]), trace.RecordIndexOf(index));
  }
  reporter.AddUnlisted();
  return reporter.Take();
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
