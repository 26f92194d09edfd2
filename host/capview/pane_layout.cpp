#include "host/capview/pane_layout.h"

#include <algorithm>

#include "host/capview/ui_fonts.h"

namespace host {
namespace {

// In pixels at 96 dpi.
constexpr int kBarHeight = 36;
constexpr int kGap = 5;

}  // namespace

int& PaneShares::Of(Splitter splitter) {
  return splitter == Splitter::kBelowList ? list : tree;
}

void PaneShares::Set(Splitter splitter, int share) {
  Of(splitter) = std::clamp(share, kLeast, kMost);
}

PaneLayout::PaneLayout(SIZE client, unsigned dpi, const PaneShares& shares,
                       const PaneHeights& heights) {
  const LONG bar = Scaled(kBarHeight, dpi);
  const LONG bottom = std::max<LONG>(client.cy, bar);
  // Findings take a third of the room at the most.
  const LONG top = bar + std::min<LONG>(heights.findings, (bottom - bar) / 3);
  findings = {0, bar, client.cx, top};
  // The time bar is there as a whole or not at all.
  const bool has_times = heights.times <= (bottom - top) / 4;
  const LONG times_end = top + (has_times ? heights.times : 0);
  times = {0, top, client.cx, times_end};
  panes_ = {0, times_end, client.cx, bottom};
  PlaceBar(client.cx, dpi);
  PlacePanes(dpi, shares, heights.tabs);
}

void PaneLayout::PlacePanes(unsigned dpi, const PaneShares& shares,
                            int tabs_height) {
  const auto& [left, top, right, bottom] = panes_;
  const int gap = Scaled(kGap, dpi);
  const LONG list_end = top + (bottom - top) * shares.list / 100;
  const LONG tree_end = right * shares.tree / 100;
  list = {left, top, right, std::max<LONG>(list_end - gap, top)};
  const LONG tabs_end = std::min<LONG>(list_end + tabs_height, bottom);
  tabs = {left, list_end, right, tabs_end};
  tree = {left, tabs_end, std::max<LONG>(tree_end - gap, left), bottom};
  hex = {tree_end, tabs_end, right, bottom};
  contexts = {left, tabs_end, right, bottom};
}

// From right to left; what is left over is the chooser's.
void PaneLayout::PlaceBar(int width, unsigned dpi) {
  const LONG top = Scaled(5, dpi);
  const LONG bottom = Scaled(31, dpi);
  LONG right = width - Scaled(5, dpi);
  const auto take = [&](int pixels) {
    const RECT place{std::max<LONG>(right - Scaled(pixels, dpi), 0), top, right,
                     bottom};
    right = place.left - Scaled(5, dpi);
    return place;
  };
  filter = take(width > Scaled(1500, dpi) ? 280 : 200);
  filter.top += Scaled(2, dpi);
  filter.bottom -= Scaled(2, dpi);
  filter_label = take(36);
  messages = take(84);
  pdus = take(64);
  connections = {Scaled(5, dpi), top, std::max<LONG>(right, Scaled(50, dpi)),
                 bottom};
}

std::optional<Splitter> PaneLayout::SplitterAt(POINT point) const {
  if (!PtInRect(&panes_, point)) return {};
  if (point.y >= list.bottom && point.y < tabs.top) return Splitter::kBelowList;
  if (point.y >= tree.top && point.x >= tree.right && point.x < hex.left) {
    return Splitter::kBesideTree;
  }
  return {};
}

int PaneLayout::ShareAt(Splitter splitter, POINT point) const {
  const bool list = splitter == Splitter::kBelowList;
  const LONG place = list ? point.y - panes_.top : point.x;
  const LONG whole =
      std::max<LONG>(list ? panes_.bottom - panes_.top : panes_.right, 1);
  return static_cast<int>(place * 100 / whole);
}

}  // namespace host
