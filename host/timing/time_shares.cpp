#include "host/timing/time_shares.h"

#include <algorithm>
#include <array>
#include <functional>

namespace host {

std::string TimeBar(const AssociationTiming& times, std::size_t columns) {
  std::string bar(columns, ' ');
  const auto count = static_cast<Microseconds>(columns);
  auto span = times.spans.begin();
  for (Microseconds i = 0; i < count && times.Duration() > 0; ++i) {
    const Microseconds from = times.begin + times.Duration() * i / count;
    const Microseconds to = times.begin + times.Duration() * (i + 1) / count;
    std::array<Microseconds, kTimeParts> parts{};
    while (span != times.spans.end() && span->end <= from) ++span;
    for (auto one = span; one != times.spans.end() && one->begin < to; ++one) {
      parts[static_cast<std::size_t>(one->part)] +=
          std::min(one->end, to) - std::max(one->begin, from);
    }
    const auto most = std::ranges::max_element(parts);
    if (*most == 0) continue;
    bar[static_cast<std::size_t>(i)] =
        PartLetter(static_cast<TimePart>(most - parts.begin()));
  }
  return bar;
}

std::vector<TimeShare> SharesOf(const AssociationTiming& times) {
  std::vector<TimeShare> shares;
  for (std::size_t p = 0; p < kTimeParts; ++p) {
    for (std::size_t o = 0; o < kTimeOwners; ++o) {
      const auto part = static_cast<TimePart>(p);
      const auto owner = static_cast<TimeOwner>(o);
      const Microseconds time = times.sums.Of(part, owner);
      if (time != 0) shares.push_back({part, owner, time});
    }
  }
  std::ranges::stable_sort(shares, std::greater(), &TimeShare::time);
  return shares;
}

std::string ShareText(Microseconds part, Microseconds whole) {
  if (whole <= 0) return "-";
  constexpr Microseconds kLong = 1'000'000'000'000'000;
  if (whole > kLong) return ShareText(part / 1000, whole / 1000);
  const Microseconds tenths = (part * 1000 + whole / 2) / whole;
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " %";
}

}  // namespace host
