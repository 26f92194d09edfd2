#ifndef HOST_CAPVIEW_PANE_LAYOUT_H_
#define HOST_CAPVIEW_PANE_LAYOUT_H_

#include <windows.h>

#include <optional>

namespace host {

// Which of the two bars between the panes.
enum class Splitter { kBelowList, kBesideTree };

// How the panes share the window, in per cent.
struct PaneShares {
  // What a share is kept to, so that something of both panes is left.
  static constexpr int kLeast = 5;
  static constexpr int kMost = 95;

  int list = 42;  // of the panes' height
  int tree = 52;  // of the lower panes' width

  int& Of(Splitter splitter);
  // A share outside the limits becomes the nearest inside.
  void Set(Splitter splitter, int share);
};

// What parts want for themselves, in pixels.
struct PaneHeights {
  int findings = 0;  // 0: there are none
  int times = 0;     // 0: the time bar is not there
  int tabs = 0;
};

// Where everything stands in the window: a bar with the chooser, below it the
// findings if there are any, the time bar if it is there, then the list, the
// tabs, and of the tab either
// tree and hex dump side by side or the contexts in their place.
// What is below all of them, the status line, places itself. Everything in
// pixels of the window's client area; no place has a negative height, however
// small the window is.
class PaneLayout {
 public:
  // `client` without the status line; `dpi` of the screen; the findings and
  // the time bar get their heights if that leaves room for the other panes.
  PaneLayout(SIZE client, unsigned dpi, const PaneShares& shares,
             const PaneHeights& heights = {});

  RECT connections, pdus, messages, filter_label, filter;
  RECT findings, times;
  RECT list, tabs, tree, hex, contexts;

  // The bar between panes at a point, if there is one.
  std::optional<Splitter> SplitterAt(POINT point) const;
  // The share, in per cent, that puts the bar at the point; may lie outside the
  // limits.
  int ShareAt(Splitter splitter, POINT point) const;

 private:
  // The controls of the bar; those below it.
  void PlaceBar(int width, unsigned dpi);
  void PlacePanes(unsigned dpi, const PaneShares& shares, int tabs_height);

  RECT panes_;  // all of them with the bars between
};

}  // namespace host

#endif  // HOST_CAPVIEW_PANE_LAYOUT_H_
