#include "host/rows/row_trace.h"

#include <algorithm>

namespace host {
namespace {

constexpr std::uint32_t kMostLeftOut = 16;  // records in a row without a row
constexpr std::size_t kWitnesses = 8;       // rows that speak for a guess
// A row is settled by what follows. Behind the last record there is nothing,
// and a module may list rows without end: after so many it is settled all the
// same.
constexpr std::size_t kMostUnsettled = 64;

}  // namespace

void RowTrace::Append(std::span<const ListedRow> rows) {
  IndexRecords();
  places_.resize(places_.size() - unsettled_.size());
  for (const ListedRow& row : rows) {
    unsettled_.push_back({row.direction, row.length});
  }
  PlaceUnsettled();
  DropSettled();
}

void RowTrace::IndexRecords() const {
  for (; looked_at_ < records_->size(); ++looked_at_) {
    if ((*records_)[looked_at_].listed) {
      listed_.push_back(static_cast<std::uint32_t>(looked_at_));
    }
  }
}

RowTrace::Shape RowTrace::ListedShape(std::size_t place) const {
  const WireRecord& record = (*records_)[listed_[place]];
  return {record.direction, record.length};
}

void RowTrace::PlaceUnsettled() {
  for (std::size_t i = 0; i < unsettled_.size(); ++i) {
    const std::uint32_t next = places_.empty() ? 0 : places_.back().Next();
    places_.push_back(PlaceOf(i, next));
  }
}

RowTrace::Place RowTrace::PlaceOf(std::size_t unsettled,
                                  std::uint32_t next) const {
  const Shape& row = unsettled_[unsettled];
  const auto in_place = [&](std::uint32_t place) {
    return place < listed_.size() && ListedShape(place) == row;
  };
  if (in_place(next)) return {next, true};

  // It has no record of its own.
  const bool again = next > 0 && in_place(next - 1);
  Place best = again ? Place{next - 1, true} : Place{next, false};
  unsigned best_score = Agreement(unsettled, next);
  const auto weigh = [&](std::uint32_t place, unsigned fits_itself) {
    const unsigned score = fits_itself + Agreement(unsettled, place + 1);
    if (score < best_score) return;
    best = {place, true};
    best_score = score;
  };
  for (std::uint32_t skip = kMostLeftOut; skip > 0; --skip) {
    if (in_place(next + skip)) weigh(next + skip, 1);
  }
  const bool same_way =
      next < listed_.size() && ListedShape(next).direction == row.direction;
  if (same_way) weigh(next, 0);
  return best;
}

unsigned RowTrace::Agreement(std::size_t unsettled, std::uint32_t next) const {
  unsigned fitting = 0;
  for (; fitting < kWitnesses; ++fitting) {
    const std::size_t row = unsettled + 1 + fitting;
    const std::size_t place = std::size_t{next} + fitting;
    if (row >= unsettled_.size() || place >= listed_.size() ||
        unsettled_[row] != ListedShape(place)) {
      break;
    }
  }
  return fitting;
}

bool RowTrace::IsSettled(std::size_t unsettled) const {
  const std::size_t behind = unsettled_.size() - unsettled - 1;
  const std::size_t row = places_.size() - 1 - behind;
  const std::uint32_t next = row == 0 ? 0 : places_[row - 1].Next();
  if (next < listed_.size() && ListedShape(next) == unsettled_[unsettled]) {
    return true;
  }
  const bool records_suffice =
      std::size_t{next} + kMostLeftOut + kWitnesses < listed_.size();
  return behind >= (records_suffice ? kWitnesses : kMostUnsettled);
}

void RowTrace::DropSettled() {
  std::size_t settled = 0;
  while (settled < unsettled_.size() && IsSettled(settled)) ++settled;
  unsettled_.erase(unsettled_.begin(),
                   unsettled_.begin() + static_cast<std::ptrdiff_t>(settled));
}

std::optional<std::size_t> RowTrace::RecordIndexOf(std::uint32_t row) const {
  if (row >= places_.size() || !places_[row].known) return {};
  return listed_[places_[row].record];
}

const WireRecord* RowTrace::RecordOf(std::uint32_t row) const {
  const auto index = RecordIndexOf(row);
  return index ? &(*records_)[*index] : nullptr;
}

std::uint32_t RowTrace::RowOfRecord(std::size_t record) const {
  IndexRecords();
  const auto place = static_cast<std::uint32_t>(
      std::lower_bound(listed_.begin(), listed_.end(), record) -
      listed_.begin());
  const std::uint32_t next = places_.empty() ? 0 : places_.back().Next();
  if (place >= next) return RowCount() + (place - next);
  const auto found = std::partition_point(
      places_.begin(), places_.end(),
      [place](const Place& one) { return one.Next() <= place; });
  return static_cast<std::uint32_t>(found - places_.begin());
}

std::uint32_t RowTrace::RowAtFrame(std::uint32_t frame,
                                   std::uint32_t direction) const {
  IndexRecords();
  const auto first =
      std::lower_bound(listed_.begin(), listed_.end(), frame,
                       [this](std::uint32_t index, std::uint32_t wanted) {
                         return (*records_)[index].last_frame < wanted;
                       });
  if (first == listed_.end()) return RowOfRecord(records_->size());
  const auto end =
      first + std::min<std::ptrdiff_t>(kMostLeftOut, listed_.end() - first);
  const auto found =
      std::find_if(first, end, [this, direction](std::uint32_t index) {
        return (*records_)[index].direction == direction;
      });
  return RowOfRecord(found == end ? *first : *found);
}

std::vector<std::optional<std::size_t>> ListedRows(
    const std::vector<WireRecord>& records) {
  std::vector<std::optional<std::size_t>> rows;
  std::size_t next = 0;
  for (const WireRecord& record : records) {
    rows.push_back(record.listed ? std::optional(next++) : std::nullopt);
  }
  return rows;
}

}  // namespace host
