#include "host/objects/element_values.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>

#include "host/dataset/byte_window.h"
#include "host/dataset/data_set_reader.h"
#include "host/dataset/value_list.h"
#include "host/dataset/value_text.h"
#include "host/objects/message_data.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

using Kind = DataSetEvent::Kind;

constexpr std::size_t kTagDigits = 8;

std::optional<Tag> ParseTag(std::string text) {
  if (text.size() == kTagDigits + 1 && text[4] == ',') text.erase(4, 1);
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, 16);
  if (text.size() != kTagDigits || error != std::errc() || stop != end) {
    return {};
  }
  return Tag{static_cast<std::uint16_t>(number >> 16),
             static_cast<std::uint16_t>(number)};
}

// The values as one text; of bytes, the first of them.
std::string ValueText(DataSetReader& reader) {
  const DataSetEvent& event = reader.event();
  const VrKind kind = TraitsOf(event.value_vr).kind;
  if (kind == VrKind::kBytes) {
    return ShowValue(event, reader.Value(kShownBytes), *reader.characters())
        .text;
  }
  const ValueList list =
      ReadValues(event, reader.Value(ByteWindow::kBytes), *reader.characters());
  std::string text;
  for (std::size_t i = 0; i < list.values.size(); ++i) {
    if (i > 0) text += '\\';
    text += list.values[i];
  }
  return text + (list.is_cut ? "..." : "");
}

// Adds what the reader comes by to the texts of the paths.
void AddValues(DataSetReader& reader, const std::vector<ElementPath>& paths,
               std::vector<std::string>& texts) {
  ElementPath place;  // the sequences around the event, then its own tag
  while (reader.Next().kind != Kind::kEnd) {
    const DataSetEvent& event = reader.event();
    if (event.kind == Kind::kSequenceBegin) place.push_back(event.tag);
    if (event.kind == Kind::kSequenceEnd) place.pop_back();
    if (event.kind != Kind::kElement) continue;
    place.push_back(event.tag);
    for (std::size_t i = 0; i < paths.size(); ++i) {
      if (paths[i] != place) continue;
      if (!texts[i].empty()) texts[i] += "; ";
      texts[i] += PrintableFromUtf8(ValueText(reader));
    }
    place.pop_back();
  }
}

}  // namespace

std::optional<ElementPath> ParseElementPath(std::string_view text) {
  ElementPath path;
  for (;;) {
    const std::size_t end = std::min(text.find('.'), text.size());
    const auto tag = ParseTag(std::string(text.substr(0, end)));
    if (!tag) return {};
    path.push_back(*tag);
    if (end == text.size()) return path;
    text.remove_prefix(end + 1);
  }
}

std::vector<std::string> FindValues(const Dialogue& dialogue,
                                    const DialogueMessage& message,
                                    const std::vector<ElementPath>& paths) {
  std::vector<std::string> texts(paths.size());
  const auto is_command = [](const ElementPath& path) {
    return path.front().group == 0;
  };
  if (std::ranges::any_of(paths, is_command)) {
    const std::vector<std::uint8_t> command = CommandBytes(dialogue, message);
    MemorySource source(command);
    DataSetReader reader(source, kImplicitLittle);
    AddValues(reader, paths, texts);
  }
  if (message.data_bytes > 0 && !std::ranges::all_of(paths, is_command)) {
    MessageData data(dialogue, message);
    DataSetReader reader(data.Readable(), data.Chosen().encoding);
    AddValues(reader, paths, texts);
  }
  return texts;
}

}  // namespace host
