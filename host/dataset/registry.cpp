#include "host/dataset/registry.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <vector>

namespace host {
namespace {

// Sorted, so that they can be searched as they are; the first line is empty.
constexpr char kElements[] =
#include "host/dataset/registry_elements.inc"
    ;
constexpr char kPrivate[] =
#include "host/dataset/registry_private.inc"
    ;
constexpr char kUids[] =
#include "host/dataset/registry_uids.inc"
    ;

template <std::size_t kSize, class Take>
void ForEachLine(const char (&lines)[kSize], Take take) {
  std::string_view text(lines + 1, kSize - 2);
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    take(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
}

// The column at the front of `line`, which loses it.
std::string_view TakeColumn(std::string_view& line) {
  const std::size_t tab = line.find('\t');
  const std::string_view column = line.substr(0, tab);
  line.remove_prefix(tab == line.npos ? line.size() : tab + 1);
  return column;
}

// The columns behind the key.
ElementEntry EntryOf(std::string_view line) {
  TakeColumn(line);
  ElementEntry entry;
  entry.vr = TakeColumn(line);
  entry.vm = TakeColumn(line);
  entry.name = TakeColumn(line);
  entry.retired = !line.empty();
  return entry;
}

// An x counts as 0.
std::uint32_t HexNumber(std::string_view digits) {
  std::uint32_t number = 0;
  for (const char digit : digits) {
    const int value = digit == 'x'   ? 0
                      : digit <= '9' ? digit - '0'
                                     : digit - 55;
    number = number << 4 | static_cast<std::uint32_t>(value);
  }
  return number;
}

// "0028,04x1" as a number and the bits of it that count.
struct TagPattern {
  explicit TagPattern(std::string_view text)
      : number(HexNumber(text.substr(0, 4)) << 16 |
               HexNumber(text.substr(5, 4))) {
    for (const std::size_t digit : {0u, 1u, 2u, 3u, 5u, 6u, 7u, 8u}) {
      mask = mask << 4 | (text[digit] == 'x' ? 0 : 0xFu);
    }
  }
  std::uint32_t number;
  std::uint32_t mask = 0;
};

struct KeyedLine {
  std::uint32_t key = 0;
  std::string_view line;
};

const KeyedLine* FirstFrom(const KeyedLine* begin, const KeyedLine* end,
                           std::uint32_t key) {
  return std::lower_bound(begin, end, key,
                          [](const KeyedLine& row, std::uint32_t value) {
                            return row.key < value;
                          });
}

struct ElementIndex {
  ElementIndex() {
    ForEachLine(kElements, [this](std::string_view line) {
      const TagPattern pattern(line);
      if (pattern.mask == 0xFFFF'FFFF) {
        rows.push_back({pattern.number, line});
      } else {
        repeating.push_back({pattern, line});
      }
    });
  }

  struct Repeating {
    TagPattern pattern;
    std::string_view line;
  };
  std::vector<KeyedLine> rows;       // by the number of the tag
  std::vector<Repeating> repeating;  // few
};

// Group, low byte and block of a private element; the entry for all blocks is
// that of block 0 and so the first.
std::uint32_t PrivateKey(std::uint32_t tag) {
  return (tag & 0xFFFF'0000) | (tag & 0xFF) << 8 | (tag >> 8 & 0xFF);
}

struct PrivateIndex {
  PrivateIndex() {
    ForEachLine(kPrivate, [this](std::string_view line) {
      if (line.starts_with('=')) {
        creators.push_back({line.substr(1), rows.size()});
      } else {
        rows.push_back({PrivateKey(TagPattern(line).number), line});
      }
    });
    creators.push_back({{}, rows.size()});
  }

  struct Creator {
    std::string_view name;
    std::size_t first_row;
  };
  std::vector<Creator> creators;  // by name; the last one only ends the rows
  std::vector<KeyedLine> rows;    // by key within each creator
};

}  // namespace

std::optional<ElementEntry> FindElement(Tag tag) {
  static const ElementIndex index;
  const KeyedLine* const end = index.rows.data() + index.rows.size();
  const KeyedLine* const row = FirstFrom(index.rows.data(), end, tag.Number());
  if (row != end && row->key == tag.Number()) return EntryOf(row->line);
  if (tag.IsGroupLength()) return ElementEntry{"UL", "1", "Group Length", true};
  if (tag.IsPrivateCreator()) return ElementEntry{"LO", "1", "Private Creator"};
  for (const auto& [pattern, line] : index.repeating) {
    const bool even = (tag.Number() & pattern.mask) == pattern.number;
    if (even && !tag.IsPrivate()) return EntryOf(line);
  }
  return {};
}

std::optional<ElementEntry> FindPrivateElement(std::string_view creator,
                                               Tag tag) {
  static const PrivateIndex index;
  const auto end = index.creators.end() - 1;
  const auto found = std::lower_bound(
      index.creators.begin(), end, creator,
      [](const auto& row, std::string_view name) { return row.name < name; });
  if (found == end || found->name != creator) return {};
  const KeyedLine* const rows = index.rows.data();
  const KeyedLine* const last = rows + found[1].first_row;
  // The entry for this block, for all blocks, and both in a repeating group.
  for (const std::uint32_t counts :
       {0xFFFF'FFFFu, 0xFFFF'FF00u, 0xFF00'FFFFu, 0xFF00'FF00u}) {
    const std::uint32_t key = PrivateKey(tag.Number()) & counts;
    const KeyedLine* const row = FirstFrom(rows + found->first_row, last, key);
    if (row != last && row->key == key) return EntryOf(row->line);
  }
  return {};
}

std::optional<UidEntry> FindUid(std::string_view uid) {
  static const std::vector<std::string_view> lines = [] {
    std::vector<std::string_view> all;
    ForEachLine(kUids, [&all](std::string_view line) { all.push_back(line); });
    return all;
  }();
  const auto uid_of = [](std::string_view line) { return TakeColumn(line); };
  const auto found = std::ranges::lower_bound(lines, uid, {}, uid_of);
  if (found == lines.end() || uid_of(*found) != uid) return {};
  std::string_view line = *found;
  TakeColumn(line);
  UidEntry entry;
  entry.name = TakeColumn(line);
  entry.retired = !line.empty();
  return entry;
}

}  // namespace host
