#include "host/page/ladder_drawing.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "host/page/markup.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

constexpr int kWidth = 760;
constexpr int kTimeRight = 74;  // the times end here
constexpr int kClient = 92;     // the line of the side that opened
constexpr int kServer = 648;
constexpr int kMiddle = (kClient + kServer) / 2;
constexpr int kFrameLeft = 660;
constexpr int kHead = 44;  // with the names
constexpr int kRung = 34;
constexpr int kGap = 26;
constexpr std::size_t kMostCharacters = 82;  // between the two lines
constexpr std::size_t kMostNameCharacters = 40;
constexpr std::size_t kMostFrameCharacters = 14;
constexpr std::size_t kRungsADrawing = 20;
constexpr Nanoseconds kWorthMarking = 500'000'000;

bool HasGap(const Rung& rung, Nanoseconds quiet_since) {
  return rung.begin - quiet_since >= kWorthMarking;
}

std::string FramesOf(const FrameNames& names, const Rung& rung) {
  if (rung.first_frame == 0) return {};
  const std::string frames = names.Text(rung.first_frame, rung.last_frame);
  if (frames.size() > kMostFrameCharacters) {
    // Of a file with a long name: its end tells more.
    return "\xE2\x80\xA6" + frames.substr(frames.size() - kMostFrameCharacters);
  }
  return (rung.first_frame == rung.last_frame ? "frame " : "frames ") + frames;
}

std::string_view StyleOf(Severity severity) {
  constexpr std::string_view kStyles[] = {"fault", "warning", "plain"};
  return kStyles[static_cast<std::size_t>(severity)];
}

void DrawName(const SideName& name, int x, std::string_view anchor,
              Drawing& drawing) {
  const bool has_title = !name.title.empty();
  const std::string style(anchor);
  drawing.Text(
      {x, has_title ? 14 : 28}, style + " name",
      Shortened(has_title ? name.title : name.address, kMostNameCharacters));
  if (has_title) drawing.Text({x, 30}, style + " quiet", name.address);
}

void DrawRung(const FrameNames& names, const Rung& rung, int y,
              Drawing& drawing) {
  const std::string_view style = StyleOf(rung.severity);
  drawing.Text({kTimeRight, y + 4}, "end quiet", Seconds(rung.begin, 6));
  std::string text = Shortened(rung.text, kMostCharacters);
  if (rung.severity == Severity::kFault) text = "\xE2\x9C\x97 " + text;
  if (rung.severity == Severity::kWarning) text = "! " + text;
  drawing.Text({kMiddle, rung.is_sent ? y - 5 : y + 4},
               "middle " + std::string(style), text);
  if (rung.is_sent) {
    const Drawing::Point client{kClient, y}, server{kServer, y};
    drawing.Arrow(rung.from_client ? client : server,
                  rung.from_client ? server : client, style);
  }
  drawing.Text({kFrameLeft, y + 4}, "quiet", FramesOf(names, rung));
}

// `quiet_since`: the end of all that came before.
std::string DrawPart(const SceneConnection& at, std::span<const Rung> rungs,
                     Nanoseconds& quiet_since) {
  int height = kHead + kRung / 2;
  Nanoseconds since = quiet_since;
  for (const Rung& rung : rungs) {
    height += kRung + (HasGap(rung, since) ? kGap : 0);
    since = std::max(since, rung.end);
  }
  Drawing drawing(kWidth, height, "what the two sides sent each other");
  DrawName(NameOf(at, at.client), kClient, "begin", drawing);
  DrawName(NameOf(at, 1 - at.client), kServer, "end", drawing);
  drawing.Line({kClient, kHead - 6}, {kClient, height}, "side");
  drawing.Line({kServer, kHead - 6}, {kServer, height}, "side");
  int y = kHead - kRung / 4;
  for (const Rung& rung : rungs) {
    if (HasGap(rung, quiet_since)) {
      y += kGap;
      drawing.Box({kClient - 4, y - 10}, kServer - kClient + 8, kGap - 8,
                  "gap");
      drawing.Text({kMiddle, y + 3}, "middle quiet",
                   "nothing for " + DurationText(rung.begin - quiet_since));
    }
    y += kRung;
    DrawRung(at.connection->names(), rung, y, drawing);
    quiet_since = std::max(quiet_since, rung.end);
  }
  return std::move(drawing).Close();
}

}  // namespace

SideName NameOf(const SceneConnection& at, std::uint32_t direction) {
  SideName name{{}, at.Address(direction)};
  if (at.dialogue == nullptr) return name;
  for (const Association& association : at.dialogue->associations) {
    const auto requestor = association.RequestorDirection();
    if (!association.request || !requestor) continue;
    name.title = PrintableFromCodePage1252(
        direction == *requestor ? association.request->calling_ae_title
                                : association.request->called_ae_title);
    break;
  }
  return name;
}

std::string DrawLadder(const SceneConnection& at,
                       const std::vector<Rung>& rungs) {
  std::string text;
  if (rungs.empty()) return text;
  Nanoseconds quiet_since = rungs.front().begin;
  std::span<const Rung> rest(rungs);
  while (!rest.empty()) {
    const std::size_t count = std::min(rest.size(), kRungsADrawing);
    text += DrawPart(at, rest.first(count), quiet_since);
    rest = rest.subspan(count);
  }
  return text;
}

}  // namespace host
