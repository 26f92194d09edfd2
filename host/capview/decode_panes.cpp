#include "host/capview/decode_panes.h"

#include "host/capview/control.h"
#include "host/capview/resource.h"
#include "host/capview/tree_control.h"
#include "host/rows/tree_search.h"
#include "host/text/text_encoding.h"
#include "host/text/wide_text.h"

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

void DecodePanes::SetVisible(bool visible) {
  ShowWindow(tree_.Handle(), visible ? SW_SHOWNA : SW_HIDE);
  ShowWindow(hex_.Handle(), visible ? SW_SHOWNA : SW_HIDE);
  if (visible) Mark(tree_.SelectedBytes());
}

bool DecodePanes::SelectNext(const std::wstring& text, bool backwards) {
  return tree_.SelectNext(CodePage1252FromWide(text), backwards);
}

std::optional<std::wstring> DecodePanes::Copied(LinePart part) {
  const auto line = tree_.SelectedLine();
  if (!line) return {};
  if (part == LinePart::kBytes) {
    const auto bytes = tree_.SelectedBytes();
    if (!bytes) return {};
    return hex_.Digits(*bytes);
  }
  const std::string& text = tree_.Lines()[*line].text;
  return WideFromUtf8(Utf8FromCodePage1252(
      part == LinePart::kSubtree ? SubtreeText(tree_.Lines(), *line)
      : part == LinePart::kValue ? std::string(LineValue(text))
                                 : text));
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
  return DrawTreeSelection(header);
}

void DecodePanes::Mark(const std::optional<ByteRange>& bytes) {
  hex_.Highlight(bytes);
  if (on_bytes_) on_bytes_(bytes);
}

}  // namespace host
