#include "host/capview/hex_pane.h"

#include <windowsx.h>
// After windows.h.
#include <commctrl.h>

#include <algorithm>

#include "host/capview/control.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr std::uint32_t kLineRoom = 256;
constexpr std::uint32_t kLinesAbove = 2;  // kept in sight above a highlight

}  // namespace

// Without ES_AUTOHSCROLL the control would wrap a long dump line by line.
HexPane::HexPane(HWND parent, int id)
    : window_(MakeControl(
          parent,
          {WC_EDITW, id,
           WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | ES_MULTILINE |
               ES_AUTOHSCROLL | ES_AUTOVSCROLL | ES_READONLY,
           WS_EX_CLIENTEDGE})) {
  Edit_LimitText(window_, 0x7FFFFFFE);
  SetWindowSubclass(window_, OnMessage, 0, reinterpret_cast<DWORD_PTR>(this));
}

HexPane::~HexPane() { RemoveWindowSubclass(window_, OnMessage, 0); }

void HexPane::SetFonts(const UiFonts& fonts) {
  font_ = fonts.fixed.get();
  const WindowDevice device = DeviceOf(window_);
  const SelectedObject selected = Select(device.get(), font_);
  cell_ = SizeOfText(device.get(), L"0");
  SetWindowFont(window_, font_, TRUE);
}

void HexPane::ShowBytes(std::span<const std::uint8_t> bytes,
                        std::uint64_t address) {
  extra_columns_ = ExtraAddressColumns(bytes.size(), address);
  bytes_.reset();
  SetWindowTextW(window_, WideFromUtf8(DumpText(bytes, address)).c_str());
}

std::optional<DumpHighlight> HexPane::RunsIn(std::uint32_t line,
                                             const ByteRange& bytes) const {
  auto runs = HighlightInLine(line, bytes.offset, bytes.length);
  if (!runs) return {};
  for (ColumnRun* const run : {&runs->digits, &runs->characters}) {
    run->first += extra_columns_;
    run->end += extra_columns_;
  }
  return runs;
}

std::optional<std::uint32_t> HexPane::ByteIn(std::uint32_t line,
                                             std::uint32_t column) const {
  if (column < extra_columns_) return {};
  return ByteAt(line, column - extra_columns_);
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
  return static_cast<std::uint32_t>(Edit_GetFirstVisibleLine(window_));
}

std::uint32_t HexPane::LinesInSight() const {
  RECT area;
  Edit_GetRect(window_, &area);
  return static_cast<std::uint32_t>(
      std::max<LONG>((area.bottom - area.top) / cell_.cy, 1));
}

// The control tells positions in 16 bits, enough for what is in sight.
POINT HexPane::Origin(std::uint32_t line) const {
  const auto first = static_cast<WPARAM>(
      Edit_LineIndex(window_, static_cast<int>(FirstLine())));
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

std::wstring HexPane::LineText(std::uint32_t line) const {
  std::wstring text(kLineRoom, L'\0');
  text[0] = static_cast<wchar_t>(kLineRoom);
  text.resize(static_cast<std::size_t>(SendMessageW(
      window_, EM_GETLINE, line, reinterpret_cast<LPARAM>(text.data()))));
  return text;
}

std::wstring HexPane::Digits(const ByteRange& bytes) const {
  std::wstring digits;
  std::wstring text;
  const std::uint32_t count = ByteCount();
  const std::uint32_t first = std::min(bytes.offset, count);
  const std::uint32_t end = first + std::min(bytes.length, count - first);
  for (std::uint32_t at = first; at < end; ++at) {
    const std::uint32_t line = at / kDumpBytesPerLine;
    if (text.empty() || at % kDumpBytesPerLine == 0) text = LineText(line);
    if (!digits.empty()) digits += L' ';
    digits += text.substr(RunsIn(line, {0, at, 1})->digits.first, 2);
  }
  return digits;
}

// Behind the last byte stand blanks, behind the last line an empty one.
std::uint32_t HexPane::ByteCount() const {
  const auto lines = static_cast<std::uint32_t>(Edit_GetLineCount(window_));
  for (std::uint32_t line = lines; line-- > 0;) {
    const std::wstring text = LineText(line);
    const std::uint32_t first = line * kDumpBytesPerLine;
    for (std::uint32_t byte = first + kDumpBytesPerLine; byte-- > first;) {
      const std::uint32_t at = RunsIn(line, {0, byte, 1})->digits.first;
      if (at < text.size() && text[at] != L' ') return byte + 1;
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
  return reinterpret_cast<HexPane*>(object)->Answer(message, wide, data);
}

LRESULT HexPane::Answer(UINT message, WPARAM wide, LPARAM data) {
  // Tab leaves the control, as it leaves the others.
  if (message == WM_GETDLGCODE) return DLGC_WANTARROWS;
  const LRESULT answer = DefSubclassProc(window_, message, wide, data);
  switch (message) {
    case WM_PAINT:
      Paint();
      break;
    case WM_LBUTTONUP:
      Click({GET_X_LPARAM(data), GET_Y_LPARAM(data)});
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

// Over the control's own painting, whose caret must not be drawn over.
void HexPane::Paint() {
  if (!bytes_ || bytes_->length == 0) return;
  HideCaret(window_);
  {
    const WindowDevice device = DeviceOf(window_);
    const SelectedObject selected = Select(device.get(), font_);
    RECT area;
    Edit_GetRect(window_, &area);
    IntersectClipRect(device.get(), area.left, area.top, area.right,
                      area.bottom);
    SetTextColor(device.get(), GetSysColor(COLOR_HIGHLIGHTTEXT));
    SetBkColor(device.get(), GetSysColor(COLOR_HIGHLIGHT));
    const std::uint32_t first = FirstLine();
    for (std::uint32_t i = 0; i <= LinesInSight(); ++i) {
      const auto runs = RunsIn(first + i, *bytes_);
      if (!runs) continue;
      PaintRun(device.get(), first + i, runs->digits);
      PaintRun(device.get(), first + i, runs->characters);
    }
  }
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

void HexPane::Click(POINT point) {
  const POINT origin = Origin(FirstLine());
  const LONG x = point.x - origin.x;
  const LONG y = point.y - origin.y;
  if (x < 0 || y < 0 || !on_byte_) return;
  const auto line = FirstLine() + static_cast<std::uint32_t>(y / cell_.cy);
  const auto byte = ByteIn(line, static_cast<std::uint32_t>(x / cell_.cx));
  if (byte && *byte < ByteCount()) on_byte_(*byte);
}

}  // namespace host
