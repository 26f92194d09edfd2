#ifndef HOST_CAPVIEW_DETAIL_TABS_H_
#define HOST_CAPVIEW_DETAIL_TABS_H_

#include <windows.h>

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <utility>

#include "host/capview/detail_view.h"
#include "host/capview/pane_layout.h"
#include "host/capview/ui_fonts.h"
#include "host/rows/decoded_row.h"

namespace host {

// What is shown of the selected row, from left to right.
enum class DetailTab { kDecode, kDataSet, kContexts };
inline constexpr std::size_t kDetailTabs = 3;

// The tabs above the tree, of which one is in sight. Those that are not cost
// nothing: they get the row when they are chosen.
class DetailTabs {
 public:
  using Views = std::array<DetailView*, kDetailTabs>;  // by DetailTab

  // Throws Failure.
  DetailTabs(HWND parent, int id);
  // Before anything else; they must outlive this.
  void SetViews(const Views& views);

  HWND Handle() const { return window_; }
  void SetFonts(const UiFonts& fonts);
  int Height() const;  // in pixels
  void Place(const PaneLayout& layout);

  DetailTab Chosen() const { return chosen_; }
  void Choose(DetailTab tab);
  DetailView& Active() const { return ViewOf(chosen_); }
  // The window shows this row from now on, or none.
  void ShowRow(const std::optional<RowRef>& row);

  // Told which tab the person has clicked; it is not chosen yet.
  void OnClicked(std::function<void(DetailTab)> handler) {
    on_clicked_ = std::move(handler);
  }
  // Answers what the control tells its parent by WM_NOTIFY.
  LRESULT Notify(const NMHDR* header) const;

 private:
  DetailView& ViewOf(DetailTab tab) const {
    return *views_[static_cast<std::size_t>(tab)];
  }

  HWND window_;
  Views views_{};
  DetailTab chosen_ = DetailTab::kDecode;
  std::optional<RowRef> row_;
  std::array<bool, kDetailTabs> shows_row_{};  // the view has the row already
  std::function<void(DetailTab)> on_clicked_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_DETAIL_TABS_H_
