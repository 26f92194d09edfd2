#ifndef HOST_TIMING_TIME_SHARES_H_
#define HOST_TIMING_TIME_SHARES_H_

#include <cstddef>
#include <string>
#include <vector>

#include "host/timing/connection_timing.h"

namespace host {

// How an association's time is shown, wherever it is.

// The bar of an association, a character a column: the letter of the part that
// took the most of the column's time; a blank where there is no time at all.
std::string TimeBar(const AssociationTiming& times, std::size_t columns);

// A part and whose time it was, if it took any.
struct TimeShare {
  TimePart part = TimePart::kIdle;
  TimeOwner owner = TimeOwner::kNetwork;
  Microseconds time = 0;
};
// The longest first.
std::vector<TimeShare> SharesOf(const AssociationTiming& times);

// "64.0 %", rounded; "-" of nothing.
std::string ShareText(Microseconds part, Microseconds whole);

}  // namespace host

#endif  // HOST_TIMING_TIME_SHARES_H_
