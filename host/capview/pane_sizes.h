#ifndef HOST_CAPVIEW_PANE_SIZES_H_
#define HOST_CAPVIEW_PANE_SIZES_H_

#include <windows.h>

#include <memory>
#include <optional>

#include "host/capview/pane_layout.h"
#include "host/capview/panes.h"
#include "host/capview/ui_fonts.h"

namespace host {

// How large the panes and their texts are: shares of the window, the font, and
// the bars between the panes, which the person drags.
class PaneSizes {
 public:
  // What the person has chosen and finds again the next time.
  struct Choice {
    static constexpr int kLeastPoints = 6;
    static constexpr int kMostPoints = 36;

    PaneShares shares;
    int font_points = kUsualPoints;
  };

  // Both must outlive this. The panes have their fonts from here on; they are
  // in their places after the first Place().
  PaneSizes(HWND window, Panes& panes, const Choice& choice);

  // What was chosen in the meantime included.
  const Choice& Chosen() const { return choice_; }

  // Puts every pane where it belongs; wanted whenever the window's size has
  // changed.
  void Place();
  // The window has come to another screen.
  void ChangeDpi();
  // Both stop at what is still sensible.
  void ChangeFont(int by_points);
  void MoveSplitter(Splitter splitter, int by_percent);

  // Messages of the mouse that belong to the bars; no answer: not ours.
  std::optional<LRESULT> AnswerMouse(UINT message, LPARAM data);

 private:
  PaneLayout Layout() const;
  // For the screen that the window is on, in the size that was chosen.
  void MakeFonts();
  // Over a bar the cursor tells how it can be moved: true there.
  bool ShowsCursor() const;

  HWND window_;
  Panes& panes_;
  Choice choice_;
  std::unique_ptr<UiFonts> fonts_;
  std::optional<Splitter> dragged_;  // while the mouse button is down
};

}  // namespace host

#endif  // HOST_CAPVIEW_PANE_SIZES_H_
