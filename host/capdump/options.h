#ifndef HOST_CAPDUMP_OPTIONS_H_
#define HOST_CAPDUMP_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/rows/decoded_row.h"
#include "host/text/failure.h"

namespace host {

// A command line that cannot be followed.
class UsageError : public Failure {
 public:
  using Failure::Failure;
};

// What capdump was asked for. Names are UTF-8.
struct Options {
  std::string capture;
  std::string filter;     // empty: every packet
  std::string module;     // empty: DicomDecode.dll beside the program
  std::string save_file;  // empty: nothing is saved
  std::optional<std::uint32_t> connection;  // from 0
  std::optional<std::uint32_t> row;         // from 0
  std::vector<ListKind> lists = {ListKind::kPdus, ListKind::kMessages};
  bool tree = false;
  bool hex = false;
  bool no_message_data = false;
  bool json = false;
  bool all_connections = false;
  bool as_captured = false;
  bool help = false;
  bool version = false;
};

// Reads the arguments behind the program's name. Throws UsageError.
Options ParseOptions(const std::vector<std::string>& arguments);

// What --help prints.
const char* HelpText();

}  // namespace host

#endif  // HOST_CAPDUMP_OPTIONS_H_
