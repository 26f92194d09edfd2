#ifndef HOST_TIMING_TIME_SHARES_H_
#define HOST_TIMING_TIME_SHARES_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/timing/connection_timing.h"

namespace host {

// How an association's time is shown, wherever it is.

// The bar of an association, a character a column: the letter of the part that
// took the most of the column's time; a blank where there is no time at all.
std::string TimeBar(const AssociationTiming& times, std::size_t columns);

// Columns [begin, end) of the same bar, neighbours of which the same part took
// the most.
struct BarRun {
  std::size_t begin = 0;
  std::size_t end = 0;
  TimePart part = TimePart::kIdle;
};
// In order; columns without any time are in none.
std::vector<BarRun> BarRuns(const AssociationTiming& times,
                            std::size_t columns);
// Of the part that a column of the bar shows, the span that took the most of
// that column's time; empty where there is none.
std::optional<TimeSpan> SpanAt(const AssociationTiming& times,
                               std::size_t columns, std::size_t column);

// A part and whose time it was, if it took any.
struct TimeShare {
  TimePart part = TimePart::kIdle;
  TimeOwner owner = TimeOwner::kNetwork;
  Microseconds time = 0;
};
// In the order of the parts.
std::vector<TimeShare> SharesOf(const TimeSums& sums);
// The longest first.
std::vector<TimeShare> SharesOf(const AssociationTiming& times);

// "64.0 %", rounded; "-" of nothing.
std::string ShareText(Microseconds part, Microseconds whole);

}  // namespace host

#endif  // HOST_TIMING_TIME_SHARES_H_
