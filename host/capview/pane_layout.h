#ifndef HOST_CAPVIEW_PANE_LAYOUT_H_
#define HOST_CAPVIEW_PANE_LAYOUT_H_

#include <windows.h>

#include <optional>

namespace host {

// Which of the two bars between the panes.
enum class Splitter { kBelowList, kBesideTree };

// Where everything stands in the window: a bar with the chooser, the list below
// it, tree and hex dump side by side, the status line.
class PaneLayout {
 public:
  // Shares in per cent; `status_height` in pixels.
  PaneLayout(SIZE client, int status_height, unsigned dpi, int list_share,
             int tree_share);

  RECT connections, pdus, messages, filter_label, filter;
  RECT list, tree, hex;

  std::optional<Splitter> SplitterAt(POINT point) const;
  // The share that puts the bar at the point.
  int ShareAt(Splitter splitter, POINT point) const;
  // The nearest share that leaves something of both panes.
  static int NearestShare(int share);

 private:
  void PlaceBar(int width, unsigned dpi);

  RECT panes_;  // all three with the bars
  int gap_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_PANE_LAYOUT_H_
