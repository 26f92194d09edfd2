#include "host/timing/time_parts.h"

#include <algorithm>
#include <numeric>

namespace host {
namespace {

struct PartRow {
  std::string_view text;
  std::string_view slug;
  char letter;
};
// In the order of TimePart.
constexpr std::array<PartRow, kTimeParts> kParts{{
    {"connecting", "connecting", 'c'},
    {"negotiating", "negotiating", 'n'},
    {"preparing the next request", "preparing", 'p'},
    {"transferring", "transferring", '='},
    {"held back for an acknowledgement", "held_back", 'k'},
    {"zero window", "zero_window", 'z'},
    {"loss recovery", "loss_recovery", 'x'},
    {"thinking before the answer", "thinking", 't'},
    {"idle", "idle", '.'},
    {"releasing", "releasing", 'r'},
}};
constexpr std::array<std::string_view, kTimeOwners> kOwners{
    "requestor", "acceptor", "network"};

const PartRow& RowOf(TimePart part) {
  return kParts[static_cast<std::size_t>(part)];
}

// Adds a span behind the others, unless it is empty.
void Append(const TimeSpan& span, std::vector<TimeSpan>& spans) {
  if (span.begin >= span.end) return;
  if (!spans.empty()) {
    TimeSpan& last = spans.back();
    if (last.part == span.part && last.owner == span.owner &&
        last.message == span.message &&
        last.sub_operations == span.sub_operations && last.end == span.begin) {
      last.end = span.end;
      return;
    }
  }
  spans.push_back(span);
}

}  // namespace

std::string_view PartText(TimePart part) { return RowOf(part).text; }
std::string_view PartSlug(TimePart part) { return RowOf(part).slug; }
char PartLetter(TimePart part) { return RowOf(part).letter; }
std::string_view OwnerText(TimeOwner owner) {
  return kOwners[static_cast<std::size_t>(owner)];
}

void TimeSums::Add(const TimeSpan& span) {
  sums_[static_cast<std::size_t>(span.part)]
       [static_cast<std::size_t>(span.owner)] += span.Length();
}

Microseconds TimeSums::Of(TimePart part) const {
  const auto& row = sums_[static_cast<std::size_t>(part)];
  return std::accumulate(row.begin(), row.end(), Microseconds{0});
}

Microseconds TimeSums::Of(TimeOwner owner) const {
  Microseconds sum = 0;
  for (const auto& row : sums_) sum += row[static_cast<std::size_t>(owner)];
  return sum;
}

Microseconds TimeSums::Of(TimePart part, TimeOwner owner) const {
  return sums_[static_cast<std::size_t>(part)][static_cast<std::size_t>(owner)];
}

std::vector<TimeSpan> Overlay(const std::vector<TimeSpan>& spans,
                              const std::vector<TimeSpan>& over,
                              const Covers& covers) {
  std::vector<TimeSpan> result;
  result.reserve(spans.size());
  auto next = over.begin();
  for (const TimeSpan& span : spans) {
    Microseconds at = span.begin;
    while (next != over.end() && next->end <= at) ++next;
    for (auto above = next; above != over.end() && above->begin < span.end;
         ++above) {
      if (!covers(span, *above)) continue;
      TimeSpan piece = span;
      piece.begin = at;
      piece.end = std::max(above->begin, at);
      Append(piece, result);
      at = std::min(above->end, span.end);
      piece.begin = piece.end;
      piece.end = at;
      piece.part = above->part;
      piece.owner = above->owner;
      piece.sub_operations = above->sub_operations;
      Append(piece, result);
    }
    TimeSpan rest = span;
    rest.begin = at;
    Append(rest, result);
  }
  return result;
}

}  // namespace host
