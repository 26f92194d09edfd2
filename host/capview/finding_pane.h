#ifndef HOST_CAPVIEW_FINDING_PANE_H_
#define HOST_CAPVIEW_FINDING_PANE_H_

#include <windows.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/capture/frame_names.h"
#include "host/capview/ui_fonts.h"
#include "host/findings/finding.h"

namespace host {

// What is wrong in the capture, worst first, each with what to do about it; or
// that nothing is. As high as it needs to be, up to a few lines, and not there
// while there is nothing to say.
class FindingPane {
 public:
  // Throws Failure.
  FindingPane(HWND parent, int id);

  // The list box; the parent's.
  HWND Handle() const { return window_; }
  void SetFonts(const UiFonts& fonts);
  // In pixels, of the pane in this width.
  int HeightIn(int width);
  void Place(const RECT& place);

  // Shows these in place of others, behind the verdict unless that is empty.
  // What was selected stays so if it is still there.
  void Show(const std::vector<Finding>& findings, const std::string& verdict,
            const FrameNames& names);

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
  // One finding, or the verdict.
  struct Entry {
    std::optional<std::size_t> finding;
    std::wstring text;
    std::wstring advice;
  };

  // Makes the lines of the list box, none wider than the pane in this width.
  void Break(int width);
  void BreakText(HDC device, const std::wstring& text, std::size_t entry,
                 const wchar_t* margin);
  // Its first line.
  void Select(std::size_t entry);
  // The entry that the selected line is of; none: no line is selected.
  std::optional<std::size_t> Selected() const;

  HWND window_;
  int line_height_ = 0;
  int width_ = 0;  // that the lines are broken for
  std::vector<Entry> entries_;
  std::function<void(std::size_t)> on_chosen_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_FINDING_PANE_H_
