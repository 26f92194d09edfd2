#include "host/timing/time_shares.h"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

namespace host {
namespace {

using SpanPlace = std::vector<TimeSpan>::const_iterator;

// When a column of the bar begins and ends.
std::pair<Microseconds, Microseconds> TimeOf(const AssociationTiming& times,
                                             std::size_t columns,
                                             std::size_t column) {
  const auto count = static_cast<Microseconds>(columns);
  const auto i = static_cast<Microseconds>(column);
  return {times.begin + times.Duration() * i / count,
          times.begin + times.Duration() * (i + 1) / count};
}

// How much of the span lies between the two times.
Microseconds ShareIn(const TimeSpan& span, Microseconds from, Microseconds to) {
  return std::min(span.end, to) - std::max(span.begin, from);
}

// Of which there is the most between the two times, if there is anything;
// `first` is the first span that ends behind `from`.
std::optional<TimePart> PartOf(SpanPlace first, const AssociationTiming& times,
                               Microseconds from, Microseconds to) {
  std::array<Microseconds, kTimeParts> parts{};
  for (auto one = first; one != times.spans.end() && one->begin < to; ++one) {
    parts[static_cast<std::size_t>(one->part)] += ShareIn(*one, from, to);
  }
  const auto most = std::ranges::max_element(parts);
  if (*most == 0) return {};
  return static_cast<TimePart>(most - parts.begin());
}

}  // namespace

std::string TimeBar(const AssociationTiming& times, std::size_t columns) {
  std::string bar(columns, ' ');
  for (const BarRun& run : BarRuns(times, columns)) {
    std::fill(bar.begin() + static_cast<std::ptrdiff_t>(run.begin),
              bar.begin() + static_cast<std::ptrdiff_t>(run.end),
              PartLetter(run.part));
  }
  return bar;
}

std::vector<BarRun> BarRuns(const AssociationTiming& times,
                            std::size_t columns) {
  std::vector<BarRun> runs;
  auto span = times.spans.begin();
  for (std::size_t i = 0; i < columns && times.Duration() > 0; ++i) {
    const auto [from, to] = TimeOf(times, columns, i);
    while (span != times.spans.end() && span->end <= from) ++span;
    const auto part = PartOf(span, times, from, to);
    if (!part) continue;
    if (!runs.empty() && runs.back().end == i && runs.back().part == *part) {
      ++runs.back().end;
    } else {
      runs.push_back({i, i + 1, *part});
    }
  }
  return runs;
}

std::optional<TimeSpan> SpanAt(const AssociationTiming& times,
                               std::size_t columns, std::size_t column) {
  if (column >= columns || times.Duration() <= 0) return {};
  const auto [from, to] = TimeOf(times, columns, column);
  const auto first =
      std::ranges::upper_bound(times.spans, from, {}, &TimeSpan::end);
  const auto part = PartOf(first, times, from, to);
  std::optional<TimeSpan> found;
  Microseconds most = 0;
  for (auto one = first; one != times.spans.end() && one->begin < to; ++one) {
    const Microseconds share = ShareIn(*one, from, to);
    if (one->part != part || share <= most) continue;
    found = *one;
    most = share;
  }
  return found;
}

std::vector<TimeShare> SharesOf(const TimeSums& sums) {
  std::vector<TimeShare> shares;
  for (std::size_t p = 0; p < kTimeParts; ++p) {
    for (std::size_t o = 0; o < kTimeOwners; ++o) {
      const auto part = static_cast<TimePart>(p);
      const auto owner = static_cast<TimeOwner>(o);
      const Microseconds time = sums.Of(part, owner);
      if (time != 0) shares.push_back({part, owner, time});
    }
  }
  return shares;
}

std::vector<TimeShare> SharesOf(const AssociationTiming& times) {
  std::vector<TimeShare> shares = SharesOf(times.sums);
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
