#include "host/capview/contexts_pane.h"

// After windows.h.
#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <cwctype>
#include <string_view>

#include "host/capview/control.h"
#include "host/capview/resource.h"
#include "host/module/window_text.h"
#include "host/rows/negotiation_text.h"
#include "host/text/failure.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr std::size_t kNoteColumns = 110;  // beyond which a note is broken
constexpr std::wstring_view kNote = L"    note: ";

// A note in lines below each other.
std::wstring Broken(std::wstring line) {
  const std::wstring margin(kNote.size(), L' ');
  std::wstring text;
  while (line.size() > kNoteColumns) {
    const std::size_t blank = line.rfind(L' ', kNoteColumns);
    if (blank == line.npos || blank < kNote.size()) break;
    text += line.substr(0, blank) + L"\r\n";
    line = margin + line.substr(blank + 1);
  }
  return text + line;
}

// The control wants CR before each LF.
std::wstring ControlText(const std::string& text) {
  const std::wstring all = WideFromUtf8(text);
  std::wstring lines;
  for (std::wstring_view rest = all; !rest.empty();) {
    const std::size_t end = std::min(rest.find(L'\n'), rest.size());
    const std::wstring_view line = rest.substr(0, end);
    lines += (line.starts_with(kNote) ? Broken(std::wstring(line))
                                      : std::wstring(line)) +
             L"\r\n";
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return lines;
}

std::wstring Lowered(std::wstring text) {
  std::ranges::transform(text, text.begin(), [](wchar_t letter) {
    return static_cast<wchar_t>(std::towlower(letter));
  });
  return text;
}

}  // namespace

ContextsPane::ContextsPane(HWND parent, const CaptureDocument& document)
    : document_(document),
      window_(MakeControl(
          parent,
          {WC_EDITW, IDC_CONTEXTS,
           WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | ES_MULTILINE |
               ES_AUTOHSCROLL | ES_AUTOVSCROLL | ES_READONLY | ES_NOHIDESEL,
           WS_EX_CLIENTEDGE})) {
  Edit_LimitText(window_, 0x7FFFFFFE);
  SetWindowSubclass(window_, OnMessage, 0, 0);
}

ContextsPane::~ContextsPane() { RemoveWindowSubclass(window_, OnMessage, 0); }

LRESULT CALLBACK ContextsPane::OnMessage(HWND window, UINT message, WPARAM wide,
                                         LPARAM data, UINT_PTR, DWORD_PTR) {
  // Tab leaves the control, as it leaves the others.
  if (message == WM_GETDLGCODE) return DLGC_WANTARROWS;
  return DefSubclassProc(window, message, wide, data);
}

void ContextsPane::SetFonts(const UiFonts& fonts) {
  SetWindowFont(window_, fonts.fixed.get(), TRUE);
}

void ContextsPane::Place(const PaneLayout& layout) {
  MoveControl(window_, layout.contexts);
}

void ContextsPane::SetVisible(bool visible) {
  ShowWindow(window_, visible ? SW_SHOWNA : SW_HIDE);
}

void ContextsPane::ShowRow(const std::optional<RowRef>& row) {
  SetWindowTextW(window_, ControlText(TextFor(row)).c_str());
}

std::string ContextsPane::TextFor(const std::optional<RowRef>& row) const {
  if (!row) return {};
  const auto association = document_.AssociationOf(*row);
  if (!association) {
    return "This row belongs to no association that could be read.";
  }
  try {
    return AssociationText(*association->dialogue, association->index,
                           document_.AllAcceptances());
  } catch (const Failure& failure) {
    return failure.what();
  }
}

std::pair<DWORD, DWORD> ContextsPane::Selection() const {
  DWORD begin = 0;
  DWORD end = 0;
  SendMessageW(window_, EM_GETSEL, reinterpret_cast<WPARAM>(&begin),
               reinterpret_cast<LPARAM>(&end));
  return {begin, end};
}

bool ContextsPane::SelectNext(const std::wstring& text, bool backwards) {
  const std::wstring all = Lowered(WideTextOf(window_));
  const std::wstring wanted = Lowered(text);
  const auto [begin, end] = Selection();
  std::size_t at = backwards ? (begin == 0 ? std::wstring::npos
                                           : all.rfind(wanted, begin - 1))
                             : all.find(wanted, end);
  if (at == std::wstring::npos) {
    at = backwards ? all.rfind(wanted) : all.find(wanted);
  }
  if (at == std::wstring::npos) return false;
  Edit_SetSel(window_, at, at + wanted.size());
  Edit_ScrollCaret(window_);
  return true;
}

std::optional<std::wstring> ContextsPane::Copied(LinePart) {
  const auto [begin, end] = Selection();
  if (begin == end) return {};
  return WideTextOf(window_).substr(begin, end - begin);
}

}  // namespace host
