#include "host/capview/decode_tree_pane.h"

// After windows.h.
#include <windowsx.h>

#include <algorithm>
#include <utility>

#include "host/capview/control.h"
#include "host/capview/tree_control.h"
#include "host/module/tree_reader.h"
#include "host/rows/tree_search.h"

namespace host {
namespace {

constexpr std::uint32_t kHexDumpSection = 8;

}  // namespace

DecodeTreePane::DecodeTreePane(HWND parent, int id)
    : window_(MakeTree(parent, id)) {}

void DecodeTreePane::SetFonts(const UiFonts& fonts) {
  SetWindowFont(window_, fonts.pane.get(), TRUE);
}

void DecodeTreePane::BeginFilling() {
  SetWindowRedraw(window_, FALSE);
  read_ = false;
}

void DecodeTreePane::EndFilling(std::uint32_t expand_mask) {
  ExpandSections(expand_mask);
  SetWindowRedraw(window_, TRUE);
  if (const HTREEITEM root = TreeView_GetRoot(window_)) {
    TreeView_SelectSetFirstVisible(window_, root);
  }
  InvalidateRect(window_, nullptr, TRUE);
}

void DecodeTreePane::ExpandSections(std::uint32_t mask) {
  ReadOnce();
  std::uint32_t section = 0;
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    if (lines_[i].depth == 0) {
      section = lines_[i].bytes ? lines_[i].bytes->section : 0;
    }
    const bool parent =
        i + 1 < lines_.size() && lines_[i + 1].depth > lines_[i].depth;
    // The module has seen to the hex dump itself.
    if (parent && section < kHexDumpSection && (mask >> section & 1) != 0) {
      TreeView_Expand(window_, items_[i], TVE_EXPAND);
    }
  }
}

void DecodeTreePane::ExpandAll(bool expand) {
  ReadOnce();
  SetWindowRedraw(window_, FALSE);
  for (const HTREEITEM item : items_) {
    TreeView_Expand(window_, item, expand ? TVE_EXPAND : TVE_COLLAPSE);
  }
  SetWindowRedraw(window_, TRUE);
  if (const HTREEITEM item = TreeView_GetSelection(window_)) {
    TreeView_EnsureVisible(window_, item);
  }
  InvalidateRect(window_, nullptr, TRUE);
}

std::optional<std::size_t> DecodeTreePane::SelectedLine() {
  ReadOnce();
  const auto found =
      std::find(items_.begin(), items_.end(), TreeView_GetSelection(window_));
  if (found == items_.end()) return {};
  return static_cast<std::size_t>(found - items_.begin());
}

std::optional<ByteRange> DecodeTreePane::SelectedBytes() const {
  // Of the control, since it may be in the middle of a change.
  TVITEMW request{};
  request.mask = TVIF_PARAM;
  request.hItem = TreeView_GetSelection(window_);
  if (request.hItem == nullptr || !TreeView_GetItem(window_, &request)) {
    return {};
  }
  return BytesOfItem(request.lParam);
}

void DecodeTreePane::SelectLine(std::size_t line) {
  ReadOnce();
  if (line >= items_.size()) return;
  TreeView_SelectItem(window_, items_[line]);
  TreeView_EnsureVisible(window_, items_[line]);
}

void DecodeTreePane::SelectByte(std::uint32_t byte) {
  if (const auto line = NarrowestLine(Lines(), byte)) SelectLine(*line);
}

bool DecodeTreePane::SelectNext(std::string_view text, bool backwards) {
  const auto line = FindLine(Lines(), SelectedLine(), text, backwards);
  if (line) SelectLine(*line);
  return line.has_value();
}

const std::vector<TreeLine>& DecodeTreePane::Lines() {
  ReadOnce();
  return lines_;
}

void DecodeTreePane::ReadOnce() {
  if (read_) return;
  ReadLines read = ReadTree(window_);
  lines_ = std::move(read.lines);
  items_ = std::move(read.items);
  read_ = true;
}

}  // namespace host
