#include "host/capview/data_set_pane.h"

// After windows.h.
#include <windowsx.h>

#include <algorithm>
#include <exception>

#include "host/capview/control.h"
#include "host/capview/resource.h"
#include "host/capview/tree_control.h"
#include "host/rows/tree_search.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr std::size_t kMostLines = 200000;  // that the tree holds
constexpr DWORD kOpenMilliseconds = 30;     // before others get their turn
constexpr DWORD kSearchMilliseconds = 3000;
constexpr wchar_t kMore[] = L"... more lines follow: select this line for them";

std::function<bool()> For(DWORD milliseconds) {
  const DWORD begin = GetTickCount();
  return [=] { return GetTickCount() - begin < milliseconds; };
}

// Of a line that is no node.
constexpr LPARAM kNoNode = 0x7FFFFFFF;
// Of the line that stands for more lines below a node.
LPARAM MoreOf(std::size_t node) { return -1 - static_cast<LPARAM>(node); }

}  // namespace

DataSetPane::DataSetPane(HWND parent, const CaptureDocument& document)
    : document_(document),
      tree_(MakeTree(parent, IDC_DATA_TREE)),
      hex_(parent, IDC_DATA_HEX) {
  hex_.OnByte([this](std::uint64_t byte) { GoToByte(byte); });
  SetVisible(false);
}

void DataSetPane::SetFonts(const UiFonts& fonts) {
  SetWindowFont(tree_, fonts.pane.get(), TRUE);
  hex_.SetFonts(fonts);
}

void DataSetPane::Place(const PaneLayout& layout) {
  MoveControl(tree_, layout.tree);
  MoveControl(hex_.Handle(), layout.hex);
}

void DataSetPane::SetVisible(bool visible) {
  visible_ = visible;
  ShowWindow(tree_, visible ? SW_SHOWNA : SW_HIDE);
  ShowWindow(hex_.Handle(), visible ? SW_SHOWNA : SW_HIDE);
}

void DataSetPane::ShowRow(const std::optional<RowRef>& row) {
  SetWindowRedraw(tree_, FALSE);
  Guarded([&] { Begin(row); });
  SetWindowRedraw(tree_, TRUE);
  InvalidateRect(tree_, nullptr, TRUE);
}

// The lines of the parts, opened, with nothing selected.
void DataSetPane::Begin(const std::optional<RowRef>& row) {
  fills_.clear();
  expanding_ = false;
  nodes_.clear();
  TreeView_SelectItem(tree_, nullptr);
  TreeView_DeleteAllItems(tree_);
  hex_.Show(nullptr);
  outline_.reset();
  Mark({});
  if (!row) return;
  const auto message = document_.MessageOf(*row);
  if (!message) {
    AddTreeLine(tree_,
                {.text = L"No message that could be read belongs to this row.",
                 .data = kNoNode});
    return;
  }
  outline_ = std::make_unique<MessageOutline>(
      *message->dialogue, message->dialogue->messages[message->index]);
  hex_.Show(outline_.get());
  AddTopLines();
}

void DataSetPane::AddTopLines() {
  for (const OutlineLine& line : outline_->Top()) AddLine({}, line);
  for (std::size_t part = 0; part < outline_->Parts(); ++part) {
    nodes_[part].below =
        std::make_unique<OutlineCursor>(outline_->PartAt(part));
    Want({.parent = part, .open = true});
  }
  Work(kOpenMilliseconds);
  TreeView_SelectItem(tree_, nullptr);
  TreeView_SelectSetFirstVisible(tree_, TreeView_GetRoot(tree_));
}

std::size_t DataSetPane::AddLine(std::optional<std::size_t> parent,
                                 const OutlineLine& line) {
  const std::size_t index = nodes_.size();
  Node node;
  node.parent = parent;
  node.bytes = line.bytes;
  if (parent) {
    Node& above = nodes_[*parent];
    node.ordinal = static_cast<std::uint32_t>(above.children.size());
    above.children.push_back(index);
    if (line.opens) {
      node.below = std::make_unique<OutlineCursor>(above.below->Below());
    }
  } else {
    node.ordinal = static_cast<std::uint32_t>(index);
  }
  node.item =
      AddTreeLine(tree_, {.parent = parent ? nodes_[*parent].item : TVI_ROOT,
                          .text = WideFromUtf8(line.text),
                          .opens = line.opens,
                          .data = static_cast<LPARAM>(index)});
  nodes_.push_back(std::move(node));
  return index;
}

void DataSetPane::Want(const Fill& fill) {
  if (!nodes_[fill.parent].below) return;
  const auto same = std::ranges::find(fills_, fill.parent, &Fill::parent);
  if (same == fills_.end()) fills_.push_back(fill);
}

bool DataSetPane::FillPage(Fill& fill, const MayGoOn& may_go_on) {
  Node& node = nodes_[fill.parent];
  RemoveMore(node);
  while (node.below && fill.left > 0) {
    const auto next = node.below->Next(may_go_on);
    if (!next) return false;
    if (!*next) {
      node.below.reset();
    } else if (node.below->level() == 0) {
      const std::size_t added = AddLine(fill.parent, node.below->Line());
      --fill.left;
      if (std::exchange(fill.select, false)) {
        TreeView_SelectItem(tree_, nodes_[added].item);
      }
    }
    if (!may_go_on()) return false;
  }
  EndPage(fill.parent);
  if (fill.open && !node.children.empty()) {
    TreeView_Expand(tree_, node.item, TVE_EXPAND);
  }
  return true;
}

void DataSetPane::EndPage(std::size_t parent) {
  Node& node = nodes_[parent];
  if (node.children.empty()) SetNothingBelow(tree_, node.item);
  if (!node.below) return;
  if (nodes_.size() < kMostLines) {
    node.more = AddTreeLine(
        tree_, {.parent = node.item, .text = kMore, .data = MoreOf(parent)});
    return;
  }
  node.below.reset();
  AddTreeLine(tree_,
              {.parent = node.item,
               .text = L"! No more lines fit in here; capdump --dump has all.",
               .data = kNoNode});
}

// Before others come in its place.
void DataSetPane::RemoveMore(Node& node) {
  if (node.more == nullptr) return;
  TreeView_DeleteItem(tree_, std::exchange(node.more, nullptr));
}

void DataSetPane::Work(DWORD milliseconds) {
  const MayGoOn may_go_on = For(milliseconds);
  SetWindowRedraw(tree_, FALSE);
  Guarded([&] {
    do {
      if (fills_.empty()) {
        if (expanding_) ExpandSome(may_go_on);
      } else {
        Fill fill = fills_.front();
        fills_.pop_front();
        if (!FillPage(fill, may_go_on)) fills_.push_front(fill);
      }
    } while (IsBusy() && may_go_on());
  });
  SetWindowRedraw(tree_, TRUE);
}

void DataSetPane::ExpandSome(const MayGoOn& may_go_on) {
  while (next_to_expand_ < nodes_.size() && may_go_on()) {
    const std::size_t at = next_to_expand_++;
    if (nodes_.size() > kMostExpanded) break;
    if (!nodes_[at].children.empty()) {
      TreeView_Expand(tree_, nodes_[at].item, TVE_EXPAND);
    } else if (nodes_[at].below) {
      return Want({.parent = at, .open = true});
    }
  }
  expanding_ =
      next_to_expand_ < nodes_.size() && nodes_.size() <= kMostExpanded;
}

void DataSetPane::ExpandAll(bool expand) {
  expanding_ = expand;
  next_to_expand_ = 0;
  if (expand) return Work(kOpenMilliseconds);
  SetWindowRedraw(tree_, FALSE);
  for (const Node& node : nodes_) {
    if (!node.children.empty()) {
      TreeView_Expand(tree_, node.item, TVE_COLLAPSE);
    }
  }
  SetWindowRedraw(tree_, TRUE);
}

void DataSetPane::Guarded(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::exception& failure) {
    fills_.clear();
    expanding_ = false;
    AddTreeLine(
        tree_, {.text = L"! " + WideFromUtf8(failure.what()), .data = kNoNode});
  }
}

LRESULT DataSetPane::Notify(NMHDR* header) {
  const auto& change = *reinterpret_cast<NMTREEVIEWW*>(header);
  switch (header->code) {
    case TVN_SELCHANGEDW:
      OnSelected(change);
      return 0;
    case TVN_ITEMEXPANDINGW: {
      const auto node = static_cast<std::size_t>(change.itemNew.lParam);
      if (node < nodes_.size() && nodes_[node].children.empty()) Open(node);
      return 0;
    }
    default:
      return DrawTreeSelection(header);
  }
}

// The control opens what is there in time; the rest opens itself.
void DataSetPane::Open(std::size_t node) {
  fills_.push_front({.parent = node});
  Work(kOpenMilliseconds);
  const auto rest = std::ranges::find(fills_, node, &Fill::parent);
  if (rest != fills_.end()) rest->open = true;
}

// The lines that the selected one stands for come with the next slice, when the
// control is done with it.
void DataSetPane::OnSelected(const NMTREEVIEWW& change) {
  const LPARAM data = change.itemNew.lParam;
  if (data < 0 && change.itemNew.hItem != nullptr) {
    return Want(
        {.parent = static_cast<std::size_t>(-1 - data), .select = true});
  }
  const auto node = Selected();
  Guarded(
      [&] { Mark(node ? std::optional(nodes_[*node].bytes) : std::nullopt); });
}

std::optional<std::size_t> DataSetPane::Selected() const {
  const HTREEITEM item = TreeView_GetSelection(tree_);
  if (item == nullptr) return {};
  const LPARAM data = TreeLineData(tree_, item);
  if (data < 0 || static_cast<std::size_t>(data) >= nodes_.size()) return {};
  return static_cast<std::size_t>(data);
}

void DataSetPane::Mark(const std::optional<DataRange>& bytes) {
  hex_.Mark(bytes);
  if (on_bytes_) on_bytes_(bytes);
}

void DataSetPane::GoToByte(std::uint64_t byte) {
  if (!outline_) return;
  Guarded([&] {
    const auto line = outline_->LineAt(byte, For(kSearchMilliseconds));
    if (line) Reveal(*line);
  });
}

void DataSetPane::Reveal(const OutlinePath& path) {
  std::size_t at = path.front();
  SetWindowRedraw(tree_, FALSE);
  for (std::size_t i = 1; i < path.size(); ++i) {
    while (nodes_[at].children.size() <= path[i] && nodes_[at].below) {
      Fill fill{.parent = at};
      FillPage(fill, [] { return true; });
    }
    if (nodes_[at].children.size() <= path[i]) break;
    at = nodes_[at].children[path[i]];
  }
  SetWindowRedraw(tree_, TRUE);
  TreeView_SelectItem(tree_, nodes_[at].item);
  TreeView_EnsureVisible(tree_, nodes_[at].item);
}

OutlinePath DataSetPane::PathOf(std::size_t node) const {
  OutlinePath path{nodes_[node].ordinal};
  for (auto at = nodes_[node].parent; at; at = nodes_[*at].parent) {
    path.push_back(nodes_[*at].ordinal);
  }
  std::ranges::reverse(path);
  return path;
}

bool DataSetPane::SelectNext(const std::wstring& text, bool backwards) {
  if (!outline_) return false;
  const auto selected = Selected();
  bool is_found = false;
  Guarded([&] {
    const auto line = outline_->Find(
        Utf8FromWide(text), selected ? PathOf(*selected) : OutlinePath(),
        backwards, For(kSearchMilliseconds));
    is_found = line.has_value();
    if (is_found) Reveal(*line);
  });
  return is_found;
}

std::optional<std::wstring> DataSetPane::Copied(LinePart part) {
  const auto node = Selected();
  if (!node) return {};
  if (part == LinePart::kBytes) {
    return hex_.Digits(nodes_[*node].bytes);
  }
  if (part == LinePart::kSubtree) {
    return WideFromUtf8(
        outline_->SubtreeText(PathOf(*node), For(kSearchMilliseconds)));
  }
  const std::wstring text = TreeLineText(tree_, nodes_[*node].item);
  if (part == LinePart::kWhole) return text;
  return WideFromUtf8(LineValue(Utf8FromWide(text)));
}

}  // namespace host
