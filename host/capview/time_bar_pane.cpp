#include "host/capview/time_bar_pane.h"

#include <windowsx.h>
// After windows.h.
#include <commctrl.h>

#include <algorithm>

#include "host/capview/control.h"
#include "host/text/time_text.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr int kTipWidth = 600;  // in pixels at 96 dpi

std::string MicrosText(Microseconds time) {
  return Seconds(time * 1000, 6) + " s";
}

std::string SideText(const TimeSpan& span, const AssociationTiming& times,
                     const Connection& connection) {
  const std::string text(OwnerText(span.owner));
  if (span.owner == TimeOwner::kNetwork) return text;
  const bool is_first =
      (span.owner == TimeOwner::kRequestor) == (times.requestor == 0);
  return text + " " +
         (is_first ? connection.first_endpoint : connection.second_endpoint);
}

TTTOOLINFOW ToolOf(HWND window) {
  TTTOOLINFOW tool{};
  tool.cbSize = TTTOOLINFOW_V2_SIZE;
  tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
  tool.hwnd = GetParent(window);
  tool.uId = reinterpret_cast<UINT_PTR>(window);
  return tool;
}

HWND MakeTip(HWND window) {
  const HWND tip = CreateWindowExW(
      0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0,
      0, 0, 0, GetParent(window), nullptr, GetModuleHandleW(nullptr), nullptr);
  TTTOOLINFOW tool = ToolOf(window);
  wchar_t none[] = L"";
  tool.lpszText = none;
  SendMessageW(tip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  return tip;
}

}  // namespace

// A static control is what the system's readers for the blind take for a text;
// everything else of it is ours.
TimeBarPane::TimeBarPane(HWND parent, int id, const CaptureDocument& document)
    : document_(document),
      window_(MakeControl(parent, {WC_STATICW, id, WS_TABSTOP | SS_NOTIFY})),
      tip_(MakeTip(window_)) {
  SetWindowSubclass(window_, OnMessage, 0, reinterpret_cast<DWORD_PTR>(this));
}

TimeBarPane::~TimeBarPane() { RemoveWindowSubclass(window_, OnMessage, 0); }

void TimeBarPane::SetFonts(const UiFonts& fonts) {
  font_ = fonts.chrome.get();
  dpi_ = fonts.dpi;
  drawing_ = std::make_unique<TimeBarDrawing>(dpi_);
  SendMessageW(tip_, TTM_SETMAXTIPWIDTH, 0, Scaled(kTipWidth, dpi_));
}

bool TimeBarPane::IsThere() const {
  const auto& timing = document_.Timing();
  return wanted_ && timing && !timing->associations.empty();
}

const AssociationTiming* TimeBarPane::Times() const {
  if (!IsThere()) return nullptr;
  const auto& associations = document_.Timing()->associations;
  if (association_ >= associations.size()) return nullptr;
  const AssociationTiming& times = associations[association_];
  return times.Duration() > 0 ? &times : nullptr;
}

int TimeBarPane::Height() const {
  if (!IsThere()) return 0;
  return drawing_->Height();
}

void TimeBarPane::Place(const RECT& place) {
  MoveControl(window_, place);
  const bool is_shown = IsThere() && place.bottom > place.top;
  ShowWindow(window_, is_shown ? SW_SHOWNA : SW_HIDE);
  key_column_.reset();
}

void TimeBarPane::ShowRow(const std::optional<RowRef>& row) {
  row_time_.reset();
  if (!row) association_ = 0;
  if (row) {
    const WireRecord* record = document_.Trace(row->list)->RecordOf(row->index);
    if (record != nullptr) row_time_ = record->complete_time;
    const auto part = document_.AssociationOf(*row);
    if (part) association_ = part->index;
  }
  Update();
}

void TimeBarPane::Update() {
  SetWindowTextW(window_, WideFromUtf8(LegendText()).c_str());
  InvalidateRect(window_, nullptr, FALSE);
}

std::string TimeBarPane::LegendText() const {
  const AssociationTiming* const times = Times();
  if (times == nullptr) return {};
  std::string text = MicrosText(times->Duration()) + ": ";
  for (const TimePart part : PartsOf(*times)) {
    if (!text.ends_with(": ")) text += ", ";
    text += ShareOfPart(part, *times);
  }
  return text;
}

std::string TimeBarPane::TextAt(std::size_t column) const {
  const AssociationTiming* const times = Times();
  if (times == nullptr) return {};
  const auto span = SpanAt(*times, Columns(), column);
  if (!span) return {};
  const Connection& connection = document_.ConnectionAt(*document_.chosen());
  return std::string(PartText(span->part)) + ": " + MicrosText(span->Length()) +
         " of the " + SideText(*span, *times, connection) + ", from " +
         MicrosText(span->begin) + " to " + MicrosText(span->end);
}

LRESULT CALLBACK TimeBarPane::OnMessage(HWND window, UINT message, WPARAM wide,
                                        LPARAM data, UINT_PTR,
                                        DWORD_PTR object) {
  auto& self = *reinterpret_cast<TimeBarPane*>(object);
  const auto answer = self.Answer(message, wide, data);
  return answer ? *answer : DefSubclassProc(window, message, wide, data);
}

std::optional<LRESULT> TimeBarPane::Answer(UINT message, WPARAM wide,
                                           LPARAM data) {
  const POINT point{GET_X_LPARAM(data), GET_Y_LPARAM(data)};
  switch (message) {
    case WM_GETDLGCODE:
      return DLGC_WANTARROWS;
    case WM_ERASEBKGND:
      return TRUE;
    case WM_PAINT:
      Paint();
      return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
      InvalidateRect(window_, nullptr, FALSE);
      return 0;
    case WM_MOUSEMOVE:
      Hover(point);
      return {};
    case WM_LBUTTONDOWN:
      if (const auto column = ColumnAt(point)) GoTo(*column);
      return 0;
    case WM_KEYDOWN:
      if (wide == VK_LEFT || wide == VK_RIGHT) Move(wide == VK_LEFT ? -1 : +1);
      return 0;
    default:
      return {};
  }
}

RECT TimeBarPane::Bar() const {
  RECT area;
  GetClientRect(window_, &area);
  return drawing_->BarIn(area);
}

std::size_t TimeBarPane::Columns() const {
  const RECT bar = Bar();
  return static_cast<std::size_t>(bar.right - bar.left);
}

std::optional<std::size_t> TimeBarPane::ColumnAt(POINT point) const {
  const RECT bar = Bar();
  if (!PtInRect(&bar, point)) return {};
  return static_cast<std::size_t>(point.x - bar.left);
}

// In the legend, too: it may have no room for all.
void TimeBarPane::Hover(POINT point) {
  const auto column = ColumnAt(point);
  std::string hint = column ? TextAt(*column) : LegendText();
  if (hint == hint_) return;
  hint_ = std::move(hint);
  std::wstring text = WideFromUtf8(hint_);
  TTTOOLINFOW tool = ToolOf(window_);
  tool.lpszText = text.data();
  SendMessageW(tip_, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
}

// To what was under way behind the begin of the column.
void TimeBarPane::GoTo(std::size_t column) {
  const AssociationTiming* const times = Times();
  if (times == nullptr || !on_chosen_) return;
  const auto span = SpanAt(*times, Columns(), column);
  if (!span) return;
  const auto count = static_cast<Microseconds>(Columns());
  const Microseconds from =
      times->begin +
      times->Duration() * static_cast<Microseconds>(column) / count;
  on_chosen_(document_.Timing()->start +
             (std::max(span->begin, from) + 1) * 1000);
}

void TimeBarPane::Move(int step) {
  const AssociationTiming* const times = Times();
  if (times == nullptr) return;
  const auto runs = BarRuns(*times, Columns());
  if (runs.empty()) return;
  auto at = std::ranges::upper_bound(runs, key_column_.value_or(0), {},
                                     &BarRun::begin) -
            runs.begin() - 1;
  if (key_column_) at += step;
  at = std::clamp<std::ptrdiff_t>(at, 0, std::ssize(runs) - 1);
  key_column_ = runs[static_cast<std::size_t>(at)].begin;
  InvalidateRect(window_, nullptr, FALSE);
  if (on_text_) on_text_(TextAt(*key_column_) + "; Enter goes there.");
}

void TimeBarPane::Choose() {
  if (key_column_) GoTo(*key_column_);
}

// By way of a bitmap, so that nothing flickers.
void TimeBarPane::Paint() {
  PAINTSTRUCT paint;
  const HDC device = BeginPaint(window_, &paint);
  RECT area;
  GetClientRect(window_, &area);
  const MemoryDevice memory(CreateCompatibleDC(device));
  const Bitmap bitmap(CreateCompatibleBitmap(device, area.right, area.bottom));
  {
    const SelectedObject on_bitmap = Select(memory.get(), bitmap.get());
    const SelectedObject in_font = Select(memory.get(), font_);
    DrawAll(memory.get(), area);
    BitBlt(device, 0, 0, area.right, area.bottom, memory.get(), 0, 0, SRCCOPY);
  }
  EndPaint(window_, &paint);
}

void TimeBarPane::DrawAll(HDC device, const RECT& area) const {
  FillRect(device, &area, GetSysColorBrush(COLOR_BTNFACE));
  const AssociationTiming* const times = Times();
  if (times == nullptr) return;
  TimeBarDrawing::Marks marks;
  if (row_time_) marks.row = document_.Timing()->Since(*row_time_);
  marks.has_focus = GetFocus() == window_;
  if (marks.has_focus) marks.column = key_column_;
  drawing_->Draw(device, area, *times, marks);
}

}  // namespace host
