#ifndef HOST_DATASET_VALUE_CHECK_H_
#define HOST_DATASET_VALUE_CHECK_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "host/dataset/vr.h"

namespace host {

// Whether values keep to their VR. Queries are taken into account: wildcards,
// ranges of dates and lists of UIDs are all right.

// What is wrong with one value, `"20261301" is no date`; empty when all is
// well. `value` is UTF-8 without trailing padding.
std::string CheckValue(Vr vr, std::string_view value);

// Whether so many values are what "1-3", "2-n" or "2-2n" allows. No value
// always is.
bool FitsMultiplicity(std::uint64_t count, std::string_view vm);

}  // namespace host

#endif  // HOST_DATASET_VALUE_CHECK_H_
