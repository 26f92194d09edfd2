#ifndef HOST_CAPDUMP_OPTIONS_H_
#define HOST_CAPDUMP_OPTIONS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/rows/decoded_row.h"
#include "host/streams/capture_part.h"
#include "host/text/failure.h"

namespace host {

// A command line that cannot be followed.
class UsageError : public Failure {
 public:
  using Failure::Failure;
};

// What capdump was asked for. Texts are UTF-8; an empty one was not given.
struct Options {
  // The names of files and folders, or "-" for standard input.
  std::vector<std::string> captures;

  // What is shown.
  bool tree = false;
  bool no_message_data = false;
  bool hex = false;
  bool only_pdus = false;  // both or neither: all lists
  bool only_messages = false;
  std::optional<std::uint32_t> row;         // from 0
  std::optional<std::uint32_t> connection;  // from 0
  bool all_connections = false;
  bool contexts = false;  // instead of the lists
  bool timing = false;    // instead of the lists
  bool csv = false;       // of messages, instead of the lists
  bool json = false;
  bool findings = false;  // nothing but what is wrong, all of it
  bool check = false;     // the exit code says whether there is a fault

  // What messages carry, in place of the lists.
  bool dump = false;
  bool dicom_json = false;
  std::optional<std::uint64_t> most_inline;  // bytes of a value in JSON
  std::vector<std::string> elements;         // paths of tags
  bool frames = false;                       // of each element

  // What is read, and what is written besides.
  std::string filter;  // in tcpdump's language
  bool as_captured = false;
  bool follow = false;  // show rows as they come
  CapturePart part;     // of the connections
  // Of a pipe or a compressed capture in the folder for temporary files.
  std::optional<std::uint64_t> most_temporary_megabytes;
  std::string module;         // DicomDecode.dll
  std::string save_file;      // what the module's lines are written to
  std::string page_file;      // for a page of findings and stories
  bool page_with_data = false;
  std::string export_folder;  // for data sets as files
  bool export_identifiers = false;

  // Instead of a capture.
  bool version = false;
  bool help = false;

  // Whether the module's lists are asked for; else what is wrong and what
  // happened is told.
  bool ShowsLists() const;
  // The lists that are shown, in the order in which they are.
  std::vector<ListKind> Lists() const;
};

// Reads the arguments behind the program's name, in any order; what stands
// behind "--" is no option. A value may be attached: "--row=5". Throws
// UsageError, which says what to write instead.
Options ParseOptions(const std::vector<std::string>& arguments);

// Throws UsageError if a capture with so many connections has none of this
// index.
void RequireConnection(std::uint32_t index, std::size_t connections);

}  // namespace host

#endif  // HOST_CAPDUMP_OPTIONS_H_
