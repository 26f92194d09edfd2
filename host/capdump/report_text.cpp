#include <algorithm>
#include <array>
#include <utility>

#include "host/capdump/report.h"
#include "host/rows/connection_text.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"
#include "host/text/time_text.h"

namespace host {
namespace {

// What stands left of a tree line's text: its bytes, then the nesting.
constexpr std::size_t kRangeColumns = 16;
constexpr std::size_t kMostBuffered = std::size_t{1} << 16;
constexpr std::string_view kRowMargin = "  ";
constexpr std::string_view kDecodeMargin = "      ";

// The columns of a list; a column in which no row has anything is left out.
struct Column {
  std::string_view title;
  bool right_aligned;
  std::string (*text)(const ReportedRow&, const FrameNames&);
};

constexpr Column kColumns[] = {
    {"row", true,
     [](const ReportedRow& row, const FrameNames&) {
       return row.index ? std::to_string(*row.index + 1) : std::string("-");
     }},
    {"number", true,
     // The module's own number is worth a column only where it differs.
     [](const ReportedRow& row, const FrameNames&) {
       return !row.index || row.listed.number == *row.index + 1
                  ? std::string()
                  : "#" + std::to_string(row.listed.number);
     }},
    {"time (UTC)", false,
     [](const ReportedRow& row, const FrameNames&) {
       return row.wire ? TimeOfDay(row.wire->time) : std::string();
     }},
    {"since row", true,
     [](const ReportedRow& row, const FrameNames&) {
       return row.since_previous ? Seconds(*row.since_previous, 6)
                                 : std::string();
     }},
    {"dir", false,
     [](const ReportedRow& row, const FrameNames&) {
       return std::string(row.listed.direction == 0 ? "-->" : "<--");
     }},
    {"length", true,
     [](const ReportedRow& row, const FrameNames&) {
       return NumberText(row.listed.length);
     }},
    {"summary", false,
     [](const ReportedRow& row, const FrameNames&) {
       return row.index ? PrintableFromCodePage1252(row.listed.summary)
                        : std::string("(not in the list)");
     }},
    {"detail", false,
     [](const ReportedRow& row, const FrameNames&) {
       return PrintableFromCodePage1252(row.listed.detail);
     }},
    {"frames", false,
     [](const ReportedRow& row, const FrameNames& names) {
       return row.wire ? names.Text(row.wire->first_frame, row.wire->last_frame)
                       : std::string();
     }},
    {"outcome", false,
     [](const ReportedRow& row, const FrameNames&) { return row.outcome; }},
};
using Widths = std::array<std::size_t, std::size(kColumns)>;

Widths MeasureColumns(const std::vector<ReportedRow>& rows,
                      const FrameNames& names) {
  Widths widths{};
  for (std::size_t i = 0; i < widths.size(); ++i) {
    for (const ReportedRow& row : rows) {
      widths[i] = std::max(widths[i], ColumnsOf(kColumns[i].text(row, names)));
    }
    if (widths[i] != 0) {
      widths[i] = std::max(widths[i], kColumns[i].title.size());
    }
  }
  return widths;
}

std::string RangeText(const TreeLine& line) {
  if (!line.bytes) return "[no bytes]";
  return "[" + std::to_string(line.bytes->offset) + "+" +
         std::to_string(line.bytes->length) + "]";
}

class TextReport final : public Report {
 public:
  explicit TextReport(Sink sink)
      : sink_(std::move(sink)), names_(&Connection().names()) {}

  void BeginCapture(const std::string& name, std::size_t connections,
                    std::size_t with_dicom) override {
    Line(name + ": " +
         CountText(connections, "TCP connection", "TCP connections") + ", " +
         NumberText(with_dicom) + " with DICOM");
    Flush();
  }

  void EndCapture(const std::string& name, std::size_t connections,
                  std::size_t with_dicom) override {
    BlankLine();
    BeginCapture(name, connections, with_dicom);
  }

  void BeginConnection(const ReportedConnection& reported) override {
    const Connection& connection = *reported.connection;
    names_ = &connection.names();
    BlankLine();
    Line("Connection " + std::to_string(reported.index + 1) + "  " +
         connection.first_endpoint + " --> " + connection.second_endpoint);
    if (reported.ae_titles) Fact("AE titles", TitlesText(*reported.ae_titles));
    Fact("begins", UtcText(connection.first_time, 6));
    Fact("lasts",
         Seconds(connection.last_time - connection.first_time, 6) + " s, " +
             CountText(connection.captured_packets, "packet", "packets") +
             ", " + BytesText(connection.payload_bytes));
    Fact("holds", CountText(reported.pdus, "PDU", "PDUs") + ", " +
                      CountText(reported.messages, "message", "messages"));
    for (const std::string& note : reported.notes) Fact("note", note);
    Flush();
  }

  void BeginList(ListKind list, const std::vector<ReportedRow>& rows) override {
    BlankLine();
    const std::string name = list == ListKind::kPdus ? "PDUs" : "Messages";
    if (rows.empty()) {
      Line(std::string(kRowMargin) + name + ": none");
    } else {
      Line(std::string(kRowMargin) + name);
      widths_ = MeasureColumns(rows, *names_);
      Columns([](const Column& column) { return std::string(column.title); });
    }
    Flush();
  }

  // A heading only where the rows are of another list than those before;
  // columns only grow.
  void Continue(const ReportedConnection& reported, ListKind list,
                const std::vector<ReportedRow>& rows) override {
    const Connection& connection = *reported.connection;
    names_ = &connection.names();
    const Widths widths = MeasureColumns(rows, *names_);
    for (std::size_t i = 0; i < widths.size(); ++i) {
      widths_[i] = std::max(widths_[i], widths[i]);
    }
    const auto of = std::pair(&reported, list);
    if (std::exchange(continued_, of) == of) return;
    BlankLine();
    Line("Connection " + std::to_string(reported.index + 1) + "  " +
         connection.first_endpoint + " --> " + connection.second_endpoint +
         (list == ListKind::kPdus ? ", PDUs" : ", messages"));
    Columns([](const Column& column) { return std::string(column.title); });
    Flush();
  }

  void Row(const ReportedRow& row, const DecodedRow& decode) override {
    Columns([&](const Column& column) { return column.text(row, *names_); });
    if (row.wire != nullptr && !row.wire->note.empty()) {
      Line(std::string(kDecodeMargin) + "note: " + row.wire->note);
    }
    if (decode.tree) Tree(*decode.tree);
    if (decode.stopped) {
      Line(std::string(kDecodeMargin) +
           "decoding stopped: " + PrintableFromCodePage1252(*decode.stopped));
    }
    if (decode.hex) Hex(*decode.hex);
    if (decode.tree || decode.hex) BlankLine();
    Flush();
  }

 private:
  template <class TextOf>
  void Columns(TextOf text_of) {
    std::string line(kRowMargin);
    for (std::size_t i = 0; i < widths_.size(); ++i) {
      if (widths_[i] == 0) continue;
      const std::string text = text_of(kColumns[i]);
      const std::string padding(widths_[i] - ColumnsOf(text), ' ');
      line += kColumns[i].right_aligned ? padding + text : text + padding;
      line += "  ";
    }
    line.erase(line.find_last_not_of(' ') + 1);
    Line(line);
  }

  void Tree(const std::vector<TreeLine>& lines) {
    for (const TreeLine& line : lines) {
      std::string text(kDecodeMargin);
      text += RangeText(line);
      const std::size_t column = kDecodeMargin.size() + kRangeColumns;
      text.append(std::max(column, text.size() + 1) - text.size(), ' ');
      text.append(2 * std::size_t{line.depth}, ' ');
      Line(text + PrintableFromCodePage1252(line.text));
      if (buffer_.size() > kMostBuffered)
        Flush();  // lines may be many and long
    }
    if (lines.empty()) Line(std::string(kDecodeMargin) + "(no decode lines)");
  }

  void Hex(const std::string& dump) {
    const std::string text = DumpFromCodePage1252(dump);
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t end = std::min(text.find("\r\n", at), text.size());
      buffer_ += kDecodeMargin;
      Line(std::string_view(text).substr(at, end - at));
      at = end + 2;
    }
  }

  void Fact(std::string_view name, const std::string& text) {
    std::string line(kRowMargin);
    line += name;
    line.append(12 - name.size(), ' ');
    Line(line + text);
  }

  void Line(std::string_view text) {
    buffer_ += text;
    buffer_ += '\n';
    after_blank_ = false;
  }

  void BlankLine() {  // one, however often it is asked for
    if (!after_blank_) Line("");
    after_blank_ = true;
  }

  void Flush() {
    sink_(buffer_);
    buffer_.clear();
  }

  Sink sink_;
  std::string buffer_;
  const FrameNames* names_;  // of the connection; first such as are numbers
  Widths widths_{};
  // The list that rows were continued of.
  std::pair<const ReportedConnection*, ListKind> continued_{};
  bool after_blank_ = false;
};

}  // namespace

std::unique_ptr<Report> MakeTextReport(Sink sink) {
  return std::make_unique<TextReport>(std::move(sink));
}

}  // namespace host
