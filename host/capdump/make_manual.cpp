// Writes capdump's manual page and its completion for bash into two files.
//
//   make_manual capdump.1 capdump.bash

#include <fstream>

#include "host/capdump/manual.h"

int main(int count, char** names) {
  if (count != 3) return 2;
  std::ofstream page(names[1], std::ios::binary);
  std::ofstream completion(names[2], std::ios::binary);
  page << host::ManualPage() << std::flush;
  completion << host::BashCompletion() << std::flush;
  return page && completion ? 0 : 1;
}
