#ifndef HOST_CAPVIEW_DETAIL_VIEW_H_
#define HOST_CAPVIEW_DETAIL_VIEW_H_

#include <windows.h>

#include <optional>
#include <string>

#include "host/capview/pane_layout.h"
#include "host/capview/ui_fonts.h"
#include "host/rows/decoded_row.h"

namespace host {

// What can be copied of the line that is selected.
enum class LinePart { kWhole, kValue, kSubtree, kBytes };

// One of the tabs below the rows: what it shows of the selected row, and what a
// person does there by commands. Its controls are children of the window.
class DetailView {
 public:
  virtual ~DetailView() = default;

  virtual void SetFonts(const UiFonts& fonts) = 0;
  virtual void Place(const PaneLayout& layout) = 0;
  // Its controls are seen, or those of another tab are.
  virtual void SetVisible(bool visible) = 0;
  // The control that gets the focus when the tab is chosen.
  virtual HWND Handle() const = 0;

  // Of another row now, or of none. Called while it can be seen only.
  virtual void ShowRow(const std::optional<RowRef>& row) = 0;

  // Selects the next line with the text, or the one before, going round at the
  // end; false when there is none.
  virtual bool SelectNext(const std::wstring& text, bool backwards) = 0;
  // Opens or closes every line that has others below it.
  virtual void ExpandAll(bool expand) = 0;
  // Empty when no line is selected, or it has no such part.
  virtual std::optional<std::wstring> Copied(LinePart part) = 0;
};

}  // namespace host

#endif  // HOST_CAPVIEW_DETAIL_VIEW_H_
