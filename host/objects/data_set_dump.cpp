#include "host/objects/data_set_dump.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/dataset/data_set_reader.h"
#include "host/objects/element_text.h"
#include "host/objects/message_data.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr std::size_t kPositionColumns = 9;
constexpr std::size_t kFrameColumns = 13;
constexpr std::size_t kPathColumns = 22;
constexpr std::size_t kLengthColumns = 9;

void AppendRight(const std::string& text, std::size_t columns,
                 std::string& line) {
  if (text.size() < columns) line.append(columns - text.size(), ' ');
  line += text;
}

// Position, frames, path, VR, length: what stands before the element's name.
std::string Place(const DataSetReader& reader, ElementFrames& places,
                  const FrameText& frames) {
  const DataSetEvent& event = reader.event();
  std::string line;
  AppendRight(std::to_string(event.header_at), kPositionColumns, line);
  if (frames) {
    std::string text = "  " + places.TextOf(event, frames);
    if (text.size() < kFrameColumns) text.resize(kFrameColumns, ' ');
    line += text;
  }
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

// `text` is ElementText() or the like.
void DumpElements(DataSetReader& reader, ElementFrames places,
                  const FrameText& frames, const LineSink& sink,
                  const std::function<std::string(DataSetReader&)>& text) {
  while (reader.Next().kind != DataSetEvent::Kind::kEnd) {
    const std::string content = text(reader);
    if (!content.empty()) sink(Place(reader, places, frames) + content + "\n");
    const std::string problem = reader.ProblemSentence();
    if (!problem.empty()) sink("! " + problem + "\n");
  }
  const std::string problem = reader.ProblemSentence();
  if (!problem.empty()) sink("! " + problem + "\n");
}

}  // namespace

void DumpMessage(const Dialogue& dialogue, const DialogueMessage& message,
                 const LineSink& sink, const FrameText& frames) {
  using Part = ElementFrames::Part;
  const std::vector<std::uint8_t> command = CommandBytes(dialogue, message);
  sink("  command set, " + BytesText(command.size()) + "\n");
  MemorySource source(command);
  DataSetReader reader(source, kImplicitLittle);
  DumpElements(reader, {dialogue, message, Part::kCommandSet}, frames, sink,
               [&message](DataSetReader& at) {
                 return CommandElementText(at, message);
               });
  if (message.data_bytes == 0) return;
  MessageData data(dialogue, message);
  sink("  " + DataSetTitle(message, data) + "\n");
  DataSetReader elements(data.Readable(), data.Chosen().encoding);
  const bool is_deflated = data.Chosen().encoding.deflated;
  DumpElements(elements,
               is_deflated ? ElementFrames()
                           : ElementFrames(dialogue, message, Part::kDataSet),
               frames, sink, ElementText);
  for (const DataRange& lost : LostRanges(dialogue, message)) {
    sink("! " + BytesText(lost.length) + " at " + NumberText(lost.offset) +
         " of what was sent were not captured and are read as zero.\n");
  }
  if (!data.Problem().empty()) {
    sink("! Not all of the data set can be read: " + data.Problem() + ".\n");
  }
}

}  // namespace host
