#ifndef HOST_CAPVIEW_DECODE_PANES_H_
#define HOST_CAPVIEW_DECODE_PANES_H_

#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "host/capview/capture_document.h"
#include "host/capview/decode_tree_pane.h"
#include "host/capview/detail_view.h"
#include "host/capview/hex_pane.h"
#include "host/capview/pane_layout.h"
#include "host/capview/ui_fonts.h"

namespace host {

// The decode of one row: the module's tree and its hex dump side by side. A
// line that is selected marks its bytes, a byte that is clicked selects the
// line that describes it.
class DecodePanes final : public DetailView {
 public:
  // The module numbers the sections of a tree from 1 to this.
  static constexpr int kSections = 8;

  // Throws Failure.
  explicit DecodePanes(HWND parent);

  void SetFonts(const UiFonts& fonts) override;
  void Place(const PaneLayout& layout) override;
  void SetVisible(bool visible) override;
  HWND Handle() const override { return tree_.Handle(); }
  // Does nothing: the module shows each row as soon as it is selected, whatever
  // is in sight, by Show().
  void ShowRow(const std::optional<RowRef>&) override {}
  bool SelectNext(const std::wstring& text, bool backwards) override;
  void ExpandAll(bool expand) override { tree_.ExpandAll(expand); }
  std::optional<std::wstring> Copied(LinePart part) override;

  // What of a decode the person wants to see, from the next display on.
  using Choice = CaptureDocument::Switches;
  const Choice& Chosen() const { return choice_; }
  void Choose(const Choice& choice) { choice_ = choice; }

  // Shows the row, which the module must have available; answers why it stopped
  // early, or nothing.
  std::string Show(CaptureDocument& document, RowRef row);
  // Nothing is shown any more.
  void Clear(CaptureDocument& document);

  // Told which bytes are marked, empty for none, whenever that changes.
  void OnBytes(std::function<void(const std::optional<ByteRange>&)> handler) {
    on_bytes_ = std::move(handler);
  }

  // The two panes, to search in them and to copy from them.
  DecodeTreePane& Tree() { return tree_; }
  const HexPane& Hex() const { return hex_; }
  // Answers what the tree tells its parent by WM_NOTIFY.
  LRESULT Notify(NMHDR* header);

 private:
  // In the hex dump; empty marks none.
  void Mark(const std::optional<ByteRange>& bytes);

  DecodeTreePane tree_;
  HexPane hex_;
  Choice choice_;
  std::function<void(const std::optional<ByteRange>&)> on_bytes_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_DECODE_PANES_H_
