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

  constexpr bool TakesValue() const { return !value.empty(); }
};

// In the order in which they are explained. Each name is there once.
std::span<const OptionRow> OptionTable();

}  // namespace host

#endif  // HOST_CAPDUMP_OPTION_TABLE_H_
