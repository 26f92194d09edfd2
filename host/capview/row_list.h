#ifndef HOST_CAPVIEW_ROW_LIST_H_
#define HOST_CAPVIEW_ROW_LIST_H_

#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "host/capview/row_model.h"

namespace host {

// The packet list: a virtual list view over the rows of a model. Texts are
// asked for when they come into sight.
class RowList {
 public:
  RowList(HWND parent, int id, RowModel& model);

  HWND Handle() const { return window_; }
  void SetFonts(HFONT plain, HFONT bold);

  // Column widths in pixels at scale 96, and the order of the columns. The
  // detail column has at least its width.
  struct Columns {
    std::array<int, kRowColumns> widths{50, 120, 90, 190, 80, 150, 240};
    std::array<int, kRowColumns> order{0, 1, 2, 3, 4, 5, 6};
  };
  Columns GetColumns() const;
  void SetColumns(const Columns& columns, unsigned scale);

  // The detail column takes what the others leave of the width.
  void FillWidth();

  // Stands in the list while it has no rows.
  void SetHint(const std::wstring& hint);

  // The model's rows have come or changed; the place stays where it is.
  void Update();
  // Nothing is selected when there is no such row.
  void Select(std::optional<std::uint32_t> position);
  // The same without telling the handler.
  void Mark(std::optional<std::uint32_t> position);
  std::optional<std::uint32_t> Selected() const;
  // To the next (+1) or previous (-1) shown row.
  void Move(int step);

  // Told the position of each newly selected row.
  void OnSelected(std::function<void(std::uint32_t)> handler) {
    on_selected_ = std::move(handler);
  }
  LRESULT Notify(NMHDR* header);

 private:
  void AddColumns();
  void Deselect();
  void FillText(LVITEMW& item);
  LRESULT Draw(NMLVCUSTOMDRAW& draw);
  LRESULT DrawRow(NMLVCUSTOMDRAW& draw);
  void DrawHint(HDC device) const;
  int DetailWidth() const;
  bool IsSelected(std::uint32_t index) const;
  std::optional<std::uint32_t> SelectedIndex() const;

  RowModel& model_;
  HWND window_ = nullptr;
  HFONT bold_ = nullptr;
  unsigned scale_ = 96;
  int least_detail_ = 0;   // in pixels, as the person wants it
  int filled_detail_ = 0;  // as FillWidth() has set it
  LONG filled_width_ = 0;  // of the whole list at that time
  std::wstring hint_;
  std::wstring text_;
  std::uint32_t selected_ = 0;  // the index that was selected last
  bool silent_ = false;         // selections are our own
  std::function<void(std::uint32_t)> on_selected_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_ROW_LIST_H_
