#ifndef HOST_CAPVIEW_ROW_LIST_H_
#define HOST_CAPVIEW_ROW_LIST_H_

#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "host/capview/list_columns.h"
#include "host/capview/pane_layout.h"
#include "host/capview/row_model.h"
#include "host/capview/ui_fonts.h"

namespace host {

// The packet list: a virtual list view over the rows of a model. Texts are
// asked for when they come into sight. Rows are named by their position in the
// model, which counts from 0 and does not change with the filter.
class RowList {
 public:
  // The model must outlive the list. Throws Failure.
  RowList(HWND parent, int id, RowModel& model);

  // The list view; the parent's.
  HWND Handle() const { return window_; }
  void SetFonts(const UiFonts& fonts);
  void Place(const PaneLayout& layout);
  ListColumns& Columns() { return columns_; }
  const ListColumns& Columns() const { return columns_; }

  // Stands in the list while it has no rows.
  void SetHint(const std::wstring& hint);

  // The model's rows have come or changed; the place stays where it is.
  void Update();
  // Empty selects none. In place of a row that the filter hides, the next one
  // behind it is selected, if there is one.
  void Select(std::optional<std::uint32_t> position);
  // The same without telling the handler.
  void Mark(std::optional<std::uint32_t> position);
  std::optional<std::uint32_t> Selected() const;
  // To the next (+1) or previous (-1) shown row; without a selection to the
  // first.
  void Move(int step);

  // Told the position of each newly selected row.
  void OnSelected(std::function<void(std::uint32_t)> handler) {
    on_selected_ = std::move(handler);
  }
  // Told whose head was clicked.
  void OnHead(std::function<void(RowColumn)> handler) {
    on_head_ = std::move(handler);
  }
  // Answers what the control tells its parent by WM_NOTIFY.
  LRESULT Notify(NMHDR* header);

 private:
  void Deselect();
  // Puts the text of a cell where the control wants it.
  void FillText(LVITEMW& item);
  // Colours and font of the rows, and the hint; all else the control draws.
  LRESULT Draw(NMLVCUSTOMDRAW& draw);
  LRESULT DrawRow(NMLVCUSTOMDRAW& draw);
  void DrawHint(HDC device) const;
  // The control counts the shown rows by an index from 0.
  bool IsSelected(std::uint32_t index) const;
  std::optional<std::uint32_t> SelectedIndex() const;

  RowModel& model_;
  HWND window_;
  ListColumns columns_;
  HFONT bold_ = nullptr;  // the window's
  std::wstring hint_;
  std::wstring text_;           // of the cell that was asked for last
  std::uint32_t selected_ = 0;  // the index that was selected last
  bool silent_ = false;         // selections are our own
  std::function<void(std::uint32_t)> on_selected_;
  std::function<void(RowColumn)> on_head_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_ROW_LIST_H_
