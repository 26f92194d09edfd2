#ifndef HOST_CAPVIEW_FINDING_PANE_H_
#define HOST_CAPVIEW_FINDING_PANE_H_

#include <windows.h>

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "host/capview/ui_fonts.h"
#include "host/findings/finding.h"

namespace host {

// What is wrong in the capture, worst first, a line each; as high as it needs
// to be, up to a few lines, and not there when nothing was found.
class FindingPane {
 public:
  // Throws Failure.
  FindingPane(HWND parent, int id);

  // The list box; the parent's.
  HWND Handle() const { return window_; }
  void SetFonts(const UiFonts& fonts);
  // In pixels.
  int Height() const;
  void Place(const RECT& place);

  // Shows these in place of others.
  void Show(const std::vector<Finding>& findings);

  // Told which finding, by its place among them, the person wants to be taken
  // to.
  void OnChosen(std::function<void(std::size_t)> handler) {
    on_chosen_ = std::move(handler);
  }
  // What the control tells its parent: the code of WM_COMMAND.
  void Notify(int code);
  // The person wants to be taken to the selected one.
  void Choose();

 private:
  HWND window_;
  int line_height_ = 0;
  int count_ = 0;
  std::function<void(std::size_t)> on_chosen_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_FINDING_PANE_H_
