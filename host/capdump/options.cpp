#include "host/capdump/options.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace host {
namespace {

constexpr std::string_view kSeeHelp = ": capdump --help lists the options.";

// --pdus and --messages; neither or both show both.
struct ViewChoice {
  bool pdus = false;
  bool messages = false;
};

struct Flag {
  std::string_view name;
  bool Options::*member;
};
constexpr Flag kFlags[] = {
    {"--tree", &Options::tree},
    {"--hex", &Options::hex},
    {"--no-message-data", &Options::no_message_data},
    {"--json", &Options::json},
    {"--all", &Options::all_connections},
    {"--as-captured", &Options::as_captured},
    {"--help", &Options::help},
    {"-h", &Options::help},
    {"--version", &Options::version},
};

struct TextOption {
  std::string_view name, wanted;
  std::string Options::*member;
};
constexpr TextOption kTexts[] = {
    {"--filter", "a packet filter, for example \"port 104\"", &Options::filter},
    {"--module", "the path of DicomDecode.dll", &Options::module},
    {"--save", "the file to write", &Options::save_file},
};

struct NumberOption {
  std::string_view name;
  std::optional<std::uint32_t> Options::*member;
};
constexpr NumberOption kNumbers[] = {
    {"--row", &Options::row},
    {"--connection", &Options::connection},
};

std::string Quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

// The number of a row or a connection, which people count from 1.
std::uint32_t ParseIndex(std::string_view option, std::string_view text) {
  std::uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number == 0) {
    throw UsageError("The option " + std::string(option) + " wants a number from 1 on, not " +
                     Quoted(text) + ".");
  }
  return number - 1;
}

// The arguments one after the other; "--option=value" is two of them.
class Arguments {
 public:
  explicit Arguments(const std::vector<std::string>& arguments)
      : rest_(arguments.begin(), arguments.end()) {
    std::reverse(rest_.begin(), rest_.end());
  }

  bool AtEnd() const { return rest_.empty(); }
  bool NextIs(std::string_view text) const { return rest_.back() == text; }

  std::string TakeName() {
    std::string name = Take();
    const std::size_t equals = name.find('=');
    if (name.rfind("--", 0) == 0 && equals != std::string::npos) {
      rest_.push_back(name.substr(equals + 1));
      name.resize(equals);
      value_is_attached_ = true;
    }
    return name;
  }

  std::string TakeValue(std::string_view name, std::string_view wanted) {
    value_is_attached_ = false;
    if (AtEnd() || rest_.back().empty()) {
      throw UsageError("The option " + std::string(name) + " wants " + std::string(wanted) +
                       " behind it.");
    }
    return Take();
  }

  void RequireNoAttachedValue(std::string_view name) const {
    if (!value_is_attached_) return;
    throw UsageError("The option " + std::string(name) + " takes no value" +
                     std::string(kSeeHelp));
  }

  std::string Take() {
    std::string argument = std::move(rest_.back());
    rest_.pop_back();
    return argument;
  }

 private:
  std::vector<std::string> rest_;  // the next one last
  bool value_is_attached_ = false;
};

bool TakeFlag(std::string_view name, Options& options, ViewChoice& choice) {
  if (name == "--pdus") return choice.pdus = true;
  if (name == "--messages") return choice.messages = true;
  const auto* flag = std::ranges::find(kFlags, name, &Flag::name);
  if (flag == std::end(kFlags)) return false;
  return options.*flag->member = true;
}

bool TakeValueOption(std::string_view name, Arguments& arguments,
                     Options& options) {
  const auto* text = std::ranges::find(kTexts, name, &TextOption::name);
  if (text != std::end(kTexts)) {
    options.*text->member = arguments.TakeValue(name, text->wanted);
    return true;
  }
  const auto* number = std::ranges::find(kNumbers, name, &NumberOption::name);
  if (number == std::end(kNumbers)) return false;
  options.*number->member =
      ParseIndex(name, arguments.TakeValue(name, "a number"));
  return true;
}

void TakeCapture(std::string name, Options& options) {
  if (!options.capture.empty()) {
    throw UsageError("Only one capture at a time can be opened, not " +
                     Quoted(options.capture) + " and " + Quoted(name) + ".");
  }
  options.capture = std::move(name);
}

void TakeOption(Arguments& arguments, Options& options, ViewChoice& choice) {
  const std::string name = arguments.TakeName();
  if (name.size() < 2 || name[0] != '-') {
    TakeCapture(name, options);
  } else if (TakeFlag(name, options, choice)) {
    arguments.RequireNoAttachedValue(name);
  } else if (!TakeValueOption(name, arguments, options)) {
    throw UsageError("There is no option " + Quoted(name) +
                     std::string(kSeeHelp));
  }
}

void RequireCapture(const Options& options) {
  if (!options.capture.empty() || options.help || options.version) return;
  throw UsageError("Name a capture file to read" + std::string(kSeeHelp));
}

}  // namespace

Options ParseOptions(const std::vector<std::string>& argument_list) {
  Arguments arguments(argument_list);
  Options options;
  ViewChoice choice;
  bool only_names = false;  // behind "--"
  while (!arguments.AtEnd()) {
    if (only_names) {
      TakeCapture(arguments.Take(), options);
    } else if (arguments.NextIs("--")) {
      arguments.Take();
      only_names = true;
    } else {
      TakeOption(arguments, options, choice);
    }
  }
  if (choice.pdus != choice.messages) {
    options.lists = {choice.pdus ? ListKind::kPdus : ListKind::kMessages};
  }
  RequireCapture(options);
  return options;
}

const char* HelpText() {
  return R"(usage: capdump [options] CAPTURE

Lists the DICOM traffic of a capture file (pcap or pcapng): for each TCP
connection that carries DICOM its PDUs and its DIMSE messages, and on demand
the decode of each, field by field.

What is shown
  --tree            the decode tree of each row, each line with its bytes as
                    [offset+length]
  --no-message-data leave the hex dump of message data out of the trees
  --hex             the hex dump of each row's bytes
  --pdus            only the PDUs
  --messages        only the DIMSE messages
  --row N           only row N of each list
  --connection N    only connection N, whatever it carries
  --all             every TCP connection, DICOM or not
  --json            one JSON object a line, for jq: "kind" is "connection",
                    "pdu" or "message"

What is read
  --filter FILTER   only the packets that match, in tcpdump's language
  --as-captured     hand the captured packets to the module as they are, not
                    as clean streams
  --module PATH     the module, with its dictionaries beside it; without it
                    DicomDecode.dll beside this program

What is written besides
  --save FILE       the decode lines of the rows, as the module saves them

  --version         the versions of program, module and dictionaries
  --help            this text

Times are UTC. All output is UTF-8. The exit code is 0, or 1 when a file cannot
be read or written, or 2 when the command line is wrong.
)";
}

}  // namespace host
