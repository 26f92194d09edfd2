#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "host/capdump/findings_report.h"
#include "host/findings/story.h"
#include "host/findings/verdict.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"
#include "host/text/time_text.h"

namespace host {
namespace {

constexpr std::size_t kColumns = 100;
constexpr std::size_t kSeverityColumns = 9;  // "warning  "
constexpr std::size_t kTimeColumns = 12;     // "  0.001951  "
constexpr std::size_t kClockColumns = 12;    // "10:11:12.123"
constexpr std::size_t kMostSteps = 24;       // of a story
constexpr std::size_t kMostStories = 20;
constexpr std::size_t kConnectionsNamed = 3;

// `words` behind what the line holds, and in lines of their own from `column`
// on.
void AppendWrapped(std::string_view words, std::size_t column,
                   std::string& text) {
  const std::size_t line_begin = text.rfind('\n') + 1;
  std::size_t width = ColumnsOf(std::string_view(text).substr(line_begin));
  bool begins = true;
  while (!words.empty()) {
    const std::size_t length = std::min(words.find(' '), words.size());
    const std::string_view word = words.substr(0, length);
    const std::size_t columns = ColumnsOf(word);
    if (!begins && width + 1 + columns > kColumns) {
      text.append("\n").append(column, ' ');
      width = column;
      begins = true;
    }
    if (!begins) {
      text += ' ';
      ++width;
    }
    text += word;
    width += columns;
    begins = false;
    words.remove_prefix(std::min(length + 1, words.size()));
  }
  text += '\n';
}

std::string FramesText(const FrameNames& names, const Finding& finding) {
  if (finding.first_frame == 0) return {};
  const bool is_one = finding.first_frame == finding.last_frame;
  return (is_one ? ", frame " : ", frames ") +
         names.Text(finding.first_frame, finding.last_frame);
}

// "[connection 3, PDU 2, frame 6]".
std::string PlaceText(const Scene& scene, const Finding& finding) {
  const SceneConnection* const at = scene.Find(finding.connection);
  if (at == nullptr) return {};
  const Connection& connection = *at->connection;
  std::string text = "[";
  if (finding.count > 1) {
    text += NumberText(finding.count) + " times in ";
  }
  const std::size_t named =
      std::min(finding.connections.size(), kConnectionsNamed);
  text += finding.connections.size() > 1 ? "connections " : "connection ";
  for (std::size_t i = 0; i < named; ++i) {
    text += (i == 0 ? "" : ", ") + std::to_string(finding.connections[i] + 1);
  }
  if (finding.connections.size() > named) text += ", ...";
  if (finding.connections.size() > 1)
    text += "; the first:";
  else
    text += ",";
  std::string where;
  if (const auto row = RowOf(connection.pdus, finding.pdu)) {
    where += ", PDU " + std::to_string(*row + 1);
  }
  if (const auto row = RowOf(connection.messages, finding.message)) {
    where += ", message " + std::to_string(*row + 1);
  }
  where += FramesText(connection.names(), finding);
  if (finding.time)
    where += ", " + TimeOfDay(*finding.time).substr(0, kClockColumns);
  if (where.empty()) {
    text.resize(text.size() - 1);
    return text + "]";
  }
  return text + where.substr(1) + "]";
}

void AppendFinding(const Scene& scene, const Finding& finding, bool evidence,
                   std::string& text) {
  std::string severity(SeverityText(finding.severity));
  if (finding.severity == Severity::kFault) severity = "FAULT";
  severity.append(kSeverityColumns - severity.size(), ' ');
  text += severity;
  AppendWrapped(finding.sentence + " " + PlaceText(scene, finding),
                kSeverityColumns, text);
  if (evidence) {
    for (const std::string& sentence : finding.evidence) {
      text.append(kSeverityColumns, ' ');
      AppendWrapped(sentence, kSeverityColumns, text);
    }
  }
  if (finding.severity == Severity::kNote && !evidence) return;
  text.append(kSeverityColumns, ' ').append("> ");
  AppendWrapped(AdviceOf(finding), kSeverityColumns + 2, text);
  if (evidence) {
    text.append(kSeverityColumns, ' ')
        .append("(")
        .append(finding.kind->slug)
        .append(", about the ")
        .append(OriginText(finding.kind->origin))
        .append(")\n");
  }
}

// Stories of one shape.
struct StoryGroup {
  std::size_t first = 0;  // index of the connection
  Story story;
  std::size_t others = 0;
};

// Takes the first stories, and tells equal ones once.
class StoryChoice {
 public:
  void Add(const SceneConnection& at) {
    Story story = StoryOf(at, kMostSteps);
    const auto known = by_shape_.find(story.shape);
    if (known != by_shape_.end()) {
      ++groups_[known->second].others;
    } else if (groups_.size() < kMostStories) {
      by_shape_.emplace(story.shape, groups_.size());
      groups_.push_back({at.index, std::move(story), 0});
    } else {
      ++left_out_;
    }
  }
  // In the order of the capture, and how many connections are not told.
  std::pair<std::vector<StoryGroup>, std::size_t> Take() {
    std::ranges::sort(groups_, {}, &StoryGroup::first);
    return {std::move(groups_), left_out_};
  }

 private:
  std::vector<StoryGroup> groups_;
  std::map<std::string, std::size_t> by_shape_;
  std::size_t left_out_ = 0;
};

// Where something is wrong.
std::set<std::size_t> ConnectionsOf(const std::vector<Finding>& findings) {
  std::set<std::size_t> connections;
  for (const Finding& finding : findings) {
    if (finding.severity == Severity::kNote) continue;
    connections.insert(finding.connections.begin(), finding.connections.end());
  }
  return connections;
}

// The line above a story; `addition` stands behind what it says.
void AppendStoryHead(const SceneConnection& at, const std::string& addition,
                     std::string& text) {
  const Connection& connection = *at.connection;
  text += "\nConnection " + std::to_string(at.index + 1) + "  ";
  AppendWrapped(at.Address(at.client) + " --> " + at.Address(1 - at.client) +
                    ", " + UtcText(connection.first_time, 3) + ", " +
                    Seconds(connection.last_time - connection.first_time, 3) +
                    " s" + addition,
                4, text);
}

void AppendSteps(const Story& story, std::string& text) {
  for (const StoryStep& step : story.steps) {
    const std::string time = Seconds(step.since_begin, 3);
    text.append(std::max(kTimeColumns - 2, time.size()) - time.size(), ' ');
    text += time + "  ";
    AppendWrapped(step.text, kTimeColumns + 2, text);
  }
}

}  // namespace

std::optional<std::size_t> RowOf(const std::vector<WireRecord>& records,
                                 std::optional<std::uint32_t> index) {
  if (!index || *index >= records.size() || !records[*index].listed) return {};
  const auto end = records.begin() + static_cast<std::ptrdiff_t>(*index);
  return static_cast<std::size_t>(
      std::count_if(records.begin(), end,
                    [](const WireRecord& record) { return record.listed; }));
}

void WriteFindings(const Scene& scene, const std::vector<Finding>& findings,
                   const FindingsShown& shown, const Sink& sink) {
  std::string text = VerdictText(scene, findings, shown.connection);
  text += text.ends_with('.') ? "\n" : ":\n";
  const std::size_t count = std::min(findings.size(), shown.most);
  for (std::size_t i = 0; i < count; ++i) {
    AppendFinding(scene, findings[i], shown.evidence, text);
  }
  if (count < findings.size()) {
    text += "and " + NumberText(findings.size() - count) +
            " more, --findings shows all\n";
  }
  sink(text);
}

void WriteStories(const Scene& scene, const IsWantedConnection& is_wanted,
                  const std::vector<Finding>& findings, const Sink& sink) {
  StoryChoice choice;
  const std::set<std::size_t> named = ConnectionsOf(findings);
  for (const bool has_finding : {true, false}) {
    for (const SceneConnection& at : scene.connections()) {
      if (named.contains(at.index) == has_finding && is_wanted(at)) {
        choice.Add(at);
      }
    }
  }
  const auto [groups, left_out] = choice.Take();
  for (const StoryGroup& group : groups) {
    const std::string others =
        group.others == 0 ? ""
                          : ", and " + CountText(group.others, "more like it",
                                                 "more like it");
    std::string text;
    AppendStoryHead(*scene.Find(group.first), others, text);
    AppendSteps(group.story, text);
    sink(text);
  }
  if (left_out != 0) {
    sink("\nand " + CountText(left_out, "more connection", "more connections") +
         ", --connection N shows one\n");
  }
}

void StoryTeller::Tell(const SceneConnection& at, const Sink& sink) {
  const Story story = StoryOf(at, kMostSteps);
  const auto [known, is_new] = told_.emplace(story.shape, at.index);
  std::string text;
  if (is_new) {
    AppendStoryHead(at, "", text);
    AppendSteps(story, text);
  } else {
    AppendStoryHead(
        at, ", like connection " + std::to_string(known->second + 1), text);
  }
  sink(text);
}

}  // namespace host
