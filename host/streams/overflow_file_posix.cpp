#define _FILE_OFFSET_BITS 64

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "host/streams/overflow_file.h"
#include "host/text/failure.h"

namespace host {
namespace {

[[noreturn]] void Fail() {
  throw Failure(
      std::string("The capture does not fit into memory, and the "
                  "folder for temporary files cannot hold the rest (") +
      std::strerror(errno) + "): make room there or open less of it.");
}

}  // namespace

OverflowFile::OverflowFile() {
  std::string name = std::filesystem::temp_directory_path() / "captureXXXXXX";
  file_ = ::mkstemp(name.data());
  if (file_ < 0) Fail();
  ::unlink(name.c_str());
}

OverflowFile::~OverflowFile() { ::close(static_cast<int>(file_)); }

void OverflowFile::Write(std::uint64_t offset,
                         std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::pwrite(static_cast<int>(file_), bytes.data(),
                                   bytes.size(), static_cast<off_t>(offset));
    if (count <= 0) Fail();
    offset += static_cast<std::size_t>(count);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

void OverflowFile::Read(std::uint64_t offset,
                        std::span<std::uint8_t> bytes) const {
  while (!bytes.empty()) {
    const ssize_t count = ::pread(static_cast<int>(file_), bytes.data(),
                                  bytes.size(), static_cast<off_t>(offset));
    if (count <= 0) Fail();
    offset += static_cast<std::size_t>(count);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

}  // namespace host
