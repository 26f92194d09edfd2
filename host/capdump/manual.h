#ifndef HOST_CAPDUMP_MANUAL_H_
#define HOST_CAPDUMP_MANUAL_H_

#include <string>

namespace host {

// What a package brings along for capdump, made from its option table when it
// is built.

// The manual page, for man.
std::string ManualPage();
// What completes options on bash's command line.
std::string BashCompletion();

}  // namespace host

#endif  // HOST_CAPDUMP_MANUAL_H_
