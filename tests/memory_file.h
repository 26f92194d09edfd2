#ifndef TESTS_MEMORY_FILE_H_
#define TESTS_MEMORY_FILE_H_

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "tests/bytes.h"

namespace dicom::testing {

// A file without a name on any disk. For this machine's own programs only.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(::memfd_create("capture", 0)) {}
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(descriptor_); }

  void Append(const Bytes& bytes) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written != static_cast<ssize_t>(bytes.size())) std::abort();
  }
  std::string Path() const {
    return "/proc/self/fd/" + std::to_string(descriptor_);
  }

 private:
  int descriptor_;
};

}  // namespace dicom::testing

#endif  // TESTS_MEMORY_FILE_H_
