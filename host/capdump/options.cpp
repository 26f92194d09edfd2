#include "host/capdump/options.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/capdump/option_table.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr std::string_view kSeeHelp = ": capdump --help lists the options.";

std::string Quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

std::string OptionText(std::string_view name) {
  return "The option " + std::string(name);
}

// The number of a row or a connection, which people count from 1.
std::uint32_t ParseIndex(std::string_view option, std::string_view text) {
  const auto index = IndexFromText(text);
  if (!index) {
    throw UsageError(OptionText(option) + " wants a number from 1 on, not " +
                     Quoted(text) + ".");
  }
  return *index;
}

std::uint64_t ParseAmount(std::string_view option, std::string_view text) {
  std::uint64_t amount = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, amount);
  if (error == std::errc() && stop == end) return amount;
  throw UsageError(OptionText(option) + " wants a number, not " + Quoted(text) +
                   ".");
}

// "2/4", counted from 1.
CapturePart ParsePart(std::string_view option, std::string_view text) {
  const std::size_t slash = std::min(text.find('/'), text.size());
  const auto index = IndexFromText(text.substr(0, slash));
  const auto last =
      IndexFromText(text.substr(std::min(slash + 1, text.size())));
  if (!index || !last || *index > *last) {
    throw UsageError(OptionText(option) +
                     " wants a part as 2/4, of which the first number is not "
                     "the greater one, not " +
                     Quoted(text) + ".");
  }
  return {*index, *last + 1};
}

// The arguments one after the other; "--option=value" is two of them.
class Arguments {
 public:
  explicit Arguments(const std::vector<std::string>& arguments)
      : rest_(arguments.rbegin(), arguments.rend()) {}

  bool AtEnd() const { return rest_.empty(); }

  std::string Take() {
    std::string argument = std::move(rest_.back());
    rest_.pop_back();
    return argument;
  }

  // An option's name; its value may be attached to it.
  std::string TakeName() {
    std::string name = Take();
    const std::size_t equals = name.find('=');
    value_is_attached_ =
        name.starts_with("--") && equals > 2 && equals != name.npos;
    if (value_is_attached_) {
      rest_.push_back(name.substr(equals + 1));
      name.resize(equals);
    }
    return name;
  }

  // Behind TakeName().
  std::string TakeValue(const OptionRow& option) {
    if (AtEnd() || rest_.back().empty()) {
      throw UsageError(OptionText(option.name) + " wants " +
                       std::string(option.wanted) + " behind it.");
    }
    return Take();
  }
  void RequireNoValue(const OptionRow& option) const {
    if (!value_is_attached_) return;
    throw UsageError(OptionText(option.name) + " takes no value" +
                     std::string(kSeeHelp));
  }

 private:
  std::vector<std::string> rest_;  // the next one last
  bool value_is_attached_ = false;
};

const OptionRow& FindOption(std::string_view name) {
  const auto table = OptionTable();
  const auto found =
      std::ranges::find_if(table, [name](const OptionRow& option) {
        return option.name == name ||
               (!option.letter.empty() && option.letter == name);
      });
  if (found == table.end()) {
    throw UsageError("There is no option " + Quoted(name) +
                     std::string(kSeeHelp));
  }
  return *found;
}

// Sets what one option is about.
struct OptionTaker {
  const OptionRow& option;
  Arguments& arguments;
  Options& options;

  void operator()(OptionRow::Switch target) const {
    arguments.RequireNoValue(option);
    options.*target = true;
  }
  void operator()(OptionRow::Text target) const {
    options.*target = arguments.TakeValue(option);
  }
  void operator()(OptionRow::Texts target) const {
    (options.*target).push_back(arguments.TakeValue(option));
  }
  void operator()(OptionRow::Amount target) const {
    options.*target = ParseAmount(option.name, arguments.TakeValue(option));
  }
  void operator()(OptionRow::Part target) const {
    options.*target = ParsePart(option.name, arguments.TakeValue(option));
  }
  void operator()(OptionRow::Number target) const {
    options.*target = ParseIndex(option.name, arguments.TakeValue(option));
  }
};

void RequireCaptures(const Options& options) {
  const auto& captures = options.captures;
  if (captures.empty() && !options.help && !options.version) {
    throw UsageError("Name a capture file to read" + std::string(kSeeHelp));
  }
  if (captures.size() > 1 && std::ranges::count(captures, "-") != 0) {
    throw UsageError(
        "Standard input is read alone: name no other capture beside -.");
  }
  if (options.follow && captures.size() > 1) {
    throw UsageError(
        "The option --follow shows rows of one capture as they come: name one "
        "file or -.");
  }
}

}  // namespace

bool Options::ShowsLists() const {
  if (findings) return false;
  return json || tree || no_message_data || hex || only_pdus || only_messages ||
         row || as_captured || !save_file.empty();
}

std::vector<ListKind> Options::Lists() const {
  if (only_pdus == only_messages) {
    return {ListKind::kPdus, ListKind::kMessages};
  }
  return {only_pdus ? ListKind::kPdus : ListKind::kMessages};
}

Options ParseOptions(const std::vector<std::string>& argument_list) {
  Arguments arguments(argument_list);
  Options options;
  std::vector<const OptionRow*> given;
  bool only_names = false;  // behind "--"
  while (!arguments.AtEnd()) {
    std::string name = only_names ? arguments.Take() : arguments.TakeName();
    if (only_names || name.size() < 2 || name[0] != '-') {
      options.captures.push_back(std::move(name));
    } else if (name == "--") {
      only_names = true;
    } else {
      const OptionRow& option = FindOption(name);
      std::visit(OptionTaker{option, arguments, options}, option.target);
      given.push_back(&option);
    }
  }
  RequireTogether(given);
  RequireCaptures(options);
  return options;
}

void RequireConnection(std::uint32_t index, std::size_t connections) {
  if (index < connections) return;
  throw UsageError("There is no connection " + std::to_string(index + 1) +
                   " in this capture, which holds " +
                   std::to_string(connections) + ": --all lists them.");
}

}  // namespace host
