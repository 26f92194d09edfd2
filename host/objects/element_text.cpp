#include "host/objects/element_text.h"

#include "host/dataset/value_text.h"
#include "host/dialogue/outcome.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

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

}  // namespace

std::string ElementText(DataSetReader& reader) {
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

std::string CommandElementText(DataSetReader& reader,
                               const DialogueMessage& message) {
  constexpr Tag kStatus{0x0000, 0x0900};
  const DataSetEvent& event = reader.event();
  if (event.tag != kStatus || event.length != 2U || !message.status) {
    return ElementText(reader);
  }
  return Name(event) + ": " + std::to_string(*message.status) + " (" +
         StatusWithText(*message.status, message.command_field,
                        message.sop_class) +
         ")";
}

std::string DataSetTitle(const DialogueMessage& message,
                         const MessageData& data) {
  std::string title = "data set, " + BytesText(message.data_bytes) + ", " +
                      UidText(data.TransferSyntax()) + " (" +
                      std::string(data.OriginText()) + ")";
  if (!message.data_set_complete) title += ", its end is missing";
  return title;
}

}  // namespace host
