#ifndef HOST_CAPVIEW_DECODE_TREE_PANE_H_
#define HOST_CAPVIEW_DECODE_TREE_PANE_H_

#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/rows/decoded_row.h"

namespace host {

// The tree view that the module writes a decode into.
class DecodeTreePane {
 public:
  DecodeTreePane(HWND parent, int id);

  HWND Handle() const { return window_; }
  void SetFont(HFONT font);

  // Around a display: the control is not painted meanwhile, and what was read
  // from it before is forgotten.
  void BeginFilling();
  // Opens the sections whose bit is set in the mask, bit 1 for the first, with
  // all below them; selects nothing.
  void EndFilling(std::uint32_t expand_mask);

  void ExpandAll(bool expand);
  std::optional<std::size_t> SelectedLine();
  std::optional<ByteRange> SelectedBytes() const;
  void SelectLine(std::size_t line);
  // The narrowest line that covers the byte; false when none does.
  bool SelectByte(std::uint32_t byte);
  // The next line with the text (code page 1252); false when there is none.
  bool SelectNext(const std::string& text, bool backwards);

  LRESULT Notify(NMHDR* header);

  // All lines, collapsed ones included.
  const std::vector<TreeLine>& Lines();

 private:
  void ExpandSections(std::uint32_t mask);
  void ReadOnce();

  HWND window_ = nullptr;
  bool read_ = false;
  std::vector<TreeLine> lines_;
  std::vector<HTREEITEM> items_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_DECODE_TREE_PANE_H_
