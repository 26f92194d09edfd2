#ifndef HOST_CAPVIEW_LIST_COLUMNS_H_
#define HOST_CAPVIEW_LIST_COLUMNS_H_

#include <windows.h>

#include <array>
#include <optional>

#include "host/capview/row_model.h"

namespace host {

// The columns of the row list: their titles, widths and order. The last one,
// the outcome, takes what the others leave of the list's width, but never less
// than the person gave it. Those of latency and throughput are not always
// there.
class ListColumns {
 public:
  // What the person has chosen. Widths are in pixels at text scale 96, so that
  // they mean the same number of characters in any font; the order is from left
  // to right.
  struct Choice {
    std::array<int, kRowColumns> widths{45, 60, 125, 88,  150, 60,
                                        80, 95, 145, 110, 215};
    std::array<int, kRowColumns> order{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    // Whether latency and throughput are wanted; empty: where the list is wide
    // enough for them.
    std::optional<bool> times = {};
  };

  // Puts the columns into the list view, which must outlive this.
  explicit ListColumns(HWND list);

  Choice Chosen() const;
  void Choose(const Choice& choice);
  // The font has changed: UiFonts::text_scale. The widths follow it.
  void SetScale(unsigned scale);

  // Whether the rows have latency and throughput at all.
  void SetHasTimes(bool has_times);
  // Whether these are seen now.
  bool ShowsTimes() const { return shows_times_; }
  void WantTimes(bool wanted);
  // The head of the column says that the rows are in its order.
  void MarkSorted(std::optional<RowColumn> column);

  // The list has been given another size.
  void Fill();
  // A scroll bar may have come or gone.
  void Refill();

 private:
  // Lets the columns of times come or go; answers whether they did.
  bool UpdateTimes();
  // In pixels, of any column but the last.
  int WidthOf(int column) const;
  // In pixels, as the person wants it, whatever Fill() made of it.
  int OutcomeWidth() const;

  HWND list_;
  unsigned scale_ = 96;
  int least_last_ = 0;     // in pixels
  int filled_last_ = 0;    // as Fill() has set it
  LONG filled_width_ = 0;  // of the whole list at that time
  bool has_times_ = false;
  bool shows_times_ = false;
  std::optional<bool> wants_times_;
  std::array<int, 2> times_widths_{};  // in pixels, while they are not seen
  std::optional<RowColumn> sorted_by_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_LIST_COLUMNS_H_
