#include "host/rows/row_trace.h"

#include <cstddef>
#include <utility>

namespace host {
namespace {

constexpr std::size_t kLookAhead = 16;  // records that have no row, at most

class RowTracer {
 public:
  RowTracer(const std::vector<ListedRow>& rows,
            const std::vector<WireRecord>& wire)
      : rows_(rows), wire_(wire) {
    for (const WireRecord& record : wire_) left_ += record.listed;
  }

  std::vector<ReportedRow> Trace() {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      TakeLeftOut();
      const WireRecord* record = Find(i);
      while (record != nullptr && &wire_[next_] != record) Skip();
      Add(static_cast<std::uint32_t>(i) + 1, rows_[i], record);
      if (record != nullptr) Skip();
    }
    TakeLeftOut();
    return std::move(traced_);
  }

 private:
  // The records before the next listed one.
  void TakeLeftOut() {
    for (; next_ < wire_.size() && !wire_[next_].listed; ++next_) {
      const WireRecord& record = wire_[next_];
      ListedRow row;
      row.direction = record.direction;
      row.length = static_cast<std::uint32_t>(record.length);
      Add(0, row, &record);
    }
  }

  // The record of row `index`; null when there is none.
  const WireRecord* Find(std::size_t index) const {
    if (next_ == wire_.size()) return nullptr;
    const ListedRow& row = rows_[index];
    // A row may show another length than the wire: as long as both lists have
    // equally many left, it is the next one.
    const bool equally_many = rows_.size() - index == left_;
    const WireRecord& first = wire_[next_];
    if (equally_many && first.direction == row.direction) return &first;
    for (std::size_t i = next_; i < wire_.size() && i < next_ + kLookAhead;
         ++i) {
      const WireRecord& record = wire_[i];
      if (record.listed && record.direction == row.direction &&
          record.length == row.length) {
        return &record;
      }
    }
    return nullptr;
  }

  void Skip() { left_ -= wire_[next_++].listed; }

  void Add(std::uint32_t position, const ListedRow& row,
           const WireRecord* record) {
    ReportedRow reported{position, row, record, {}};
    if (record != nullptr) {
      if (last_ != nullptr)
        reported.since_previous = record->time - last_->time;
      last_ = record;
    }
    traced_.push_back(std::move(reported));
  }

  const std::vector<ListedRow>& rows_;
  const std::vector<WireRecord>& wire_;
  std::vector<ReportedRow> traced_;
  std::size_t next_ = 0;
  std::size_t left_ = 0;  // listed records from next_ on
  const WireRecord* last_ = nullptr;
};

}  // namespace

std::vector<ReportedRow> TraceRows(const std::vector<ListedRow>& rows,
                                   const std::vector<WireRecord>& wire) {
  return RowTracer(rows, wire).Trace();
}

}  // namespace host
