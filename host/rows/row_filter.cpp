#include "host/rows/row_filter.h"

#include "host/rows/row_text.h"
#include "host/rows/tree_search.h"
#include "host/text/number_text.h"
#include "host/text/time_text.h"

namespace host {
namespace {

constexpr std::string_view kDirection = "dir:";

std::string_view TakeWord(std::string_view& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == text.npos) return text = {};
  text.remove_prefix(first);
  const std::string_view word = text.substr(0, text.find(' '));
  text.remove_prefix(word.size());
  return word;
}

}  // namespace

RowFilter::RowFilter(std::string_view text, const std::string& first_endpoint,
                     const std::string& second_endpoint) {
  while (true) {
    const std::string_view word = TakeWord(text);
    if (word.empty()) break;
    if (word.starts_with(kDirection)) {
      TakeDirection(word.substr(kDirection.size()), first_endpoint,
                    second_endpoint);
    } else {
      if (!part_.empty()) part_ += ' ';
      part_ += word;
    }
  }
  may_be_number_ = part_.find_first_not_of("0123456789.,:") == part_.npos;
}

void RowFilter::TakeDirection(std::string_view direction,
                              const std::string& first,
                              const std::string& second) {
  if (direction == ">" || direction == "0") {
    passes_[1] = false;
  } else if (direction == "<" || direction == "1") {
    passes_[0] = false;
  } else {
    passes_[0] = passes_[0] && ContainsText(first, direction);
    passes_[1] = passes_[1] && ContainsText(second, direction);
  }
}

bool RowFilter::Passes(std::uint32_t index, const ListedRow& row,
                       const WireRecord* wire) const {
  if (!passes_[row.direction != 0]) return false;
  if (part_.empty() || ContainsText(row.summary, part_) ||
      ContainsText(row.detail, part_)) {
    return true;
  }
  if (wire != nullptr && ContainsText(wire->note, part_)) return true;
  return may_be_number_ && PassesNumbers(index, row, wire);
}

bool RowFilter::PassesNumbers(std::uint32_t index, const ListedRow& row,
                              const WireRecord* wire) const {
  const bool time = part_.find_first_of(":.") != part_.npos;
  if (time) {
    return wire != nullptr && ContainsText(TimeOfDay(wire->time), part_);
  }
  if (part_.find(',') != part_.npos) {
    return ContainsText(NumberText(row.length), part_);
  }
  return ContainsText(std::to_string(index + 1), part_) ||
         ContainsText(std::to_string(row.length), part_);
}

}  // namespace host
