// capdump: lists and decodes the DICOM traffic of a capture file on a terminal.

#include <string>
#include <vector>

#include "host/capdump/capdump.h"

int main(int count, char** names) {
  return host::Capdump(std::vector<std::string>(names + 1, names + count));
}
