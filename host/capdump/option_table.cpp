#include "host/capdump/option_table.h"

#include <algorithm>
#include <iterator>

namespace host {
namespace {

constexpr std::string_view kShown = "What is shown";
constexpr std::string_view kCarried =
    "What messages carry, in place of the lists";
constexpr std::string_view kRead = "What is read";
constexpr std::string_view kWritten = "What is written besides";
constexpr std::string_view kAbout = "About capdump";

constexpr OptionRow kRows[] = {
    {kShown, "--findings", "", "", "",
     "only what is wrong, all of it, with its evidence", &Options::findings,
     kFindingsView},
    {kShown, "--check", "", "", "",
     "end with exit code 3 if there is a fault, for scripts", &Options::check},
    {kShown, "--tree", "", "", "",
     "the decode tree of each row, each line with its bytes as [offset+length]",
     &Options::tree, kEveryList},
    {kShown, "--no-message-data", "", "", "",
     "leave the hex dump of message data out of the trees",
     &Options::no_message_data, kEveryList},
    {kShown, "--hex", "", "", "", "the hex dump of each row's bytes",
     &Options::hex, kEveryList},
    {kShown, "--pdus", "", "", "", "the list of the PDUs, and no other",
     &Options::only_pdus, kEveryList},
    {kShown, "--messages", "", "", "",
     "the list of the DIMSE messages, and no other", &Options::only_messages,
     kEveryList},
    {kShown, "--contexts", "", "", "",
     "the negotiation of each association, what is odd about it and what would "
     "have matched, and no lists",
     &Options::contexts, kContextsView},
    {kShown, "--timing", "", "", "",
     "where the time of each association went and whose it was, how soon "
     "requests were answered, and no lists",
     &Options::timing, kTimingView | kCsvView},
    {kShown, "--csv", "", "", "",
     "one line a message with its frames, times and bytes, for spreadsheets",
     &Options::csv, kCsvView},
    {kShown, "--row", "", "N", "a number", "only row N of each list",
     &Options::row, kWholeLists | kDataView},
    {kShown, "--connection", "", "N", "a number",
     "only connection N, whatever it carries", &Options::connection},
    {kShown, "--all", "", "", "", "every TCP connection, DICOM or not",
     &Options::all_connections},
    {kShown, "--json", "", "", "",
     "one JSON object a line, for jq: \"kind\" is \"finding\", "
     "\"connection\", \"pdu\" or \"message\"",
     &Options::json, kEveryView & ~(kCsvView | kDataView)},
    {kCarried, "--dump", "", "", "",
     "every element of command set and data set, with path and position",
     &Options::dump, kDataView},
    {kCarried, "--dicom-json", "", "", "",
     "the same as DICOM JSON, one object a message", &Options::dicom_json,
     kDataView},
    {kCarried, "--inline", "", "N", "a number of bytes",
     "write values of up to N bytes into DICOM JSON, not only their place",
     &Options::most_inline, kDataView, "--dicom-json"},
    {kCarried, "--element", "", "TAG", "a tag as 0010,0020",
     "one line a message with this element's values; in a sequence "
     "0040,0275.0040,0007; may be given several times",
     &Options::elements, kDataView},
    {kCarried, "--frames", "", "", "",
     "with --dump and --dicom-json, the frames that brought each element",
     &Options::frames, kDataView},
    {kRead, "--filter", "", "FILTER",
     "a packet filter, for example \"port 104\",",
     "only the packets that match, in tcpdump's language", &Options::filter},
    {kRead, "--as-captured", "", "", "",
     "hand the captured packets to the module as they are, not as clean "
     "streams",
     &Options::as_captured, kRawListsView | kRawFollowView},
    {kRead, "--follow", "", "", "",
     "show rows as they come: of a pipe until it ends, of a file that grows "
     "until capdump is stopped",
     &Options::follow, kFollowViews},
    {kRead, "--part", "", "K/N", "a part as 2/4",
     "only the connections of part K of N, by their addresses and ports; they "
     "keep their numbers, so that N processes can share a capture",
     &Options::part},
    {kRead, "--max-temporary", "", "MB", "a number",
     "keep at most MB megabytes of a pipe or a compressed capture in the "
     "folder for temporary files; without it half of the room there",
     &Options::most_temporary_megabytes},
    {kRead, "--module", "", "PATH", "the path of DicomDecode.dll",
     "on Windows the module, with its dictionaries beside it; without it "
     "DicomDecode.dll beside this program",
     &Options::module},
    {kWritten, "--save", "", "FILE", "the file to write",
     "the decode lines of the rows, as the module saves them",
     &Options::save_file, kWholeLists},
    {kWritten, "--report", "", "FILE.html", "the page to write",
     "findings, what happened and what was negotiated as one page for the "
     "vendor or the ticket, without patients' data",
     &Options::page_file, kEveryView & ~(kRawListsView | kFollowViews)},
    {kWritten, "--report-with-data", "", "", "",
     "with --report, what the messages carry as well, with patients' data",
     &Options::page_with_data, kEveryView & ~(kRawListsView | kFollowViews),
     "--report"},
    {kWritten, "--export", "", "DIR", "the folder to write to",
     "the data set of each C-STORE as a DICOM file, and a manifest",
     &Options::export_folder, kDataView},
    {kWritten, "--export-identifiers", "", "", "",
     "with --export, the data sets of all other messages as well",
     &Options::export_identifiers, kDataView, "--export"},
    {kAbout, "--version", "", "", "",
     "the versions of program, module and dictionaries", &Options::version},
    {kAbout, "--help", "-h", "", "", "the list of options", &Options::help},
};

static_assert(std::ranges::all_of(kRows,
                                  [](const OptionRow& row) {
                                    return row.name.starts_with("--") &&
                                           !row.help.empty() &&
                                           row.TakesValue() ==
                                               (row.target.index() != 0) &&
                                           row.TakesValue() ==
                                               !row.wanted.empty();
                                  }),
              "complete, and a value exactly where something takes it");

// The first of the options that says nothing beside `last`.
std::string OpponentOf(const OptionRow& last,
                       const std::vector<const OptionRow*>& given) {
  const auto found = std::ranges::find_if(given, [&last](const auto* option) {
    return (option->views & last.views) == 0;
  });
  return std::string((found == given.end() ? given.front() : *found)->name);
}

}  // namespace

std::span<const OptionRow> OptionTable() { return kRows; }

void RequireTogether(const std::vector<const OptionRow*>& given) {
  unsigned views = kEveryView;
  for (const OptionRow* option : given) {
    views &= option->views;
    if (views == 0) {
      throw UsageError("The options " + OpponentOf(*option, given) + " and " +
                       std::string(option->name) +
                       " do not go together: leave out one of them.");
    }
    const bool has_needed = option->needs.empty() ||
                            std::ranges::find(given, option->needs,
                                              &OptionRow::name) != given.end();
    if (!has_needed) {
      throw UsageError("The option " + std::string(option->name) +
                       " says nothing without " + std::string(option->needs) +
                       ": add that, or leave it out.");
    }
  }
}

}  // namespace host
