#ifndef HOST_CAPVIEW_DATA_SET_PANE_H_
#define HOST_CAPVIEW_DATA_SET_PANE_H_

#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/capview/capture_document.h"
#include "host/capview/detail_view.h"
#include "host/capview/message_hex_pane.h"
#include "host/rows/message_outline.h"

namespace host {

// A message as the host reads it: the command set and below it the data set as
// a tree, with the bytes beside it. What stands below a line is read when the
// line is opened, a page at a time, and in slices where that takes long.
class DataSetPane final : public DetailView {
 public:
  // The document must outlive it. Throws Failure.
  DataSetPane(HWND parent, const CaptureDocument& document);

  void SetFonts(const UiFonts& fonts) override;
  void Place(const PaneLayout& layout) override;
  void SetVisible(bool visible) override;
  HWND Handle() const override { return tree_; }
  // The message of the row, or the one that the row's PDU has a part of.
  void ShowRow(const std::optional<RowRef>& row) override;
  // Gives up after a few seconds.
  bool SelectNext(const std::wstring& text, bool backwards) override;
  // Of a long message, the first lines of each sequence and no more than
  // kMostExpanded in all.
  void ExpandAll(bool expand) override;
  std::optional<std::wstring> Copied(LinePart part) override;

  static constexpr std::size_t kMostExpanded = 20000;

  const MessageHexPane& Hex() const { return hex_; }
  // Told which bytes of the message are marked, empty for none.
  void OnBytes(std::function<void(const std::optional<DataRange>&)> handler) {
    on_bytes_ = std::move(handler);
  }
  // Answers what the tree tells its parent by WM_NOTIFY.
  LRESULT Notify(NMHDR* header);

  // Lines are still to be read that the person has asked for.
  bool IsBusy() const { return visible_ && (!fills_.empty() || expanding_); }
  // Reads on, for so long.
  void Work(DWORD milliseconds);

 private:
  using MayGoOn = std::function<bool()>;

  static constexpr std::size_t kPageLines = 500;

  // A line of the tree.
  struct Node {
    HTREEITEM item = nullptr;
    std::optional<std::size_t> parent;  // empty for top lines
    std::uint32_t ordinal = 0;          // among those of its parent
    DataRange bytes;
    // Where the next of the lines below it are read; empty when all of them are
    // there.
    std::unique_ptr<OutlineCursor> below;
    std::vector<std::size_t> children;  // that are there
    HTREEITEM more = nullptr;           // stands for those that are not
  };

  // A page of lines that is wanted below a line.
  struct Fill {
    std::size_t parent = 0;
    std::size_t left = kPageLines;
    bool select = false;  // the first of them
    bool open = false;    // the parent, when they are there
  };

  void Begin(const std::optional<RowRef>& row);
  void AddTopLines();
  std::size_t AddLine(std::optional<std::size_t> parent,
                      const OutlineLine& line);
  // Unless a page below that line is wanted already.
  void Want(const Fill& fill);
  // The person opens the line.
  void Open(std::size_t node);
  // As far as it may go on; true when the page is there.
  bool FillPage(Fill& fill, const MayGoOn& may_go_on);
  // Where no more lines follow, or behind a page of them.
  void EndPage(std::size_t parent);
  void RemoveMore(Node& node);
  // Opens lines one after the other; false when there are none left.
  void ExpandSome(const MayGoOn& may_go_on);
  // What goes wrong while bytes are read becomes a line.
  void Guarded(const std::function<void()>& action);

  // Adds what is missing on the way to the line, and selects it.
  void Reveal(const OutlinePath& path);
  OutlinePath PathOf(std::size_t node) const;
  // The node of the selected line; empty for none.
  std::optional<std::size_t> Selected() const;
  void OnSelected(const NMTREEVIEWW& change);
  // Marks the bytes in the hex dump, which shows those around them; empty marks
  // none.
  void Mark(const std::optional<DataRange>& bytes);
  void GoToByte(std::uint64_t byte);

  const CaptureDocument& document_;
  HWND tree_;
  MessageHexPane hex_;
  bool visible_ = false;
  std::unique_ptr<MessageOutline> outline_;
  std::deque<Node> nodes_;
  std::deque<Fill> fills_;
  bool expanding_ = false;
  std::size_t next_to_expand_ = 0;
  std::function<void(const std::optional<DataRange>&)> on_bytes_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_DATA_SET_PANE_H_
