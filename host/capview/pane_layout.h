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

// Where everything stands in the window: a bar with the chooser, below it the
// findings if there are any, then the list, tree and hex dump side by side.
// What is below all of them, the status line, places itself. Everything in
// pixels of the window's client area; no place has a negative height, however
// small the window is.
class PaneLayout {
 public:
  // `client` without the status line; `dpi` of the screen; the findings get
  // `findings_height` if that leaves room for the other panes.
  PaneLayout(SIZE client, unsigned dpi, const PaneShares& shares,
             int findings_height = 0);

  RECT connections, pdus, messages, filter_label, filter;
  RECT findings;
  RECT list, tree, hex;

  // The bar between panes at a point, if there is one.
  std::optional<Splitter> SplitterAt(POINT point) const;
  // The share, in per cent, that puts the bar at the point; may lie outside the
  // limits.
  int ShareAt(Splitter splitter, POINT point) const;

 private:
  // The controls of the bar; those of the list, the tree and the hex dump.
  void PlaceBar(int width, unsigned dpi);
  void PlacePanes(unsigned dpi, const PaneShares& shares);

  RECT panes_;  // all three with the bars
};

}  // namespace host

#endif  // HOST_CAPVIEW_PANE_LAYOUT_H_
