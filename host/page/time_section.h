#ifndef HOST_PAGE_TIME_SECTION_H_
#define HOST_PAGE_TIME_SECTION_H_

#include <string>

#include "host/timing/connection_timing.h"

namespace host {

// Where the time of an association went, as a bar along it and a table that is
// the bar's legend; empty for one that took no time. Parts are told apart by
// patterns and letters, which grey paper shows.
std::string TimeSection(const AssociationTiming& times);

// What the bars are filled with: once on a page, before the first bar.
std::string TimePatterns();

}  // namespace host

#endif  // HOST_PAGE_TIME_SECTION_H_
