#include "host/capview/hex_pane.h"

#include <windowsx.h>
// After windows.h.
#include <commctrl.h>

#include <algorithm>
#include <string>

namespace host {
namespace {

constexpr std::uint32_t kLineRoom = 256;
constexpr std::uint32_t kLinesAbove = 2;  // kept in sight above a highlight

}  // namespace

HexPane::HexPane(HWND parent, int id) {
  // Without ES_AUTOHSCROLL the control would wrap a long dump line by line.
  window_ = CreateWindowExW(
      WS_EX_CLIENTEDGE, WC_EDITW, L"",
      WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_HSCROLL |
          ES_MULTILINE | ES_AUTOHSCROLL | ES_AUTOVSCROLL | ES_READONLY,
      0, 0, 0, 0, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
      GetModuleHandleW(nullptr), nullptr);
  SendMessageW(window_, EM_LIMITTEXT, 0x7FFFFFFE, 0);
  SetWindowSubclass(window_, OnMessage, 0, reinterpret_cast<DWORD_PTR>(this));
}

void HexPane::SetFont(HFONT font) {
  font_ = font;
  const HDC device = GetDC(window_);
  const HGDIOBJ before = SelectObject(device, font);
  GetTextExtentPoint32W(device, L"0", 1, &cell_);
  SelectObject(device, before);
  ReleaseDC(window_, device);
  SendMessageW(window_, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
}

void HexPane::Highlight(const std::optional<ByteRange>& bytes) {
  bytes_ = bytes;
  if (bytes_ && bytes_->length > 0) {
    ScrollTo(bytes_->offset / kDumpBytesPerLine);
  }
  InvalidateRect(window_, nullptr, TRUE);
}

void HexPane::ScrollTo(std::uint32_t line) {
  const std::uint32_t first = FirstLine();
  if (line >= first && line < first + LinesInSight()) return;
  const std::uint32_t wanted = line - std::min(line, kLinesAbove);
  SendMessageW(window_, EM_LINESCROLL, 0,
               static_cast<LPARAM>(wanted) - static_cast<LPARAM>(first));
}

std::uint32_t HexPane::FirstLine() const {
  return static_cast<std::uint32_t>(
      SendMessageW(window_, EM_GETFIRSTVISIBLELINE, 0, 0));
}

std::uint32_t HexPane::LinesInSight() const {
  RECT area;
  SendMessageW(window_, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&area));
  return static_cast<std::uint32_t>(
      std::max<LONG>((area.bottom - area.top) / cell_.cy, 1));
}

// The control tells positions in 16 bits, enough for what is in sight.
POINT HexPane::Origin(std::uint32_t line) const {
  const auto first =
      static_cast<WPARAM>(SendMessageW(window_, EM_LINEINDEX, FirstLine(), 0));
  const LRESULT place = SendMessageW(window_, EM_POSFROMCHAR, first, 0);
  const LONG lines = static_cast<LONG>(line) - static_cast<LONG>(FirstLine());
  return {GET_X_LPARAM(place), GET_Y_LPARAM(place) + lines * cell_.cy};
}

RECT HexPane::RunRect(std::uint32_t line, ColumnRun run) const {
  const POINT origin = Origin(line);
  return {origin.x + static_cast<LONG>(run.first) * cell_.cx, origin.y,
          origin.x + static_cast<LONG>(run.end) * cell_.cx,
          origin.y + cell_.cy};
}

RECT HexPane::DigitsRect(std::uint32_t offset) const {
  const std::uint32_t line = offset / kDumpBytesPerLine;
  return RunRect(line, HighlightInLine(line, offset, 1)->digits);
}

RECT HexPane::CharacterRect(std::uint32_t offset) const {
  const std::uint32_t line = offset / kDumpBytesPerLine;
  return RunRect(line, HighlightInLine(line, offset, 1)->characters);
}

std::wstring HexPane::LineText(std::uint32_t line) const {
  std::wstring text(kLineRoom, L'\0');
  text[0] = static_cast<wchar_t>(kLineRoom);
  text.resize(static_cast<std::size_t>(SendMessageW(
      window_, EM_GETLINE, line, reinterpret_cast<LPARAM>(text.data()))));
  return text;
}

std::wstring HexPane::Digits(std::uint32_t offset, std::uint32_t length) const {
  std::wstring digits;
  const std::uint32_t end = std::min(offset + length, ByteCount());
  std::wstring text;
  for (std::uint32_t at = offset; at < end; ++at) {
    const std::uint32_t line = at / kDumpBytesPerLine;
    if (at == offset || at % kDumpBytesPerLine == 0) text = LineText(line);
    if (!digits.empty()) digits += L' ';
    digits += text.substr(HighlightInLine(line, at, 1)->digits.first, 2);
  }
  return digits;
}

std::uint32_t HexPane::ByteCount() const {
  // Empty digits are blanks; behind the last line stands an empty one.
  const auto lines =
      static_cast<std::uint32_t>(SendMessageW(window_, EM_GETLINECOUNT, 0, 0));
  for (std::uint32_t line = lines; line > 0; --line) {
    const std::wstring text = LineText(line - 1);
    for (std::uint32_t byte = kDumpBytesPerLine; byte > 0; --byte) {
      const auto digits =
          HighlightInLine(line - 1, (line - 1) * kDumpBytesPerLine + byte - 1,
                          1)
              ->digits;
      if (digits.first < text.size() && text[digits.first] != L' ') {
        return (line - 1) * kDumpBytesPerLine + byte;
      }
    }
  }
  return 0;
}

LRESULT CALLBACK HexPane::OnMessage(HWND window, UINT message, WPARAM wide,
                                    LPARAM data, UINT_PTR, DWORD_PTR object) {
  if (message == WM_NCDESTROY) {
    RemoveWindowSubclass(window, OnMessage, 0);
    return DefSubclassProc(window, message, wide, data);
  }
  return reinterpret_cast<HexPane*>(object)->Handle(message, wide, data);
}

LRESULT HexPane::Handle(UINT message, WPARAM wide, LPARAM data) {
  // Tab leaves the control, as it leaves the others.
  if (message == WM_GETDLGCODE) return DLGC_WANTARROWS;
  const LRESULT answer = DefSubclassProc(window_, message, wide, data);
  switch (message) {
    case WM_PAINT:
      Paint();
      break;
    case WM_LBUTTONUP:
      Click(data);
      break;
    case WM_VSCROLL:
    case WM_HSCROLL:
    case WM_MOUSEWHEEL:
    case WM_KEYDOWN:
      if (bytes_) InvalidateRect(window_, nullptr, FALSE);
      break;
    default:
      break;
  }
  return answer;
}

void HexPane::Paint() {
  if (!bytes_ || bytes_->length == 0) return;
  HideCaret(window_);
  const HDC device = GetDC(window_);
  RECT area;
  SendMessageW(window_, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&area));
  IntersectClipRect(device, area.left, area.top, area.right, area.bottom);
  const HGDIOBJ before = SelectObject(device, font_);
  SetTextColor(device, GetSysColor(COLOR_HIGHLIGHTTEXT));
  SetBkColor(device, GetSysColor(COLOR_HIGHLIGHT));
  const std::uint32_t first = FirstLine();
  for (std::uint32_t i = 0; i <= LinesInSight(); ++i) {
    const auto runs =
        HighlightInLine(first + i, bytes_->offset, bytes_->length);
    if (!runs) continue;
    PaintRun(device, first + i, runs->digits);
    PaintRun(device, first + i, runs->characters);
  }
  SelectObject(device, before);
  ReleaseDC(window_, device);
  ShowCaret(window_);
}

void HexPane::PaintRun(HDC device, std::uint32_t line, ColumnRun run) {
  const std::wstring text = LineText(line);
  if (text.size() <= run.first) return;
  const std::wstring part = text.substr(run.first, run.end - run.first);
  const RECT place = RunRect(line, run);
  ExtTextOutW(device, place.left, place.top, ETO_OPAQUE, &place, part.c_str(),
              static_cast<UINT>(part.size()), nullptr);
}

void HexPane::Click(LPARAM point) {
  const POINT origin = Origin(FirstLine());
  const LONG x = GET_X_LPARAM(point) - origin.x;
  const LONG y = GET_Y_LPARAM(point) - origin.y;
  if (x < 0 || y < 0 || !on_byte_) return;
  const auto line = FirstLine() + static_cast<std::uint32_t>(y / cell_.cy);
  const auto byte = ByteAt(line, static_cast<std::uint32_t>(x / cell_.cx));
  if (byte && *byte < ByteCount()) on_byte_(*byte);
}

}  // namespace host
