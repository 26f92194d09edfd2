#include "host/capview/pane_layout.h"

#include <algorithm>

namespace host {
namespace {

constexpr int kLeastShare = 5;
constexpr int kMostShare = 95;

}  // namespace

PaneLayout::PaneLayout(SIZE client, int status_height, unsigned dpi,
                       int list_share, int tree_share)
    : gap_(MulDiv(5, static_cast<int>(dpi), 96)) {
  const int bar = MulDiv(36, static_cast<int>(dpi), 96);
  const LONG bottom = std::max<LONG>(client.cy - status_height, bar);
  panes_ = {0, bar, client.cx, bottom};
  const LONG list_end = bar + (bottom - bar) * list_share / 100;
  const LONG tree_end = client.cx * tree_share / 100;
  list = {0, bar, client.cx, std::max<LONG>(list_end - gap_, bar)};
  tree = {0, list_end, std::max<LONG>(tree_end - gap_, 0), bottom};
  hex = {tree_end, list_end, client.cx, bottom};
  PlaceBar(client.cx, dpi);
}

void PaneLayout::PlaceBar(int width, unsigned dpi) {
  const auto scaled = [dpi](int pixels) {
    return MulDiv(pixels, static_cast<int>(dpi), 96);
  };
  const LONG top = scaled(5);
  const LONG bottom = scaled(31);
  LONG right = width - scaled(5);
  const auto take = [&](int pixels) {
    const RECT place{std::max<LONG>(right - scaled(pixels), 0), top, right,
                     bottom};
    right = place.left - scaled(5);
    return place;
  };
  filter = take(width > scaled(1500) ? 280 : 200);
  filter.top += scaled(2);
  filter.bottom -= scaled(2);
  filter_label = take(36);
  messages = take(84);
  pdus = take(64);
  connections = {scaled(5), top, std::max<LONG>(right, scaled(50)), bottom};
}

std::optional<Splitter> PaneLayout::SplitterAt(POINT point) const {
  if (!PtInRect(&panes_, point)) return {};
  if (point.y >= list.bottom && point.y < tree.top) return Splitter::kBelowList;
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
  return NearestShare(static_cast<int>(place * 100 / whole));
}

int PaneLayout::NearestShare(int share) {
  return std::clamp(share, kLeastShare, kMostShare);
}

}  // namespace host
