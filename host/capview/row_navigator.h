#ifndef HOST_CAPVIEW_ROW_NAVIGATOR_H_
#define HOST_CAPVIEW_ROW_NAVIGATOR_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "host/capview/capture_document.h"
#include "host/capview/decode_job.h"
#include "host/capview/panes.h"
#include "host/capview/row_model.h"
#include "host/capview/work_loop.h"

namespace host {

// Which rows of the connection are listed, and which one of them is shown. A
// place is kept through everything that makes rows come and go: it is wanted
// until there is such a row, then selected and pending until the module has it,
// then shown. Rows count from 0.
class RowNavigator {
 public:
  // All must outlive this.
  RowNavigator(CaptureDocument& document, RowModel& model, Panes& panes,
               WorkLoop& work);

  // Told after each display.
  void OnShown(std::function<void()> handler) {
    on_shown_ = std::move(handler);
  }

  // Empties the panes, before the rows of another connection or list come.
  // What is wanted stays wanted.
  void Clear();
  // Rows have come or changed. When nothing was shown or wanted, the first row
  // is.
  void Update();
  // The row is selected and shown as soon as there is one; empty: the first. If
  // a byte of it is named, the line that describes it is selected then.
  void Want(std::optional<std::uint32_t> row,
            std::optional<std::uint32_t> byte = {}) {
    wanted_ = row;
    wanted_byte_ = byte;
  }

  // PDUs or messages; at the same place of the capture.
  void ShowList(ListKind list);
  // As it is typed. The row that is shown stays selected while it passes.
  void Filter(const std::wstring& text);
  // Rows in the order of a column, or again in the capture's when they are in
  // it already; the first of them is shown then. Columns that have no order
  // stand for the capture's.
  void SortBy(RowColumn column);
  // `number` as the person reads it, from 1 on. Says it when there is no such
  // row.
  void GoTo(const std::wstring& number);
  // From a command to its response and back, in the messages.
  void Jump();
  // The switches of the decode have changed.
  void ShowAgain();

  // Rows to save or to print, if there are any.
  std::optional<RowRange> SelectedRow() const;
  std::optional<RowRange> AllRows() const;

  // Shows the row that is pending as soon as the module has it; false when
  // there is nothing to show. Not inside a slice.
  bool ShowPending();
  // Whether ShowPending() would show a row.
  bool IsPendingThere() const;

 private:
  // The person has selected the row.
  void Show(std::uint32_t row);

  CaptureDocument& document_;
  RowModel& model_;
  Panes& panes_;
  WorkLoop& work_;
  std::function<void()> on_shown_;
  std::optional<std::uint32_t> wanted_;
  std::optional<std::uint32_t> pending_;
  std::optional<std::uint32_t> shown_;
  std::optional<std::uint32_t> wanted_byte_;  // of the wanted or pending row
};

}  // namespace host

#endif  // HOST_CAPVIEW_ROW_NAVIGATOR_H_
