#ifndef HOST_CAPDUMP_CAPDUMP_H_
#define HOST_CAPDUMP_CAPDUMP_H_

#include <string>
#include <vector>

namespace host {

// The program, with the arguments behind its name in UTF-8; answers its exit
// code. What goes wrong becomes one sentence on standard error.
int Capdump(const std::vector<std::string>& arguments);

}  // namespace host

#endif  // HOST_CAPDUMP_CAPDUMP_H_
