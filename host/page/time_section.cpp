#include "host/page/time_section.h"

#include "host/page/markup.h"
#include "host/text/time_text.h"
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

std::string StyleOf(char letter) {
  for (std::size_t i = 0; i < kTimeParts; ++i) {
    const auto part = static_cast<TimePart>(i);
    if (PartLetter(part) == letter) return PartStyle(part);
  }
  return {};
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
  const std::string bar = TimeBar(times, kColumns);
  for (std::size_t begin = 0; begin < bar.size();) {
    std::size_t end = bar.find_first_not_of(bar[begin], begin);
    if (end == bar.npos) end = bar.size();
    const int x = static_cast<int>(begin) * kColumnWidth;
    const int width = static_cast<int>(end - begin) * kColumnWidth;
    drawing.Box({x, 0}, width, kBarHeight, StyleOf(bar[begin]));
    if (width >= kRoomForLetter) {
      DrawLetter({x + width / 2, kBarHeight / 2 + 4}, bar[begin], drawing);
    }
    begin = end;
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

// Patterns of eight by eight, light enough for a letter on them.
constexpr std::string_view kPatterns =
    R"(<svg class="patterns" viewBox="0 0 1 1">
<pattern id="part-connecting" width="8" height="8" patternUnits="userSpaceOnUse">
<rect width="8" height="8" fill="#fff"/><path d="M0 4H8M4 0V8" style="stroke:#aaa;stroke-width:1"/></pattern>
<pattern id="part-negotiating" width="6" height="6" patternUnits="userSpaceOnUse">
<rect width="6" height="6" fill="#e6f0e6"/><path d="M3 0V6" style="stroke:#3a7d3a;stroke-width:1"/></pattern>
<pattern id="part-preparing" width="8" height="8" patternUnits="userSpaceOnUse">
<rect width="8" height="8" fill="#fff6d6"/><path d="M0 8L8 0" style="stroke:#b38f00;stroke-width:1"/></pattern>
<pattern id="part-transferring" width="8" height="8" patternUnits="userSpaceOnUse">
<rect width="8" height="8" fill="#8fb8de"/></pattern>
<pattern id="part-held_back" width="6" height="6" patternUnits="userSpaceOnUse">
<rect width="6" height="6" fill="#ffc48a"/><path d="M0 0L6 6" style="stroke:#8a3c00;stroke-width:2"/></pattern>
<pattern id="part-zero_window" width="6" height="6" patternUnits="userSpaceOnUse">
<rect width="6" height="6" fill="#ffd0d0"/><path d="M0 0L6 6M0 6L6 0" style="stroke:#a00020;stroke-width:2"/></pattern>
<pattern id="part-loss_recovery" width="5" height="5" patternUnits="userSpaceOnUse">
<rect width="5" height="5" fill="#555"/><rect width="2" height="2" fill="#fff"/></pattern>
<pattern id="part-thinking" width="6" height="6" patternUnits="userSpaceOnUse">
<rect width="6" height="6" fill="#e5d8f2"/><path d="M0 3H6" style="stroke:#5b2a91;stroke-width:1"/></pattern>
<pattern id="part-idle" width="8" height="8" patternUnits="userSpaceOnUse">
<rect width="8" height="8" fill="#fff"/></pattern>
<pattern id="part-releasing" width="8" height="8" patternUnits="userSpaceOnUse">
<rect width="8" height="8" fill="#d5d5d5"/></pattern>
</svg>
)";

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

std::string_view TimePatterns() { return kPatterns; }

}  // namespace host
