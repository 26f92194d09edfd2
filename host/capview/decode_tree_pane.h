#ifndef HOST_CAPVIEW_DECODE_TREE_PANE_H_
#define HOST_CAPVIEW_DECODE_TREE_PANE_H_

#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/capview/ui_fonts.h"
#include "host/rows/decoded_row.h"

namespace host {

// The tree view that the module writes a decode into. Lines are named by their
// index in Lines(). What is below a line that was never opened is read from the
// control as well; that happens once a decode, when it is first asked for.
class DecodeTreePane {
 public:
  // Throws Failure.
  DecodeTreePane(HWND parent, int id);

  // The tree view; the parent's.
  HWND Handle() const { return window_; }
  void SetFonts(const UiFonts& fonts);

  // Around a display: the control is not painted meanwhile, and what was read
  // from it before is forgotten.
  void BeginFilling();
  // Opens the sections whose bit is set in the mask, bit 1 for the first, with
  // all below them; selects nothing.
  void EndFilling(std::uint32_t expand_mask);

  // Opens or closes every line that has others below it.
  void ExpandAll(bool expand);

  // All lines, collapsed ones included; valid until the next BeginFilling().
  const std::vector<TreeLine>& Lines();
  // Empty when none is selected, as after each display.
  std::optional<std::size_t> SelectedLine();
  // Empty without a selection, and for a line that the module had no memory to
  // give a range.
  std::optional<ByteRange> SelectedBytes() const;
  // Opens what is above the line and scrolls it into sight.
  void SelectLine(std::size_t line);
  // The narrowest line that covers the byte; nothing happens when none does.
  void SelectByte(std::uint32_t byte);
  // The next line with the text (code page 1252), or the one before, going
  // round at the end; false when there is none.
  bool SelectNext(std::string_view text, bool backwards);

 private:
  void ExpandSections(std::uint32_t mask);
  // Reads all lines from the control, unless that was done since BeginFilling.
  void ReadOnce();

  HWND window_;
  bool read_ = false;  // the two below are those of the control
  std::vector<TreeLine> lines_;
  std::vector<HTREEITEM> items_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_DECODE_TREE_PANE_H_
