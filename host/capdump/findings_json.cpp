#include "host/capdump/findings_report.h"
#include "host/capdump/frame_json.h"
#include "host/text/json_object.h"

namespace host {
namespace {

std::string ConnectionsJson(const Finding& finding) {
  std::string json = "[";
  for (const std::size_t index : finding.connections) {
    json += (json.size() == 1 ? "" : ",") + std::to_string(index + 1);
  }
  return json + "]";
}

std::string FindingJson(const Scene& scene, const Finding& finding) {
  JsonObject object;
  object.Text("kind", "finding");
  object.Text("slug", finding.kind->slug);
  object.Text("severity", SeverityText(finding.severity));
  object.Text("about", OriginText(finding.kind->origin));
  object.Text("sentence", finding.sentence);
  object.Text("advice", AdviceOf(finding));
  object.Texts("evidence", finding.evidence);
  object.Number("count", finding.count);
  if (const SceneConnection* at = scene.Find(finding.connection)) {
    const Connection& connection = *at->connection;
    object.Value("connections", ConnectionsJson(finding));
    if (const auto row = RowOf(connection.pdus, finding.pdu)) {
      object.Number("pdu", *row + 1);
    }
    if (const auto row = RowOf(connection.messages, finding.message)) {
      object.Number("message", *row + 1);
    }
  }
  if (finding.first_frame != 0) {
    AddFrames(scene.names(), finding.first_frame, finding.last_frame, object);
  }
  if (finding.time) {
    object.Text("time", UtcTime(*finding.time, 9));
  }
  return std::move(object).Close();
}

}  // namespace

void WriteFindingsJson(const Scene& scene, const std::vector<Finding>& findings,
                       const Sink& sink) {
  for (const Finding& finding : findings) {
    sink(FindingJson(scene, finding) + "\n");
  }
}

}  // namespace host
