#ifndef HOST_CAPVIEW_LIST_COLUMNS_H_
#define HOST_CAPVIEW_LIST_COLUMNS_H_

#include <windows.h>

#include <array>

#include "host/capview/row_model.h"

namespace host {

// The columns of the row list: their titles, widths and order. The last one,
// the outcome, takes what the others leave of the list's width, but never less
// than the person gave it.
class ListColumns {
 public:
  // What the person has chosen. Widths are in pixels at text scale 96, so that
  // they mean the same number of characters in any font; the order is from left
  // to right.
  struct Choice {
    std::array<int, kRowColumns> widths{45, 60,  125, 80, 150,
                                        60, 145, 110, 240};
    std::array<int, kRowColumns> order{0, 1, 2, 3, 4, 5, 6, 7, 8};
  };

  // Puts the columns into the list view, which must outlive this.
  explicit ListColumns(HWND list);

  Choice Chosen() const;
  void Choose(const Choice& choice);
  // The font has changed: UiFonts::text_scale. The widths follow it.
  void SetScale(unsigned scale);

  // The list has been given another size.
  void Fill();
  // A scroll bar may have come or gone.
  void Refill();

 private:
  // In pixels, as the person wants it, whatever Fill() made of it.
  int OutcomeWidth() const;

  HWND list_;
  unsigned scale_ = 96;
  int least_last_ = 0;     // in pixels
  int filled_last_ = 0;    // as Fill() has set it
  LONG filled_width_ = 0;  // of the whole list at that time
};

}  // namespace host

#endif  // HOST_CAPVIEW_LIST_COLUMNS_H_
