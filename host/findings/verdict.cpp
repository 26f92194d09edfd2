#include "host/findings/verdict.h"

#include <algorithm>

#include "host/text/number_text.h"

namespace host {
namespace {

std::string CountsText(const std::vector<Finding>& findings) {
  std::string text;
  for (const Severity severity :
       {Severity::kFault, Severity::kWarning, Severity::kNote}) {
    const auto count = static_cast<std::size_t>(
        std::ranges::count(findings, severity, &Finding::severity));
    if (count == 0) continue;
    const std::string name(SeverityText(severity));
    text += (text.empty() ? "" : ", ") + CountText(count, name, name + "s");
  }
  return text;
}

// What was looked at, for a capture in which nothing is wrong.
std::string AllWellText(const Scene& scene,
                        std::optional<std::size_t> connection) {
  std::size_t associations = 0, messages = 0;
  for (const SceneConnection& at : scene.connections()) {
    if (at.dialogue == nullptr || at.index != connection.value_or(at.index)) {
      continue;
    }
    associations += at.dialogue->associations.size();
    messages += at.dialogue->messages.size();
  }
  return "No fault: " + CountText(associations, "association", "associations") +
         " and " + CountText(messages, "message", "messages") +
         " checked for rejects, aborts, statuses, missing answers, losses.";
}

}  // namespace

std::string VerdictText(const Scene& scene,
                        const std::vector<Finding>& findings,
                        std::optional<std::size_t> connection) {
  const bool all_well =
      std::ranges::all_of(findings, [](const Finding& finding) {
        return finding.severity == Severity::kNote;
      });
  return all_well ? AllWellText(scene, connection) : CountsText(findings);
}

}  // namespace host
