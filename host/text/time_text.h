#ifndef HOST_TEXT_TIME_TEXT_H_
#define HOST_TEXT_TIME_TEXT_H_

#include <cstdint>
#include <string>

namespace host {

// A point in time as capture files keep it: nanoseconds since 1970-01-01 UTC.
// Also the difference of two such points.
using Nanoseconds = std::int64_t;

// "2024-05-03T10:11:12.123456789Z"; `digits` of the second's fraction, 0 to 9.
std::string UtcTime(Nanoseconds time, int digits);
// The same for people: "2024-05-03 10:11:12.123 UTC".
std::string UtcText(Nanoseconds time, int digits);
std::string TimeOfDay(Nanoseconds time);  // "10:11:12.123456", UTC
// "1.234567"; `digits` of the fraction, 0 to 9.
std::string Seconds(Nanoseconds duration, int digits);

}  // namespace host

#endif  // HOST_TEXT_TIME_TEXT_H_
