#ifndef HOST_ROWS_ROW_PAGES_H_
#define HOST_ROWS_ROW_PAGES_H_

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "host/rows/decoded_row.h"

namespace host {

// The rows of a list that are in sight, fetched page by page when they are
// asked for. A few pages are kept and the one that was not used for the longest
// time is replaced, so that a list of any length costs the same memory.
class RowPages {
 public:
  static constexpr std::uint32_t kPageRows = 40;

  // Answers up to kPageRows rows from row `first` on, which counts from 0.
  using Source = std::function<std::vector<ListedRow>(std::uint32_t first)>;
  explicit RowPages(Source source) : source_(std::move(source)) {}

  // A row of the list, from 0; null when the source has none by now. Valid
  // until the next call.
  const ListedRow* At(std::uint32_t row);
  // Rows may have changed, as they do while a capture is being read.
  void Forget();

 private:
  struct Page {
    std::uint32_t number = 0;
    std::uint64_t used = 0;  // count of uses when it was; 0: holds nothing
    std::vector<ListedRow> rows;
  };

  // The page of that number, fetched if it must be.
  Page& PageOf(std::uint32_t number);

  Source source_;
  std::array<Page, 8> pages_;
  std::uint64_t uses_ = 0;
};

}  // namespace host

#endif  // HOST_ROWS_ROW_PAGES_H_
