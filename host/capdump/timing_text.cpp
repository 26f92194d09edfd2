#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <utility>

#include "host/capdump/dialogue_reports.h"
#include "host/capdump/findings_report.h"
#include "host/dialogue/outcome.h"
#include "host/findings/scene.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"
#include "host/timing/time_shares.h"

namespace host {
namespace {

constexpr std::size_t kBarColumns = 72;
constexpr std::string_view kMargin = "    ";
// Of an association; parts below it share a line.
constexpr Microseconds kLeastShare = 1000;
constexpr double kMegabyte = 1'000'000;

std::string Padded(std::string text, std::size_t columns) {
  text.append(columns - std::min(columns, ColumnsOf(text)), ' ');
  return text;
}

std::string RightOf(const std::string& text, std::size_t columns) {
  return std::string(columns - std::min(columns, text.size()), ' ') + text;
}

// "20.100123 s".
std::string MicrosText(Microseconds time) { return Seconds(time * 1000, 6); }

std::string MillisecondsText(Nanoseconds time) {
  const std::string micros = std::to_string(time / 1000 % 1000);
  return std::to_string(time / 1'000'000) + "." +
         std::string(3 - micros.size(), '0') + micros;
}

std::string RateText(double bytes_a_second) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f MB/s", bytes_a_second / kMegabyte);
  return text;
}

// Latencies of one command, as one side answered it.
struct Latencies {
  std::vector<Nanoseconds> values;
  Nanoseconds worst = -1;
  std::uint32_t worst_message = 0;
};

// One association with all that is needed to tell of it.
class AssociationText {
 public:
  AssociationText(const Connection& connection, const ConnectionTiming& timing,
                  std::uint32_t index)
      : connection_(connection),
        dialogue_(*DialogueOf(connection)),
        timing_(timing),
        association_(dialogue_.associations[index]),
        times_(timing.associations[index]) {}

  std::string Text() {
    AddBar();
    AddParts();
    AddSubOperations();
    AddHeldBack();
    AddLatencies();
    return std::move(text_);
  }

 private:
  void AddLine(const std::string& line) {
    text_ += kMargin;
    text_ += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }

  void AddBar() {
    AddLine("|" + TimeBar(times_, kBarColumns) + "|");
    const auto [rates, most] = Rates();
    if (most <= 0) return;
    AddLine("|" + rates + "| up to " + RateText(most));
  }

  // The throughput of each column of the bar, from the messages' bytes, as
  // characters up to the largest, in bytes a second.
  std::pair<std::string, double> Rates() const {
    constexpr std::string_view kSteps = " .:-=+*#";
    std::array<double, kBarColumns> bytes{};
    const double width =
        static_cast<double>(times_.Duration()) / double{kBarColumns};
    if (width <= 0) return {};
    for (std::uint32_t i = association_.first_message;
         i < association_.end_message; ++i) {
      const MessageTiming& message = timing_.messages[i];
      const double begin = Column(message.first.time, width);
      const double end = Column(message.last.time, width);
      const auto first = static_cast<std::size_t>(begin);
      const auto last = static_cast<std::size_t>(end);
      for (std::size_t k = first; k <= last; ++k) {
        const double from = std::max(begin, static_cast<double>(k));
        const double to = std::min(end, static_cast<double>(k + 1));
        const double share = first == last ? 1 : (to - from) / (end - begin);
        bytes[k] += static_cast<double>(message.bytes) * share;
      }
    }
    const double most = *std::ranges::max_element(bytes);
    std::string rates;
    for (const double one : bytes) {
      rates += kSteps[static_cast<std::size_t>(
          most > 0 ? std::ceil(one / most * (kSteps.size() - 1)) : 0)];
    }
    return {rates, most / width * 1e6};
  }

  double Column(Nanoseconds time, double width) const {
    const Microseconds since = timing_.Since(time) - times_.begin;
    return std::clamp(static_cast<double>(since) / width, 0.0,
                      kBarColumns - 0.001);
  }

  void AddParts() {
    Microseconds rest = 0;
    for (const TimeShare& row : SharesOf(times_)) {
      if (row.time * kLeastShare < times_.Duration()) {
        rest += row.time;
        continue;
      }
      AddLine(std::string(1, PartLetter(row.part)) + "  " +
              Padded(std::string(PartText(row.part)), 34) +
              Padded(std::string(OwnerText(row.owner)), 10) +
              RightOf(MicrosText(row.time), 14) + " s " +
              RightOf(ShareText(row.time, times_.Duration()), 8));
    }
    if (rest != 0) AddSum("others, each less than 0.1 %", rest);
    AddSum("all", times_.Duration());
  }

  void AddSum(const std::string& name, Microseconds time) {
    AddLine("   " + Padded(name, 44) + RightOf(MicrosText(time), 14) + " s " +
            RightOf(ShareText(time, times_.Duration()), 8));
  }

  void AddSubOperations() {
    const SubOperationTime& time = times_.sub_operations;
    if (time.sum == 0) return;
    AddLine(MicrosText(time.sum) + " s of the thinking are between " +
            SubOperationsText(dialogue_, time.request) + ".");
  }

  void AddHeldBack() {
    for (const std::uint32_t direction : {0u, 1u}) {
      const HeldBack& held = times_.held_back[direction];
      if (held.count == 0) continue;
      AddLine("The " + SideText(direction) + " held back " +
              CountText(held.count, "packet", "packets") + " for " +
              MicrosText(held.sum) + " s in all, the first in frame " +
              connection_.names().Text(held.first_frame) +
              "; the acknowledgement was " +
              (held.delayed == held.count
                   ? "delayed each time"
                   : "delayed " + CountText(held.delayed, "time", "times")) +
              ".");
    }
  }

  std::string SideText(std::uint32_t direction) const {
    const bool requests = direction == times_.requestor;
    std::string text = requests ? "requestor" : "acceptor";
    return text + ToolkitOf(association_, direction) +
           (ToolkitOf(association_, direction).empty() ? "" : ",");
  }

  void AddLatencies() {
    std::map<std::pair<std::uint16_t, std::uint32_t>, Latencies> all;
    for (std::uint32_t i = association_.first_message;
         i < association_.end_message; ++i) {
      const DialogueMessage& message = dialogue_.messages[i];
      const auto& latency = timing_.messages[i].answered_after;
      if (!message.IsRequest() || !latency) continue;
      Latencies& one = all[{message.command_field, 1 - message.direction}];
      one.values.push_back(*latency);
      if (*latency <= one.worst) continue;
      one.worst = *latency;
      one.worst_message = i;
    }
    if (all.empty()) return;
    AddLine(Padded("answered after, ms", 32) +
            "  count       50 %       95 %       99 %      worst");
    for (auto& [key, latencies] : all) AddLatency(key, latencies);
  }

  void AddLatency(const std::pair<std::uint16_t, std::uint32_t>& key,
                  Latencies& latencies) {
    std::ranges::sort(latencies.values);
    const bool moves = key.first == kCMoveRq || key.first == kCGetRq;
    const char* by = key.second == times_.requestor ? ", by the requestor"
                                                    : ", by the acceptor";
    std::string line =
        Padded(CommandText(key.first) + (moves ? " and sub-operations" : by),
               32) +
        RightOf(NumberText(latencies.values.size()), 7);
    for (const int percent : {50, 95, 99, 100}) {
      line +=
          RightOf(MillisecondsText(Percentile(latencies.values, percent)), 11);
    }
    const auto row = RowOf(connection_.messages,
                           dialogue_.messages[latencies.worst_message].record);
    if (row) line += "  message row " + std::to_string(*row + 1);
    AddLine(line);
  }

  const Connection& connection_;
  const Dialogue& dialogue_;
  const ConnectionTiming& timing_;
  const Association& association_;
  const AssociationTiming& times_;
  std::string text_;
};

void AddCount(std::uint64_t count, const char* what, std::string& text) {
  if (count == 0) return;
  text += ", " + NumberText(count) + " " + what;
}

std::string FlowText(const Connection& connection, std::uint32_t direction) {
  const FlowFacts& flow = connection.transfer.flows[direction];
  std::string text = (direction == 0 ? connection.first_endpoint
                                     : connection.second_endpoint) +
                     " sent " + BytesText(flow.sent_bytes);
  if (const auto trip = flow.LeastTrip()) {
    text += ", to it and back " + MillisecondsText(*trip) + " ms at least";
  }
  AddCount(flow.timed_out, "sent again by time-out", text);
  AddCount(flow.fast, "sent again at once", text);
  AddCount(flow.spurious, "sent again without need", text);
  AddCount(flow.out_of_order, "out of order", text);
  AddCount(connection.transport.sides[direction].duplicates,
           "doubled by the capture", text);
  AddCount(flow.keep_alives, "keep-alives", text);
  AddCount(flow.zero_windows, "with zero window", text);
  AddCount(flow.resets, "resets", text);
  if (flow.window_limited >= 1'000'000) {
    text += ", held up " + MillisecondsText(flow.window_limited) +
            " ms by the other side's window";
  }
  return text + "\n";
}

std::string ConnectionText(const Connection& connection) {
  std::string text = "\nConnection " + std::to_string(connection.index + 1) +
                     "  " + connection.first_endpoint + " --> " +
                     connection.second_endpoint + "\n";
  for (const std::uint32_t direction : {0u, 1u}) {
    text += "  " + FlowText(connection, direction);
  }
  return text;
}

std::string TitlesText(const Association& association) {
  if (!association.request) return "(the request was not captured)";
  return PrintableFromCodePage1252(association.request->calling_ae_title) +
         " --> " +
         PrintableFromCodePage1252(association.request->called_ae_title);
}

}  // namespace

void WriteTiming(const std::vector<Connection>& connections,
                 std::optional<std::uint32_t> only, const Sink& sink) {
  bool is_any = false;
  ForEachDialogue(
      connections, only,
      [&](const Connection& connection, const Dialogue& dialogue) {
        if (dialogue.associations.empty() && !only) return;
        is_any = true;
        const ConnectionTiming timing = TimeConnection(connection);
        sink(ConnectionText(connection));
        for (const std::string& limit : timing.limits) {
          sink("  note: " + limit + "\n");
        }
        for (std::uint32_t k = 0; k < timing.associations.size(); ++k) {
          sink("  Association " + std::to_string(k + 1) + "  " +
               TitlesText(dialogue.associations[k]) + ", " +
               CountText(timing.associations[k].messages, "message",
                         "messages") +
               "\n" + AssociationText(connection, timing, k).Text());
        }
      });
  if (!is_any) sink("There is no association.\n");
}

}  // namespace host
