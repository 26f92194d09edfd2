#include <utility>

#include "host/capdump/report.h"
#include "host/text/json_object.h"
#include "host/text/text_encoding.h"
#include "host/text/time_text.h"

namespace host {
namespace {

std::string LineFields(const TreeLine& line) {
  JsonObject object;
  object.Text("text", Utf8FromCodePage1252(line.text));
  if (line.bytes) {
    object.Number("section", line.bytes->section);
    object.Number("offset", line.bytes->offset);
    object.Number("length", line.bytes->length);
  }
  return std::move(object).Open();
}

// The lines come in the order of the tree, each with its depth.
std::string TreeJson(const std::vector<TreeLine>& lines) {
  std::string json = "[";
  for (std::size_t i = 0; i < lines.size(); ++i) {
    json += LineFields(lines[i]);
    const std::size_t depth = lines[i].depth;
    const bool last = i + 1 == lines.size();
    const std::size_t next = last ? 0 : lines[i + 1].depth;
    if (next > depth) {
      json += ",\"children\":[";
      continue;
    }
    json += '}';
    for (std::size_t level = depth; level > next; --level) json += "]}";
    if (!last) json += ',';
  }
  return json + "]";
}

class JsonReport final : public Report {
 public:
  explicit JsonReport(Sink sink) : sink_(std::move(sink)) {}

  void BeginCapture(const std::string&, std::size_t, std::size_t) override {}

  void BeginConnection(const ReportedConnection& reported) override {
    reported_ = &reported;
    const Connection& connection = *reported.connection;
    JsonObject object;
    object.Text("kind", "connection");
    object.Number("connection", reported.index + 1);
    object.Text("first", connection.first_endpoint);
    object.Text("second", connection.second_endpoint);
    object.Value("dicom", connection.carries_dicom ? "true" : "false");
    if (reported.ae_titles) {
      const AeTitles& titles = *reported.ae_titles;
      object.Text("calling_ae_title", Utf8FromCodePage1252(titles.calling));
      object.Text("called_ae_title", Utf8FromCodePage1252(titles.called));
    }
    object.Text("time", UtcTime(connection.first_time, 9));
    object.Value("duration",
                 Seconds(connection.last_time - connection.first_time, 9));
    object.Number("packets", connection.captured_packets);
    object.Number("bytes", connection.payload_bytes);
    object.Number("pdus", reported.pdus);
    object.Number("messages", reported.messages);
    object.Texts("notes", reported.notes);
    sink_(std::move(object).Close() + "\n");
  }

  void BeginList(ListKind list, const std::vector<ReportedRow>&) override {
    list_ = list;
  }

  void Row(const ReportedRow& row, const DecodedRow& decode) override {
    JsonObject object;
    object.Text("kind", Kind(row));
    AddListed(row, object);
    if (row.wire != nullptr) AddWire(row, object);
    if (decode.tree) object.Value("tree", TreeJson(*decode.tree));
    if (decode.hex) object.Text("hex", Utf8FromCodePage1252(*decode.hex));
    if (decode.stopped) {
      object.Text("stopped", Utf8FromCodePage1252(*decode.stopped));
    }
    sink_(std::move(object).Close() + "\n");
  }

 private:
  const char* Kind(const ReportedRow& row) const {
    if (list_ == ListKind::kPdus) return row.index ? "pdu" : "unlisted_pdu";
    return row.index ? "message" : "unlisted_message";
  }

  void AddListed(const ReportedRow& row, JsonObject& object) const {
    const Connection& connection = *reported_->connection;
    const bool from_first = row.listed.direction == 0;
    object.Number("connection", reported_->index + 1);
    if (row.index) {
      object.Number("row", *row.index + 1);
      object.Number("number", row.listed.number);
    }
    object.Number("direction", row.listed.direction);
    object.Text("from", from_first ? connection.first_endpoint
                                   : connection.second_endpoint);
    object.Text("to", from_first ? connection.second_endpoint
                                 : connection.first_endpoint);
    object.Number("length", row.listed.length);
    if (!row.index) return;
    object.Text("summary", Utf8FromCodePage1252(row.listed.summary));
    object.Text("detail", Utf8FromCodePage1252(row.listed.detail));
  }

  static void AddWire(const ReportedRow& row, JsonObject& object) {
    object.Number("first_frame", row.wire->first_frame);
    object.Number("last_frame", row.wire->last_frame);
    object.Text("time", UtcTime(row.wire->time, 9));
    if (row.since_previous) {
      object.Value("since_previous", Seconds(*row.since_previous, 9));
    }
    if (!row.wire->note.empty()) object.Text("note", row.wire->note);
  }

  Sink sink_;
  const ReportedConnection* reported_ = nullptr;
  ListKind list_ = ListKind::kPdus;
};

}  // namespace

std::unique_ptr<Report> MakeJsonReport(Sink sink) {
  return std::make_unique<JsonReport>(std::move(sink));
}

}  // namespace host
