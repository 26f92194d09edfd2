#include "host/capdump/help_text.h"

#include <algorithm>
#include <string_view>

#include "host/capdump/option_table.h"

namespace host {
namespace {

constexpr std::size_t kColumns = 79;
constexpr std::size_t kMargin = 2;

constexpr std::string_view kUsage = "usage: capdump [options] CAPTURE...\n\n";

constexpr std::string_view kIntroduction =
    R"(Shows what is wrong in the DICOM traffic of a capture file (pcap or pcapng),
and what happened in each connection; on demand lists the PDUs and the DIMSE
messages, and decodes each, field by field.

Several files, folders and names with * or ? are read as one capture, in the
order of their first packets; frames are then named as FILE:12. Files may be
compressed with gzip, and - is standard input.
)";

constexpr std::string_view kClosing =
    R"(Times are UTC. All output is UTF-8. The exit code is 0, or 1 when a file cannot
be read or written, or 2 when the command line is wrong, or 3 when --check
has found a fault.
)";

// "--row N", "--help, -h".
std::string Usage(const OptionRow& option) {
  std::string usage(option.name);
  if (option.TakesValue()) usage.append(" ").append(option.value);
  if (!option.letter.empty()) usage.append(", ").append(option.letter);
  return usage;
}

// Appends the words to a line that has come to `column`, and goes on in lines
// of their own that begin there.
void AppendWords(std::string_view words, std::size_t column,
                 std::string& text) {
  for (std::size_t width = column; !words.empty();) {
    const std::size_t length = std::min(words.find(' '), words.size());
    const bool begins = width == column;
    if (!begins && width + 1 + length > kColumns) {
      text.append("\n").append(column, ' ');
      width = column;
    } else if (!begins) {
      text += ' ';
      ++width;
    }
    text += words.substr(0, length);
    width += length;
    words.remove_prefix(std::min(length + 1, words.size()));
  }
  text += '\n';
}

}  // namespace

std::string_view HelpIntroduction() { return kIntroduction; }

std::string_view HelpClosing() { return kClosing; }

std::string HelpText() {
  std::size_t longest = 0;
  for (const OptionRow& option : OptionTable()) {
    longest = std::max(longest, Usage(option).size());
  }
  const std::size_t column = kMargin + longest + 1;
  std::string text(kUsage);
  text.append(kIntroduction);
  std::string_view group;
  for (const OptionRow& option : OptionTable()) {
    if (option.group != group) {
      group = option.group;
      text.append("\n").append(group).append("\n");
    }
    const std::string usage = Usage(option);
    text.append(kMargin, ' ').append(usage);
    text.append(column - kMargin - usage.size(), ' ');
    AppendWords(option.help, column, text);
  }
  return text.append("\n").append(kClosing);
}

}  // namespace host
