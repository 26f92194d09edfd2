#include "host/capdump/overview.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "host/findings/findings.h"
#include "host/page/capture_page.h"
#include "host/text/number_text.h"

namespace host {
namespace {

std::vector<const Connection*> Pointers(
    const std::vector<Connection>& connections) {
  std::vector<const Connection*> pointers;
  pointers.reserve(connections.size());
  for (const Connection& connection : connections) {
    pointers.push_back(&connection);
  }
  return pointers;
}

}  // namespace

Overview::Overview(const std::vector<Connection>& connections,
                   CaptureCondition condition)
    : scene_(Pointers(connections), std::move(condition)) {}

const std::vector<Finding>& Overview::All() const {
  if (!findings_) findings_ = FindAll(scene_);
  return *findings_;
}

bool Overview::HasFault(const Options& options) const {
  return std::ranges::any_of(Wanted(options), [](const Finding& finding) {
    return finding.severity == Severity::kFault;
  });
}

std::vector<Finding> Overview::Wanted(const Options& options) const {
  std::vector<Finding> wanted = All();
  if (options.connection) {
    std::erase_if(wanted, [&options](const Finding& finding) {
      return std::ranges::find(finding.connections, *options.connection) ==
             finding.connections.end();
    });
  }
  return wanted;
}

bool Overview::IsTold(const Options& options, const SceneConnection& at) {
  if (options.connection) return at.index == *options.connection;
  return options.all_connections || at.concerns_dicom;
}

void Overview::ShowHead(const Options& options, const std::string& name,
                        const Sink& sink) const {
  const auto& connections = scene_.connections();
  const auto with_dicom = static_cast<std::size_t>(std::ranges::count_if(
      connections,
      [](const SceneConnection& at) { return at.connection->carries_dicom; }));
  sink(name + ": " +
       CountText(connections.size(), "TCP connection", "TCP connections") +
       ", " + NumberText(with_dicom) + " with DICOM\n\n");
  FindingsShown shown;
  if (options.findings) {
    shown.most = std::numeric_limits<std::size_t>::max();
    shown.evidence = true;
  }
  shown.connection = options.connection;
  WriteFindings(scene_, Wanted(options), shown, sink);
}

void Overview::Show(const Options& options, const std::string& name,
                    const Sink& sink) const {
  ShowHead(options, name, sink);
  if (options.findings) return;
  WriteStories(
      scene_, [&](const SceneConnection& at) { return IsTold(options, at); },
      Wanted(options), sink);
}

void Overview::ShowRest(const Options& options, const std::string& name,
                        const std::vector<bool>& told, StoryTeller& stories,
                        const Sink& sink) const {
  for (const SceneConnection& at : scene_.connections()) {
    const bool was_told = at.index < told.size() && told[at.index];
    if (!was_told && IsTold(options, at)) stories.Tell(at, sink);
  }
  sink("\n");
  ShowHead(options, name, sink);
}

void Overview::ShowPage(const Options& options, const std::string& name,
                        const Sink& sink) const {
  const std::vector<Finding> wanted = Wanted(options);
  WriteCapturePage(
      {.capture = name,
       .scene = scene_,
       .findings = wanted,
       .is_wanted =
           [&](const SceneConnection& at) { return IsTold(options, at); },
       .with_data = options.page_with_data},
      sink);
}

void Overview::ShowFindings(const Options& options, const Sink& sink) const {
  sink("\n");
  WriteFindings(scene_, Wanted(options), {}, sink);
}

void Overview::ShowJson(const Options& options, const Sink& sink) const {
  WriteFindingsJson(scene_, Wanted(options), sink);
}

}  // namespace host
