#include "host/objects/data_set_dump.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/dataset/data_set_reader.h"
#include "host/dataset/value_text.h"
#include "host/dialogue/outcome.h"
#include "host/objects/message_data.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

constexpr std::size_t kPositionColumns = 9;
constexpr std::size_t kPathColumns = 22;
constexpr std::size_t kLengthColumns = 9;

void AppendRight(const std::string& text, std::size_t columns,
                 std::string& line) {
  if (text.size() < columns) line.append(columns - text.size(), ' ');
  line += text;
}

// Position, path, VR, length: what stands before the element's name.
std::string Place(const DataSetReader& reader) {
  const DataSetEvent& event = reader.event();
  std::string line;
  AppendRight(std::to_string(event.header_at), kPositionColumns, line);
  std::string path = "  " + reader.PathText();
  if (path.size() < kPathColumns) path.resize(kPathColumns, ' ');
  line += path + " ";
  const bool has_vr = event.vr != Vr::kNone;
  line += has_vr ? VrText(event.vr) : "  ";
  line += has_vr && event.vr_origin == VrOrigin::kGuessed ? '?' : ' ';
  AppendRight(event.length ? std::to_string(*event.length) : "undefined",
              kLengthColumns, line);
  return line + "  ";
}

std::string Name(const DataSetEvent& event) {
  if (event.entry) return std::string(event.entry->name);
  if (event.tag.IsPrivate()) {
    return event.creator.empty()
               ? "private"
               : "private, " + PrintableFromUtf8(event.creator);
  }
  return "not in the registry";
}

std::string Value(DataSetReader& reader) {
  const DataSetEvent& event = reader.event();
  const ShownValue shown =
      ShowValue(event, reader.Value(kShownBytes), *reader.characters());
  std::string text = PrintableFromUtf8(shown.text);
  if (!shown.meaning.empty()) {
    text +=
        (text.empty() ? "(" : " (") + PrintableFromUtf8(shown.meaning) + ")";
  }
  if (!shown.finding.empty()) text += "  ! " + shown.finding;
  return text;
}

// What the event says behind its place; empty when it has no line.
std::string Content(DataSetReader& reader) {
  using Kind = DataSetEvent::Kind;
  const DataSetEvent& event = reader.event();
  const std::string number = std::to_string(event.item + 1);
  switch (event.kind) {
    case Kind::kElement:
      return Name(event) + ": " + Value(reader);
    case Kind::kSequenceBegin:
    case Kind::kFragmentsBegin:
      return Name(event);
    case Kind::kItemBegin:
      return "item " + number;
    case Kind::kFragment:
      return event.item == 0 ? "offset table: " + Value(reader)
                             : "fragment " + std::to_string(event.item) + ": " +
                                   Value(reader);
    default:
      return "";
  }
}

void DumpElements(DataSetReader& reader, const LineSink& sink) {
  while (reader.Next().kind != DataSetEvent::Kind::kEnd) {
    const std::string content = Content(reader);
    if (!content.empty()) sink(Place(reader) + content + "\n");
    const std::string problem = reader.ProblemSentence();
    if (!problem.empty()) sink("! " + problem + "\n");
  }
  const std::string problem = reader.ProblemSentence();
  if (!problem.empty()) sink("! " + problem + "\n");
}

std::string DataSetTitle(const DialogueMessage& message,
                         const MessageData& data) {
  std::string title = "  data set, " + BytesText(message.data_bytes) + ", " +
                      UidText(data.TransferSyntax()) + " (" +
                      std::string(data.OriginText()) + ")";
  if (!message.data_set_complete) title += ", its end is missing";
  return title + "\n";
}

}  // namespace

void DumpMessage(const Dialogue& dialogue, const DialogueMessage& message,
                 const LineSink& sink) {
  const std::vector<std::uint8_t> command = CommandBytes(dialogue, message);
  sink("  command set, " + BytesText(command.size()) + "\n");
  MemorySource source(command);
  DataSetReader reader(source, kImplicitLittle);
  DumpElements(reader, sink);
  if (message.data_bytes == 0) return;
  MessageData data(dialogue, message);
  sink(DataSetTitle(message, data));
  DataSetReader elements(data.Readable(), data.Chosen().encoding);
  DumpElements(elements, sink);
  for (const DataRange& lost : LostRanges(dialogue, message)) {
    sink("! " + BytesText(lost.length) + " at " + NumberText(lost.offset) +
         " of what was sent were not captured and are read as zero.\n");
  }
  if (!data.Problem().empty()) {
    sink("! Not all of the data set can be read: " + data.Problem() + ".\n");
  }
}

}  // namespace host
