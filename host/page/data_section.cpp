#include "host/page/data_section.h"

#include <algorithm>
#include <string_view>

#include "host/objects/data_set_dump.h"
#include "host/page/markup.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr std::size_t kMostMessages = 40;
constexpr std::size_t kMostLines = 120;       // of a message
constexpr std::size_t kMostCharacters = 240;  // of a line

std::string TitleOf(const Connection& connection,
                    const DialogueMessage& message) {
  const FrameNames& names = connection.names();
  std::string title = message.has_command_field
                          ? CommandFieldText(message.command_field)
                          : "message without a command";
  if (message.message_id) {
    title += ", message ID " + std::to_string(*message.message_id);
  }
  return title + ", frame " +
         names.Text(message.first_frame, message.last_frame);
}

std::string ElementsOf(const Dialogue& dialogue,
                       const DialogueMessage& message) {
  std::string text;
  std::size_t lines = 0;
  DumpMessage(dialogue, message, [&](std::string_view piece) {
    if (lines++ < kMostLines) {
      piece.remove_suffix(piece.ends_with('\n') ? 1 : 0);
      text += Markup(Shortened(piece, kMostCharacters)) + "\n";
    }
  });
  if (lines > kMostLines) {
    text += "and " +
            CountText(lines - kMostLines, "more element", "more elements") +
            "\n";
  }
  return "<pre>" + text + "</pre>\n";
}

}  // namespace

std::string DataSection(const SceneConnection& at) {
  if (at.dialogue == nullptr || at.dialogue->messages.empty()) return {};
  const auto& messages = at.dialogue->messages;
  std::string text =
      "<section>\n" + Element("h3", "",
                              "What the messages of connection " +
                                  std::to_string(at.index + 1) + " carry");
  const std::size_t count = std::min(messages.size(), kMostMessages);
  for (std::size_t i = 0; i < count; ++i) {
    text += Element("h4", "", TitleOf(*at.connection, messages[i])) +
            ElementsOf(*at.dialogue, messages[i]);
  }
  if (count < messages.size()) {
    text += Element("p", "quiet",
                    "and " +
                        CountText(messages.size() - count, "more message",
                                  "more messages") +
                        ", which are not shown");
  }
  return text + "</section>\n";
}

}  // namespace host
