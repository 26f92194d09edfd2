#ifndef HOST_CAPDUMP_HELP_TEXT_H_
#define HOST_CAPDUMP_HELP_TEXT_H_

#include <string>
#include <string_view>

namespace host {

// What --help prints: how capdump is called, the option table with a heading
// for each group, and what holds for all of it. Lines of at most 79 columns.
std::string HelpText();

// Two parts of it, for the manual page: what capdump does, and what holds for
// all options. Paragraphs with an empty line between them.
std::string_view HelpIntroduction();
std::string_view HelpClosing();

}  // namespace host

#endif  // HOST_CAPDUMP_HELP_TEXT_H_
