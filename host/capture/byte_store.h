#ifndef HOST_CAPTURE_BYTE_STORE_H_
#define HOST_CAPTURE_BYTE_STORE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "host/capture/file_bytes.h"

namespace host {

// The bytes of a capture for as long as its connections are shown. Those of its
// files stay there and are read when they are asked for; kept here are only
// such as no file holds in one piece. All operations throw Failure when bytes
// cannot be read or kept.
class ByteStore {
 public:
  // Where a run of bytes begins. Behind it come those that follow it in its
  // file, or in what was appended at once.
  using Offset = std::uint64_t;

  // Answers the offset of the file's first byte. The file is the caller's to
  // read in order.
  Offset AddFile(std::shared_ptr<FileBytes> file);
  // Keeps bytes that are not in a file, in memory and, when they become many,
  // in a temporary file. Answers where they are from now on.
  Offset Append(std::span<const std::uint8_t> bytes);

  // Both ask for bytes that are there: Copy() writes them to `to`, Equal()
  // answers whether they are the same as `bytes`.
  void Copy(Offset offset, std::span<std::uint8_t> to) const;
  bool Equal(Offset offset, std::span<const std::uint8_t> bytes) const;

 private:
  // Valid until the next call.
  std::span<const std::uint8_t> At(Offset offset, std::size_t length) const;
  // Makes the file the one that was asked last.
  void KeepAwake(std::size_t file) const;
  // Writes the appended bytes that are in memory to the temporary file.
  void MoveOut();

  std::vector<std::shared_ptr<FileBytes>> files_;
  // Files that may hold memory, counted from 1, the one asked last first.
  mutable std::array<std::size_t, 16> awake_{};
  std::vector<std::uint8_t> appended_;  // the newest
  std::uint64_t moved_out_ = 0;         // bytes that were appended before them
  SystemFile* temporary_ = nullptr;     // moved_'s; null as long as it is
  std::unique_ptr<FileBytes> moved_;
};

}  // namespace host

#endif  // HOST_CAPTURE_BYTE_STORE_H_
