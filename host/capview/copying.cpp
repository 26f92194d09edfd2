#include "host/capview/copying.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "host/capview/owned_handles.h"
#include "host/rows/tree_search.h"
#include "host/text/failure.h"
#include "host/text/text_encoding.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

void Copy(HWND owner, const std::wstring& text) {
  const OpenedClipboard clipboard = OpenClipboardFor(owner);
  if (!clipboard) {
    throw Failure("The clipboard is in use by another program: try again.");
  }
  EmptyClipboard();
  const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  GlobalMemory block(GlobalAlloc(GMEM_MOVEABLE, bytes));
  if (!block) return;
  std::copy_n(text.c_str(), text.size() + 1,
              static_cast<wchar_t*>(GlobalLock(block.get())));
  GlobalUnlock(block.get());
  // The clipboard takes the block over.
  if (SetClipboardData(CF_UNICODETEXT, block.get())) block.release();
}

void CopyModuleText(HWND owner, std::string_view code_page_1252) {
  Copy(owner, WideFromUtf8(Utf8FromCodePage1252(code_page_1252)));
}

std::wstring RowText(RowModel& model, std::uint32_t row) {
  std::wstring text;
  for (int column = 0; column < kRowColumns; ++column) {
    if (column > 0) text += L'\t';
    text += WideFromUtf8(model.Text(row, static_cast<RowColumn>(column)));
  }
  return text;
}

}  // namespace

void CopyLine(HWND owner, Panes& panes, RowModel& model) {
  const HWND focus = GetFocus();
  if (focus == panes.bar.Filter() || focus == panes.decode.Hex().Handle()) {
    SendMessageW(focus, WM_COPY, 0, 0);
    return;
  }
  const auto row = panes.rows.Selected();
  if (focus == panes.rows.Handle() && row) {
    return Copy(owner, RowText(model, *row));
  }
  DecodeTreePane& tree = panes.decode.Tree();
  if (const auto line = tree.SelectedLine()) {
    CopyModuleText(owner, tree.Lines()[*line].text);
  }
}

void CopyValue(HWND owner, DecodeTreePane& tree) {
  if (const auto line = tree.SelectedLine()) {
    CopyModuleText(owner, LineValue(tree.Lines()[*line].text));
  }
}

void CopySubtree(HWND owner, DecodeTreePane& tree) {
  if (const auto line = tree.SelectedLine()) {
    CopyModuleText(owner, SubtreeText(tree.Lines(), *line));
  }
}

void CopyBytes(HWND owner, DecodePanes& decode) {
  if (const auto bytes = decode.Tree().SelectedBytes()) {
    Copy(owner, decode.Hex().Digits(*bytes));
  }
}

}  // namespace host
