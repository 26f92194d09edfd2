#ifndef HOST_DATASET_DATE_TEXT_H_
#define HOST_DATASET_DATE_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

namespace host {

// Dates, times and ages as people write them; nothing when the value is none.
// Ranges, as queries have them, are two with "to" between them; one that is
// open is "from" or "until". `value` is without padding and not empty.

std::optional<std::string> DateText(std::string_view value);  // "2026-11-21"
std::optional<std::string> TimeText(std::string_view value);  // "02:24:41.635"
// "2026-11-21 02:24:41.635 +01:00"
std::optional<std::string> DateTimeText(std::string_view value);
std::optional<std::string> AgeText(std::string_view value);  // "45 years"

}  // namespace host

#endif  // HOST_DATASET_DATE_TEXT_H_
