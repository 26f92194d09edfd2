#include <cmath>

#include "host/capdump/dialogue_reports.h"
#include "host/dialogue/outcome.h"
#include "host/text/json_object.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"
#include "host/timing/time_shares.h"

namespace host {
namespace {

const std::string& Address(const Connection& connection,
                           std::uint32_t direction) {
  return direction == 0 ? connection.first_endpoint
                        : connection.second_endpoint;
}

// A field of a CSV line, in quotes where it has to be.
std::string Quoted(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) {
    quoted += c;
    if (c == '"') quoted += c;
  }
  return quoted + '"';
}

// Whole bytes a second.
std::string RateText(const MessageTiming& timing) {
  const auto rate = timing.Throughput();
  return rate ? std::to_string(std::llround(*rate)) : std::string();
}

std::string FrameText(const Connection& connection, std::uint32_t frame) {
  return frame == 0 ? std::string() : connection.names().Text(frame);
}

constexpr std::string_view kCsvHead =
    "connection,association,message,row,command,from,to,message_id,sop_class,"
    "status,bytes,first_frame,last_frame,first_time,last_time,duration_s,"
    "bytes_per_s,answered_after_s,until_last_answer_s,answers,"
    "sub_operations\n";

// One message after the other, with the rows that the module's list gives them.
class CsvLines {
 public:
  explicit CsvLines(const Connection& connection)
      : connection_(connection),
        dialogue_(*DialogueOf(connection)),
        timing_(TimeConnection(connection)) {
    std::size_t row = 0;
    for (const WireRecord& record : connection.messages) {
      rows_.push_back(record.listed ? std::to_string(++row) : "");
    }
  }

  void Write(const Sink& sink) const {
    for (std::uint32_t i = 0; i < dialogue_.messages.size(); ++i) {
      sink(Line(i) + "\n");
    }
  }

 private:
  std::string Line(std::uint32_t i) const {
    const DialogueMessage& message = dialogue_.messages[i];
    const MessageTiming& timing = timing_.messages[i];
    std::string line = std::to_string(connection_.index + 1);
    const auto add = [&line](const std::string& field) {
      line += ',' + Quoted(field);
    };
    add(std::to_string(message.association + 1));
    add(std::to_string(i + 1));
    add(message.record ? rows_[*message.record] : "");
    add(message.has_command_field ? CommandFieldText(message.command_field)
                                  : "");
    add(Address(connection_, message.direction));
    add(Address(connection_, 1 - message.direction));
    add(message.message_id ? std::to_string(*message.message_id) : "");
    add(Utf8FromCodePage1252(message.sop_class));
    add(message.status ? HexText(*message.status) : "");
    add(std::to_string(timing.bytes));
    add(FrameText(connection_, timing.first.frame));
    add(FrameText(connection_, timing.last.frame));
    add(timing.first.frame != 0 ? UtcTime(timing.first.time, 9) : "");
    add(timing.last.frame != 0 ? UtcTime(timing.last.time, 9) : "");
    add(Seconds(timing.Duration(), 9));
    add(RateText(timing));
    add(timing.answered_after ? Seconds(*timing.answered_after, 9) : "");
    add(timing.whole ? Seconds(*timing.whole, 9) : "");
    add(std::to_string(message.answers));
    add(std::to_string(SubOperationsOf(i)));
    return line;
  }

  // Of a C-MOVE its last answer counts them.
  std::uint32_t SubOperationsOf(std::uint32_t i) const {
    const DialogueMessage& message = dialogue_.messages[i];
    if (message.command_field != kCMoveRq || !message.last_answer) {
      return timing_.messages[i].sub_operations;
    }
    const DialogueMessage& answer = dialogue_.messages[*message.last_answer];
    const SubOperations counts = dialogue_.ReadCommand(answer).sub_operations;
    return std::uint32_t{counts.completed.value_or(0)} +
           counts.failed.value_or(0) + counts.warning.value_or(0);
  }

  const Connection& connection_;
  const Dialogue& dialogue_;
  const ConnectionTiming timing_;
  std::vector<std::string> rows_;  // by record
};

std::string PartsJson(const TimeSums& sums) {
  std::string json = "[";
  for (const TimeShare& share : SharesOf(sums)) {
    JsonObject object;
    object.Text("part", PartSlug(share.part));
    object.Text("owner", OwnerText(share.owner));
    object.Value("time", Seconds(share.time * 1000, 6));
    json += (json.size() == 1 ? "" : ",") + std::move(object).Close();
  }
  return json + "]";
}

std::string HeldBackJson(const HeldBack& held) {
  JsonObject object;
  object.Number("count", held.count);
  object.Value("time", Seconds(held.sum * 1000, 6));
  object.Value("longest", Seconds(held.longest * 1000, 6));
  object.Number("delayed_acknowledgements", held.delayed);
  object.Number("first_frame", held.first_frame);
  return std::move(object).Close();
}

// What TCP did in one direction.
std::string FlowJson(const TransferFacts& transfer, std::uint32_t direction) {
  const FlowFacts& flow = transfer.flows[direction];
  JsonObject object;
  object.Number("bytes", flow.sent_bytes);
  if (flow.segment_limit) object.Number("segment_limit", *flow.segment_limit);
  if (flow.window_scale) object.Number("window_scale", *flow.window_scale);
  const auto add_trip = [&](std::string_view name,
                            const std::optional<Nanoseconds>& trip) {
    if (trip) object.Value(name, Seconds(*trip, 9));
  };
  add_trip("round_trip", flow.LeastTrip());
  add_trip("handshake_round_trip", flow.handshake_trip);
  add_trip("data_round_trip", flow.LeastDataTrip());
  object.Number("timed_out", flow.timed_out);
  object.Number("fast", flow.fast);
  object.Number("spurious", flow.spurious);
  object.Number("out_of_order", flow.out_of_order);
  object.Number("keep_alives", flow.keep_alives);
  object.Number("window_probes", flow.window_probes);
  object.Number("repeated_acknowledgements", flow.repeated_acknowledgements);
  object.Number("window_updates", flow.window_updates);
  object.Number("zero_windows", flow.zero_windows);
  object.Value("zero_window_time", Seconds(transfer.ClosedFor(direction), 9));
  object.Number("window_full", flow.window_full);
  object.Number("resets", flow.resets);
  object.Number("most_in_flight", flow.most_in_flight);
  object.Number("largest_window", flow.largest_window);
  object.Value("window_limited", Seconds(flow.window_limited, 9));
  return std::move(object).Close();
}

}  // namespace

std::string AssociationTimingJson(const Connection& connection,
                                  const ConnectionTiming& timing,
                                  std::uint32_t association) {
  const AssociationTiming& times = timing.associations[association];
  JsonObject object;
  object.Number("association", association + 1);
  object.Text("requestor", Address(connection, times.requestor));
  object.Value("begin", Seconds(times.begin * 1000, 6));
  object.Value("duration", Seconds(times.Duration() * 1000, 6));
  object.Value("parts", PartsJson(times.sums));
  object.Value("between_pending_answers",
               Seconds(times.sub_operations.sum * 1000, 6));
  for (const std::uint32_t direction : {0u, 1u}) {
    const HeldBack& held = times.held_back[direction];
    if (held.count == 0) continue;
    object.Value(direction == times.requestor ? "held_back_by_requestor"
                                              : "held_back_by_acceptor",
                 HeldBackJson(held));
  }
  return std::move(object).Close();
}

void WriteTimingJson(const std::vector<Connection>& connections,
                     std::optional<std::uint32_t> only, const Sink& sink) {
  ForEachDialogue(
      connections, only, [&](const Connection& connection, const Dialogue&) {
        const ConnectionTiming timing = TimeConnection(connection);
        JsonObject object;
        object.Text("kind", "timing");
        object.Number("connection", connection.index + 1);
        object.Text("first", connection.first_endpoint);
        object.Text("second", connection.second_endpoint);
        std::string list = "[";
        for (std::uint32_t k = 0; k < timing.associations.size(); ++k) {
          list += (k == 0 ? "" : ",") +
                  AssociationTimingJson(connection, timing, k);
        }
        object.Value("associations", list + "]");
        object.Value("from_first", FlowJson(connection.transfer, 0));
        object.Value("from_second", FlowJson(connection.transfer, 1));
        object.Texts("limits", timing.limits);
        sink(std::move(object).Close() + "\n");
      });
}

void WriteTimingCsv(const std::vector<Connection>& connections,
                    std::optional<std::uint32_t> only, const Sink& sink) {
  sink(kCsvHead);
  ForEachDialogue(connections, only,
                  [&](const Connection& connection, const Dialogue&) {
                    CsvLines(connection).Write(sink);
                  });
}

}  // namespace host
