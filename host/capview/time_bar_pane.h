#ifndef HOST_CAPVIEW_TIME_BAR_PANE_H_
#define HOST_CAPVIEW_TIME_BAR_PANE_H_

#include <windows.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "host/capview/capture_document.h"
#include "host/capview/time_bar_drawing.h"
#include "host/capview/ui_fonts.h"
#include "host/timing/time_shares.h"

namespace host {

// Where the time of the association went that the selected row belongs to: a
// bar along it, parted as its time was, with a legend below and a mark at the
// row. Not there while the times are not known, or there is no association.
class TimeBarPane {
 public:
  // The document must outlive it. Throws Failure.
  TimeBarPane(HWND parent, int id, const CaptureDocument& document);
  // The control must still be there, or be gone by now.
  ~TimeBarPane();
  TimeBarPane(const TimeBarPane&) = delete;
  TimeBarPane& operator=(const TimeBarPane&) = delete;

  // The parent's.
  HWND Handle() const { return window_; }
  void SetFonts(const UiFonts& fonts);
  // Whether the person wants to see it at all.
  void SetWanted(bool wanted) { wanted_ = wanted; }
  bool IsWanted() const { return wanted_; }
  // In pixels; 0 when it is not there.
  int Height() const;
  void Place(const RECT& place);

  // Another row is selected, or none: then the first association is shown.
  void ShowRow(const std::optional<RowRef>& row);
  // The document's times have become others.
  void Update();

  // Told the time of the capture that the person wants to be taken to.
  void OnChosen(std::function<void(Nanoseconds)> handler) {
    on_chosen_ = std::move(handler);
  }
  // The person wants to be taken to the part that the arrow keys have come to.
  void Choose();
  // Told what there is to say about that part.
  void OnText(std::function<void(const std::string&)> handler) {
    on_text_ = std::move(handler);
  }

 private:
  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wide,
                                    LPARAM data, UINT_PTR id, DWORD_PTR object);
  std::optional<LRESULT> Answer(UINT message, WPARAM wide, LPARAM data);

  // Whether there are times of any association.
  bool IsThere() const;
  // Of the association that is shown; null where they cannot be shown.
  const AssociationTiming* Times() const;
  void Paint();
  void DrawAll(HDC device, const RECT& area) const;
  // The bar without its frame: a pixel is a column.
  RECT Bar() const;
  std::size_t Columns() const;
  // The column below a point, or none.
  std::optional<std::size_t> ColumnAt(POINT point) const;
  void Hover(POINT point);
  void GoTo(std::size_t column);
  // To the run behind or before the one that the keys have come to.
  void Move(int step);
  std::string TextAt(std::size_t column) const;
  // The parts and their shares, the longest first.
  std::string LegendText() const;

  const CaptureDocument& document_;
  HWND window_;
  HWND tip_;              // the system's hint beside the mouse; the parent's
  HFONT font_ = nullptr;  // the window's
  unsigned dpi_ = 96;
  std::unique_ptr<TimeBarDrawing> drawing_;
  bool wanted_ = true;
  std::uint32_t association_ = 0;
  std::optional<Nanoseconds> row_time_;    // of the row that is selected
  std::optional<std::size_t> key_column_;  // that the arrow keys have come to
  std::string hint_;
  std::function<void(Nanoseconds)> on_chosen_;
  std::function<void(const std::string&)> on_text_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_TIME_BAR_PANE_H_
