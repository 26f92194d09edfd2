#ifndef HOST_CAPDUMP_HELP_TEXT_H_
#define HOST_CAPDUMP_HELP_TEXT_H_

#include <string>

namespace host {

// What --help prints: how capdump is called, the option table with a heading
// for each group, and what holds for all of it. Lines of at most 79 columns.
std::string HelpText();

}  // namespace host

#endif  // HOST_CAPDUMP_HELP_TEXT_H_
