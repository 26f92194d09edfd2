#include "host/capview/time_bar_drawing.h"

#include <windowsx.h>

#include <algorithm>

#include "host/capview/ui_fonts.h"
#include "host/text/time_text.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

// In pixels at 96 dpi.
constexpr int kMargin = 7;  // above the bar, for the row's mark
constexpr int kSide = 5;
constexpr int kBarHeight = 20;
constexpr int kLegendHeight = 20;
constexpr int kSwatchWidth = 18;
constexpr int kGap = 5;

// Writes the text from the left of the place on; answers where it ends.
LONG Write(HDC device, const RECT& place, const std::string& utf8) {
  const std::wstring text = WideFromUtf8(utf8);
  const SIZE size = SizeOfText(device, text);
  ExtTextOutW(device, place.left, (place.top + place.bottom - size.cy) / 2, 0,
              nullptr, text.c_str(), static_cast<UINT>(text.size()), nullptr);
  return place.left + size.cx;
}

LONG WidthOf(HDC device, const std::string& utf8) {
  return SizeOfText(device, WideFromUtf8(utf8)).cx;
}

}  // namespace

std::vector<TimePart> PartsOf(const AssociationTiming& times) {
  std::vector<TimePart> parts;
  for (std::size_t i = 0; i < kTimeParts; ++i) {
    const auto part = static_cast<TimePart>(i);
    if (times.sums.Of(part) != 0) parts.push_back(part);
  }
  std::ranges::stable_sort(parts, [&](TimePart one, TimePart other) {
    return times.sums.Of(one) > times.sums.Of(other);
  });
  return parts;
}

std::string ShareOfPart(TimePart part, const AssociationTiming& times) {
  return std::string(PartText(part)) + " " +
         ShareText(times.sums.Of(part), times.Duration());
}

int TimeBarDrawing::Height() const {
  return Scaled(kMargin + kBarHeight + kLegendHeight + kGap, dpi_);
}

RECT TimeBarDrawing::BarIn(const RECT& area) const {
  const int side = Scaled(kSide, dpi_);
  const int top = Scaled(kMargin, dpi_);
  return {side, top, std::max<LONG>(area.right - side, side),
          top + Scaled(kBarHeight, dpi_)};
}

void TimeBarDrawing::Draw(HDC device, const RECT& area,
                          const AssociationTiming& times,
                          const Marks& marks) const {
  const RECT bar = BarIn(area);
  DrawBar(device, bar, times, marks);
  if (marks.row) DrawRowMark(device, bar, times, *marks.row);
  DrawLegend(device, bar, times);
}

void TimeBarDrawing::DrawBar(HDC device, const RECT& bar,
                             const AssociationTiming& times,
                             const Marks& marks) const {
  const HBRUSH black = GetStockBrush(BLACK_BRUSH);
  for (const BarRun& run :
       BarRuns(times, static_cast<std::size_t>(bar.right - bar.left))) {
    RECT box = bar;
    box.left += static_cast<LONG>(run.begin);
    box.right = bar.left + static_cast<LONG>(run.end);
    brushes_.Draw(device, box, run.part);
    if (box.right - box.left > 2) {  // else there would be nothing but lines
      const RECT edge{box.left, box.top, box.left + 1, box.bottom};
      FillRect(device, &edge, black);
    }
    if (marks.column == run.begin) {
      InflateRect(&box, 1, 4);
      FrameRect(device, &box, GetSysColorBrush(COLOR_HIGHLIGHT));
      InflateRect(&box, -1, -1);
      FrameRect(device, &box, GetSysColorBrush(COLOR_HIGHLIGHT));
    }
  }
  RECT frame = bar;
  InflateRect(&frame, 1, 1);
  FrameRect(device, &frame, black);
  InflateRect(&frame, 2, 2);
  if (marks.has_focus) DrawFocusRect(device, &frame);
}

// A line across the bar with a head above it, on white on both sides.
void TimeBarDrawing::DrawRowMark(HDC device, const RECT& bar,
                                 const AssociationTiming& times,
                                 Microseconds at) const {
  const Microseconds since = at - times.begin;
  if (since < 0 || since > times.Duration()) return;
  const LONG x =
      bar.left + static_cast<LONG>((bar.right - bar.left - 1) *
                                   (static_cast<double>(since) /
                                    static_cast<double>(times.Duration())));
  const int half = Scaled(1, dpi_);
  const RECT halo{x - 2 * half, bar.top, x + 2 * half + 1, bar.bottom};
  const RECT line{x - half, bar.top, x + half, bar.bottom};
  FillRect(device, &halo, GetStockBrush(WHITE_BRUSH));
  FillRect(device, &line, GetStockBrush(BLACK_BRUSH));
  const LONG head = Scaled(kMargin - 1, dpi_);
  const POINT corners[] = {
      {x - head, bar.top - head}, {x + head, bar.top - head}, {x, bar.top}};
  const SelectedObject brush = Select(device, GetStockBrush(BLACK_BRUSH));
  Polygon(device, corners, 3);
}

// As many parts as there is room for, the longest first; at the right how long
// all of it took.
void TimeBarDrawing::DrawLegend(HDC device, const RECT& bar,
                                const AssociationTiming& times) const {
  const int gap = Scaled(kGap, dpi_);
  SetBkMode(device, TRANSPARENT);
  SetTextColor(device, GetSysColor(COLOR_BTNTEXT));
  RECT place{bar.left, bar.bottom + gap, bar.right,
             bar.bottom + Scaled(kLegendHeight, dpi_)};
  const std::string whole =
      "all: " + Seconds(times.Duration() * 1000, 6) + " s";
  RECT end = place;
  end.left = end.right - WidthOf(device, whole);
  Write(device, end, whole);
  for (const TimePart part : PartsOf(times)) {
    const std::string text = ShareOfPart(part, times);
    const LONG swatch = Scaled(kSwatchWidth, dpi_);
    if (place.left + swatch + gap + WidthOf(device, text) >
        end.left - 6 * gap) {
      Write(device, place, "\xE2\x80\xA6");  // more by hovering
      break;
    }
    RECT box = place;
    box.right = box.left + swatch;
    brushes_.Draw(device, box, part);
    FrameRect(device, &box, GetStockBrush(BLACK_BRUSH));
    SetTextColor(device, GetSysColor(COLOR_BTNTEXT));
    place.left = box.right + gap;
    place.left = Write(device, place, text) + 3 * gap;
  }
}

}  // namespace host
