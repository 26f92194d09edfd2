#include "host/page/time_section.h"

#include <cstdio>

#include "host/page/markup.h"
#include "host/text/time_text.h"
#include "host/timing/part_look.h"
#include "host/timing/time_shares.h"

namespace host {
namespace {

constexpr int kColumnWidth = 2;
constexpr std::size_t kColumns = 380;
constexpr int kWidth = kColumnWidth * static_cast<int>(kColumns);
constexpr int kBarHeight = 30;
constexpr int kHeight = kBarHeight + 18;
constexpr int kRoomForLetter = 16;
constexpr int kSwatchWidth = 34;
constexpr int kSwatchHeight = 16;

std::string PartStyle(TimePart part) {
  return "part-" + std::string(PartSlug(part));
}

// "20.100123 s".
std::string MicrosText(Microseconds time) {
  return Seconds(time * 1000, 6) + " s";
}

void DrawLetter(Drawing::Point at, char letter, Drawing& drawing) {
  drawing.Text(at, "middle letter", std::string(1, letter));
}

std::string DrawBar(const AssociationTiming& times) {
  Drawing drawing(kWidth, kHeight, "the association's time by its parts");
  for (const BarRun& run : BarRuns(times, kColumns)) {
    const int x = static_cast<int>(run.begin) * kColumnWidth;
    const int width = static_cast<int>(run.end - run.begin) * kColumnWidth;
    drawing.Box({x, 0}, width, kBarHeight, PartStyle(run.part));
    if (width >= kRoomForLetter) {
      DrawLetter({x + width / 2, kBarHeight / 2 + 4}, PartLetter(run.part),
                 drawing);
    }
  }
  drawing.Box({0, 0}, kWidth, kBarHeight, "frame");
  drawing.Text({0, kHeight - 4}, "quiet", MicrosText(times.begin));
  drawing.Text({kWidth, kHeight - 4}, "end quiet", MicrosText(times.end));
  return std::move(drawing).Close();
}

std::string SwatchOf(TimePart part) {
  Drawing drawing(kSwatchWidth, kSwatchHeight, PartText(part));
  drawing.Box({0, 0}, kSwatchWidth, kSwatchHeight, PartStyle(part));
  drawing.Box({0, 0}, kSwatchWidth, kSwatchHeight, "frame");
  DrawLetter({kSwatchWidth / 2, kSwatchHeight - 4}, PartLetter(part), drawing);
  return std::move(drawing).Close();
}

std::string RowOf(const TimeShare& share, Microseconds whole) {
  return "<tr>\n<td class=\"swatch\">" + SwatchOf(share.part) + "</td>\n" +
         Element("td", "", PartText(share.part)) +
         Element("td", "", OwnerText(share.owner)) +
         Element("td", "number", MicrosText(share.time)) +
         Element("td", "number", ShareText(share.time, whole)) + "</tr>\n";
}

// "#8fb8de".
std::string ColorText(std::uint32_t color) {
  char text[16];
  std::snprintf(text, sizeof text, "#%06x", static_cast<unsigned>(color));
  return text;
}

std::string StrokeText(const PartLook::Stroke& stroke) {
  return "M" + std::to_string(stroke.x1) + " " + std::to_string(stroke.y1) +
         "L" + std::to_string(stroke.x2) + " " + std::to_string(stroke.y2);
}

std::string PatternOf(TimePart part) {
  const PartLook& look = LookOf(part);
  const std::string size = " width=\"" + std::to_string(look.tile) +
                           "\" height=\"" + std::to_string(look.tile) + "\"";
  std::string text = "<pattern id=\"" + PartStyle(part) + "\"" + size +
                     " patternUnits=\"userSpaceOnUse\">\n<rect" + size +
                     " fill=\"" + ColorText(look.ground) + "\"/>";
  if (!look.strokes.empty()) {
    text += "<path d=\"";
    for (const auto& stroke : look.strokes) text += StrokeText(stroke);
    text += "\" style=\"stroke:" + ColorText(look.ink) +
            ";stroke-width:" + std::to_string(look.width) + "\"/>";
  }
  return text + "</pattern>\n";
}

}  // namespace

std::string TimeSection(const AssociationTiming& times) {
  if (times.Duration() <= 0) return {};
  std::string text = DrawBar(times) +
                     "<table class=\"narrow\">\n<thead><tr><th></th>"
                     "<th>spent on</th><th>whose time</th><th>time</th>"
                     "<th>share</th></tr></thead>\n<tbody>\n";
  for (const TimeShare& share : SharesOf(times)) {
    text += RowOf(share, times.Duration());
  }
  return text + "</tbody>\n</table>\n";
}

std::string TimePatterns() {
  std::string text = "<svg class=\"patterns\" viewBox=\"0 0 1 1\">\n";
  for (std::size_t i = 0; i < kTimeParts; ++i) {
    text += PatternOf(static_cast<TimePart>(i));
  }
  return text + "</svg>\n";
}

}  // namespace host
