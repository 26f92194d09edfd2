#include <array>
#include <chrono>
#include <cstdio>

#include "host/report.h"

namespace host {
namespace {

constexpr Nanoseconds kSecond = 1'000'000'000;

std::string Fraction(Nanoseconds nanoseconds, int digits) {
  if (digits == 0) return {};
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), ".%09d",
                static_cast<int>(nanoseconds));
  return std::string(text.data(), static_cast<std::size_t>(digits) + 1);
}

}  // namespace

std::string UtcTime(Nanoseconds time, int digits) {
  using std::chrono::days;
  const std::chrono::sys_time<std::chrono::nanoseconds> point{
      std::chrono::nanoseconds(time)};
  const auto day = std::chrono::floor<days>(point);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(point - day);
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d",
                static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text.data() + Fraction(clock.subseconds().count(), digits) + "Z";
}

std::string Seconds(Nanoseconds duration, int digits) {
  const bool negative = duration < 0;
  if (negative) duration = -duration;
  return (negative ? "-" : "") + std::to_string(duration / kSecond) +
         Fraction(duration % kSecond, digits);
}

}  // namespace host
