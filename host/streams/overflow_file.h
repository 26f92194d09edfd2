#ifndef HOST_STREAMS_OVERFLOW_FILE_H_
#define HOST_STREAMS_OVERFLOW_FILE_H_

#include <cstddef>
#include <cstdint>
#include <span>

namespace host {

// A temporary file for what memory has no room for. The system removes it when
// it is closed, also when the program ends by a fault.
class OverflowFile {
 public:
  // In the folder for temporary files. Throws Failure when it cannot be made,
  // as Write() and Read() do when it cannot be written or read.
  OverflowFile();
  ~OverflowFile();
  OverflowFile(const OverflowFile&) = delete;
  OverflowFile& operator=(const OverflowFile&) = delete;

  // `offset` is in bytes from the beginning; the file grows as needed.
  void Write(std::uint64_t offset, std::span<const std::uint8_t> bytes);
  // All of `bytes` was written before.
  void Read(std::uint64_t offset, std::span<std::uint8_t> bytes) const;

 private:
  std::intptr_t file_;  // the platform's handle
};

}  // namespace host

#endif  // HOST_STREAMS_OVERFLOW_FILE_H_
