#include "host/rows/row_pages.h"

#include <algorithm>

namespace host {

const ListedRow* RowPages::At(std::uint32_t row) {
  Page& page = PageOf(row / kPageRows);
  page.used = ++uses_;
  const std::uint32_t index = row % kPageRows;
  // The list may have grown into the page since.
  if (index >= page.rows.size()) page.rows = source_(row - index);
  return index < page.rows.size() ? &page.rows[index] : nullptr;
}

void RowPages::Forget() { pages_ = {}; }

RowPages::Page& RowPages::PageOf(std::uint32_t number) {
  const auto found =
      std::find_if(pages_.begin(), pages_.end(), [number](const Page& page) {
        return page.used != 0 && page.number == number;
      });
  if (found != pages_.end()) return *found;
  Page& page = *std::min_element(
      pages_.begin(), pages_.end(),
      [](const Page& a, const Page& b) { return a.used < b.used; });
  page.number = number;
  page.rows = source_(number * kPageRows);
  return page;
}

}  // namespace host
