#ifndef HOST_CAPDUMP_OPTION_TABLE_H_
#define HOST_CAPDUMP_OPTION_TABLE_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/capdump/options.h"

namespace host {

// What is shown of a capture, one of these at a time: flags, since most options
// say something in several of them. Options without a view in common cannot be
// given together.
enum View : unsigned {
  kOverviewView = 1 << 0,  // what is wrong and what happened
  kFindingsView = 1 << 1,
  kContextsView = 1 << 2,
  kTimingView = 1 << 3,
  kCsvView = 1 << 4,
  kDataView = 1 << 5,  // what messages carry
  kListsView = 1 << 6,
  kRawListsView = 1 << 7,  // of the packets as captured
  kFollowView = 1 << 8,    // lists as they grow
  kRawFollowView = 1 << 9,
};
inline constexpr unsigned kEveryView = (1 << 10) - 1;
inline constexpr unsigned kWholeLists = kListsView | kRawListsView;
inline constexpr unsigned kFollowViews = kFollowView | kRawFollowView;
inline constexpr unsigned kEveryList = kWholeLists | kFollowViews;

// One option, with all that anybody needs to know of it: the parser, --help,
// the table in docs/capdump.md and run.sh go by these rows.
struct OptionRow {
  // What the option sets, and by that whether a value stands behind it: a
  // switch takes none, a number counts from 1 on the command line and from 0
  // inside.
  using Switch = bool Options::*;
  using Text = std::string Options::*;
  using Number = std::optional<std::uint32_t> Options::*;
  using Amount = std::optional<std::uint64_t> Options::*;  // from 0 on
  using Part = CapturePart Options::*;                     // "K/N"
  using Texts = std::vector<std::string> Options::*;       // one more each time

  std::string_view group;   // a heading; rows of a group stand together
  std::string_view name;    // "--row"
  std::string_view letter;  // "-h", or nothing
  std::string_view value;   // the value's name, "N", or nothing
  // What the value is, in "The option --row wants a number behind it."
  std::string_view wanted;
  std::string_view help;  // what it does, without a capital and a full stop
  std::variant<Switch, Text, Number, Amount, Part, Texts> target;
  unsigned views = kEveryView;  // in which it says something
  std::string_view needs = {};  // the option without which it says nothing

  constexpr bool TakesValue() const { return !value.empty(); }
};

// In the order in which they are explained. Each name is there once.
std::span<const OptionRow> OptionTable();

// Throws UsageError, which says what to leave out or to add, where the options
// that were given say nothing beside each other. Linear.
void RequireTogether(const std::vector<const OptionRow*>& given);

}  // namespace host

#endif  // HOST_CAPDUMP_OPTION_TABLE_H_
