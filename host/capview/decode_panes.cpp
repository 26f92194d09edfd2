#include "host/capview/decode_panes.h"

#include "host/capview/control.h"
#include "host/capview/resource.h"

namespace host {

DecodePanes::DecodePanes(HWND parent)
    : tree_(parent, IDC_TREE), hex_(parent, IDC_HEX) {
  hex_.OnByte([this](std::uint32_t byte) { tree_.SelectByte(byte); });
}

void DecodePanes::SetFonts(const UiFonts& fonts) {
  tree_.SetFonts(fonts);
  hex_.SetFonts(fonts);
}

void DecodePanes::Place(const PaneLayout& layout) {
  MoveControl(tree_.Handle(), layout.tree);
  MoveControl(hex_.Handle(), layout.hex);
}

std::string DecodePanes::Show(CaptureDocument& document, RowRef row) {
  Mark({});
  tree_.BeginFilling();
  std::string stopped =
      document.Display(row, {tree_.Handle(), hex_.Handle()}, choice_);
  tree_.EndFilling(choice_.expand_mask);
  return stopped;
}

void DecodePanes::Clear(CaptureDocument& document) {
  tree_.BeginFilling();
  document.Clear({tree_.Handle(), hex_.Handle()});
  tree_.EndFilling(0);
  Mark({});
}

LRESULT DecodePanes::Notify(NMHDR* header) {
  if (header->code == TVN_SELCHANGEDW) Mark(tree_.SelectedBytes());
  return tree_.Notify(header);
}

void DecodePanes::Mark(const std::optional<ByteRange>& bytes) {
  hex_.Highlight(bytes);
  if (on_bytes_) on_bytes_(bytes);
}

}  // namespace host
