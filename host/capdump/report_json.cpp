#include <utility>

#include "host/capdump/dialogue_reports.h"
#include "host/capdump/frame_json.h"
#include "host/capdump/report.h"
#include "host/dataset/registry.h"
#include "host/dialogue/outcome.h"
#include "host/text/json_object.h"
#include "host/text/number_text.h"
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
  void EndCapture(const std::string&, std::size_t, std::size_t) override {}

  void Continue(const ReportedConnection& reported, ListKind list,
                const std::vector<ReportedRow>&) override {
    reported_ = &reported;
    list_ = list;
  }

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
    timing_ = TimeConnection(connection);
    if (!timing_.associations.empty()) AddTiming(connection, object);
    sink_(std::move(object).Close() + "\n");
  }

  void BeginList(ListKind list, const std::vector<ReportedRow>&) override {
    list_ = list;
  }

  void Row(const ReportedRow& row, const DecodedRow& decode) override {
    JsonObject object;
    object.Text("kind", Kind(row));
    AddListed(row, object);
    if (row.wire != nullptr) {
      AddWire(reported_->connection->names(), row, object);
    }
    if (!row.outcome.empty()) object.Text("outcome", row.outcome);
    if (row.message) AddMessage(*row.message, object);
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

  static void AddWire(const FrameNames& names, const ReportedRow& row,
                      JsonObject& object) {
    AddFrames(names, row.wire->first_frame, row.wire->last_frame, object);
    object.Text("time", UtcTime(row.wire->time, 9));
    if (row.since_previous) {
      object.Value("since_previous", Seconds(*row.since_previous, 9));
    }
    if (!row.wire->note.empty()) object.Text("note", row.wire->note);
  }

  // What the host itself has read of a message.
  void AddMessage(std::uint32_t index, JsonObject& object) const {
    const Dialogue* const dialogue = DialogueOf(*reported_->connection);
    if (dialogue == nullptr) return;
    const DialogueMessage& message = dialogue->messages[index];
    if (!message.has_command_field) return;
    object.Text("command", CommandFieldText(message.command_field));
    object.Number("context", message.context);
    if (message.message_id) object.Number("message_id", *message.message_id);
    object.Text("sop_class", Utf8FromCodePage1252(message.sop_class));
    if (index < timing_.messages.size()) {
      AddTimes(timing_.messages[index], object);
    }
    if (message.IsAnswer()) AddAnswer(*dialogue, message, object);
  }

  void AddTiming(const Connection& connection, JsonObject& object) const {
    std::string list = "[";
    for (std::uint32_t i = 0; i < timing_.associations.size(); ++i) {
      list +=
          (i == 0 ? "" : ",") + AssociationTimingJson(connection, timing_, i);
    }
    object.Value("timing", list + "]");
  }

  static void AddTimes(const MessageTiming& timing, JsonObject& object) {
    if (timing.last.frame == 0) return;
    object.Text("first_time", UtcTime(timing.first.time, 9));
    object.Value("duration", Seconds(timing.Duration(), 9));
    if (timing.answered_after) {
      object.Value("answered_after", Seconds(*timing.answered_after, 9));
    }
    if (timing.whole) {
      object.Value("until_last_answer", Seconds(*timing.whole, 9));
    }
  }

  static void AddAnswer(const Dialogue& dialogue,
                        const DialogueMessage& message, JsonObject& object) {
    const CommandSet set = dialogue.ReadCommand(message);
    if (message.status) {
      object.Text("status", HexText(*message.status));
      object.Text("status_text",
                  ExplainStatus(*message.status, message.command_field,
                                message.sop_class)
                      .text);
    }
    if (!set.error_comment.empty()) {
      object.Text("error_comment", Utf8FromCodePage1252(set.error_comment));
    }
    std::vector<std::string> elements;
    for (const Tag tag : set.offending_elements) {
      const auto entry = FindElement(tag);
      elements.push_back("(" + TagText(tag) + ")" +
                         (entry ? " " + std::string(entry->name) : ""));
    }
    if (!elements.empty()) object.Texts("offending_elements", elements);
    AddSubOperations(set.sub_operations, object);
  }

  static void AddSubOperations(const SubOperations& operations,
                               JsonObject& object) {
    JsonObject counts;
    bool is_any = false;
    const auto add = [&](const char* name, std::optional<std::uint16_t> count) {
      if (!count) return;
      counts.Number(name, *count);
      is_any = true;
    };
    add("remaining", operations.remaining);
    add("completed", operations.completed);
    add("failed", operations.failed);
    add("warning", operations.warning);
    if (is_any) object.Value("sub_operations", std::move(counts).Close());
  }

  Sink sink_;
  const ReportedConnection* reported_ = nullptr;
  ConnectionTiming timing_;  // of the same
  ListKind list_ = ListKind::kPdus;
};

}  // namespace

std::unique_ptr<Report> MakeJsonReport(Sink sink) {
  return std::make_unique<JsonReport>(std::move(sink));
}

}  // namespace host
