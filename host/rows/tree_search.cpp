#include "host/rows/tree_search.h"

#include <algorithm>

namespace host {
namespace {

char Lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32)
                                        : letter;
}

bool Covers(const TreeLine& line, std::uint32_t byte) {
  return line.bytes && byte >= line.bytes->offset &&
         byte - line.bytes->offset < line.bytes->length;
}

}  // namespace

bool ContainsText(std::string_view text, std::string_view part) {
  return std::search(text.begin(), text.end(), part.begin(), part.end(),
                     [](char a, char b) { return Lower(a) == Lower(b); }) !=
             text.end() ||
         part.empty();
}

std::optional<std::size_t> NarrowestLine(const std::vector<TreeLine>& lines,
                                         std::uint32_t byte) {
  std::optional<std::size_t> best;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!Covers(lines[i], byte)) continue;
    if (!best || lines[i].bytes->length <= lines[*best].bytes->length) best = i;
  }
  return best;
}

std::optional<std::size_t> FindLine(const std::vector<TreeLine>& lines,
                                    std::optional<std::size_t> from,
                                    std::string_view text, bool backwards) {
  const std::size_t count = lines.size();
  if (count == 0 || text.empty()) return {};
  std::size_t at = from.value_or(backwards ? 0 : count - 1);
  for (std::size_t i = 0; i < count; ++i) {
    at = (at + (backwards ? count - 1 : 1)) % count;
    if (ContainsText(lines[at].text, text)) return at;
  }
  return {};
}

std::string_view LineValue(std::string_view text) {
  for (const std::string_view separator : {": ", " - "}) {
    const std::size_t at = text.find(separator);
    if (at != text.npos) return text.substr(at + separator.size());
  }
  return text;
}

std::string SubtreeText(const std::vector<TreeLine>& lines, std::size_t line) {
  std::string text;
  const std::uint32_t top = lines[line].depth;
  for (std::size_t i = line; i < lines.size(); ++i) {
    if (i != line && lines[i].depth <= top) break;
    text.append(2 * std::size_t{lines[i].depth - top}, ' ');
    text += lines[i].text + "\r\n";
  }
  return text;
}

}  // namespace host
