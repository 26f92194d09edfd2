#include "host/capview/copying.h"

#include <algorithm>
#include <string>

#include "host/capview/owned_handles.h"
#include "host/text/failure.h"
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

bool IsEdit(HWND control) {
  constexpr int kMostLetters = 16;
  wchar_t name[kMostLetters] = L"";
  GetClassNameW(control, name, kMostLetters);
  return lstrcmpiW(name, WC_EDITW) == 0;
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
  if (IsEdit(focus)) {
    SendMessageW(focus, WM_COPY, 0, 0);
    return;
  }
  const auto row = panes.rows.Selected();
  if (focus == panes.rows.Handle() && row) {
    return Copy(owner, RowText(model, *row));
  }
  CopyPart(owner, panes, LinePart::kWhole);
}

void CopyPart(HWND owner, const Panes& panes, LinePart part) {
  if (const auto text = panes.tabs.Active().Copied(part)) Copy(owner, *text);
}

}  // namespace host
