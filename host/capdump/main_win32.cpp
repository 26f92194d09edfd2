// capdump: lists and decodes the DICOM traffic of a capture file on a console.

#include <string>
#include <vector>

#include "host/capdump/capdump.h"
#include "host/text/wide_text.h"

int wmain(int count, wchar_t** names) {
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) {
    arguments.push_back(host::Utf8FromWide(names[i]));
  }
  return host::Capdump(arguments);
}
