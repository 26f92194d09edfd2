#ifndef HOST_CAPDUMP_HELP_TEXT_H_
#define HOST_CAPDUMP_HELP_TEXT_H_

#include <string>

namespace host {

// What --help prints: the option table between a few sentences, in lines of at
// most 79 columns.
std::string HelpText();

}  // namespace host

#endif  // HOST_CAPDUMP_HELP_TEXT_H_
