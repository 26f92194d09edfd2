#ifndef HOST_CAPTURE_FILE_BYTES_H_
#define HOST_CAPTURE_FILE_BYTES_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/capture/byte_inflow.h"
#include "host/capture/system_file.h"

namespace host {

// What the temporary files of one capture may hold together, in bytes.
struct TemporaryRoom {
  std::uint64_t most = 0;
  std::uint64_t used = 0;
};

// The bytes of a capture file, which stay in the file: memory holds a few
// windows of it. One reader goes through the file in order; others ask for what
// it has seen, most of it in order as well and near to each other. Read and not
// mapped: a file that shrinks meanwhile is a read that answers less, and no
// fault. Offsets are in bytes from the file's beginning.
class FileBytes {
 public:
  explicit FileBytes(std::unique_ptr<SystemFile> file);
  // What `inflow` brings, kept in a temporary file as long as there is room.
  // The reader in order waits for it as far as it has to.
  FileBytes(std::unique_ptr<ByteInflow> inflow,
            std::shared_ptr<TemporaryRoom> room);
  ~FileBytes();

  // For the reader in order: the bytes from `offset` on, at least `least` of
  // them unless the file ends before. Valid until its next call. Asks the
  // system when it has to, so that bytes which a growing file got are seen.
  std::span<const std::uint8_t> Ahead(std::uint64_t offset, std::size_t least) {
    const std::uint64_t skip = offset - ahead_.begin;  // huge when before it
    if (skip > ahead_.size || ahead_.size - skip < least) {
      return ReadAhead(offset, least);
    }
    return ahead_.bytes().subspan(static_cast<std::size_t>(skip));
  }
  // Exactly the bytes [offset, offset + length), which were there before. Valid
  // until the next call. Throws Failure when they cannot be read any more.
  std::span<const std::uint8_t> Again(std::uint64_t offset, std::size_t length);
  // Whether the file, once that has flowed in, reaches to `end` by now.
  bool Reaches(std::uint64_t end);
  // Free what is in memory: all for a file that has been read in order, or
  // what was asked for again.
  void Rest();
  void RestAgain();
  // Why the bytes end before what they come from, as a clause; else empty.
  const std::string& damage() const { return damage_; }
  // That there is no room for all of them and what to do, as the end of a
  // sentence with its full stop: "since ...: ... first, or ...."; else empty.
  const std::string& limit() const { return limit_; }
  // As long as the file was when it was looked at last.
  std::uint64_t known_size() const { return known_size_; }

 private:
  // Bytes that are in memory.
  struct Window {
    std::uint64_t begin = 0;
    std::size_t size = 0;
    std::vector<std::uint8_t> room;  // at least as large
    std::uint64_t used = 0;          // by which use, counted from 1

    std::uint64_t end() const { return begin + size; }
    std::span<const std::uint8_t> bytes() const {
      return std::span(room).first(size);
    }
    bool Holds(std::uint64_t offset, std::size_t length) const {
      return offset >= begin && offset + length <= end();
    }
  };

  // Keeps what flows in until there are `end` bytes or nothing more comes.
  void Pull(std::uint64_t end);
  std::span<const std::uint8_t> ReadAhead(std::uint64_t offset,
                                          std::size_t least);
  // Makes the window that was not used the longest time hold the bytes.
  Window& ReadAgain(std::uint64_t offset, std::size_t length);
  void Fill(Window& window, std::uint64_t offset, std::size_t length);

  std::unique_ptr<SystemFile> file_;
  std::uint64_t known_size_;
  std::unique_ptr<ByteInflow> inflow_;   // null for a file, and at its end
  std::shared_ptr<TemporaryRoom> room_;  // null for a file
  std::string damage_;                   // of the inflow
  std::string limit_;
  Window ahead_;
  std::array<Window, 4> again_;
  std::uint64_t uses_ = 0;
};

}  // namespace host

#endif  // HOST_CAPTURE_FILE_BYTES_H_
