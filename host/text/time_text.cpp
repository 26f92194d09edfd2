#include "host/text/time_text.h"

#include <array>
#include <chrono>
#include <cstdio>

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

std::string UtcText(Nanoseconds time, int digits) {
  std::string text = UtcTime(time, digits);
  text.replace(text.find('T'), 1, " ");
  text.pop_back();
  return text + " UTC";
}

std::string Seconds(Nanoseconds duration, int digits) {
  const bool negative = duration < 0;
  if (negative) duration = -duration;
  return (negative ? "-" : "") + std::to_string(duration / kSecond) +
         Fraction(duration % kSecond, digits);
}

// By hand, since a filter asks for the time of every row.
std::string TimeOfDay(Nanoseconds time) {
  constexpr Nanoseconds kDay = 86'400'000'000'000;
  const Nanoseconds nanoseconds = (time % kDay + kDay) % kDay;
  const auto seconds = static_cast<std::uint32_t>(nanoseconds / 1'000'000'000);
  const auto micros =
      static_cast<std::uint32_t>(nanoseconds / 1000 % 1'000'000);
  std::string text = "00:00:00.000000";
  const auto put = [&text](std::size_t last, std::size_t digits,
                           std::uint32_t number) {
    for (; digits > 0; --digits, number /= 10) {
      text[last--] = static_cast<char>('0' + number % 10);
    }
  };
  put(1, 2, seconds / 3600);
  put(4, 2, seconds / 60 % 60);
  put(7, 2, seconds % 60);
  put(14, 6, micros);
  return text;
}

}  // namespace host
