#ifndef HOST_STREAMS_BYTE_STORE_H_
#define HOST_STREAMS_BYTE_STORE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "host/streams/overflow_file.h"

namespace host {

// Bytes of a capture, kept for as long as its connections are shown. Grows at
// the end in blocks of fixed size, so that nothing is ever moved and the store
// costs little more than what it holds. The oldest blocks go to a temporary
// file when there are too many for the address space of a 32-bit process; all
// operations throw Failure when that fails.
class ByteStore {
 public:
  // Where a run of bytes begins, counted from the first byte ever appended.
  using Offset = std::uint64_t;

  static constexpr std::size_t kBlockBytes = std::size_t{1} << 20;
  static constexpr std::size_t kBlocksInMemory = 512;

  // Keeps at least the newest block in memory.
  explicit ByteStore(std::size_t blocks_in_memory = kBlocksInMemory)
      : blocks_in_memory_(blocks_in_memory) {}

  // Answers where they are from now on.
  Offset Append(std::span<const std::uint8_t> bytes);
  // Both ask for bytes that were appended before: Copy() writes them to `to`,
  // Equal() answers whether they are the same as `bytes`.
  void Copy(Offset offset, std::size_t length, std::uint8_t* to) const;
  bool Equal(Offset offset, std::span<const std::uint8_t> bytes) const;

 private:
  using Block = std::unique_ptr<std::uint8_t[]>;

  // A block that was read back. Readers go through a capture in order, but in
  // both directions of a connection.
  struct ReadBlock {
    std::size_t index = 0;
    std::uint64_t used = 0;  // by which use, counted from 1
    Block bytes;
  };

  // Writes the oldest block in memory to the file and frees it.
  void MoveOldestOut();
  // A block's bytes, wherever they are; valid until the next call.
  const std::uint8_t* BytesOf(std::size_t index) const;
  // The same for a block in the file: reads it in place of the one that was not
  // asked for the longest time, unless it is still there.
  const std::uint8_t* ReadBack(std::size_t index) const;

  std::size_t blocks_in_memory_;
  std::vector<Block> blocks_;  // null: in the file
  std::size_t moved_out_ = 0;  // as many of the first blocks are in the file
  std::optional<OverflowFile> file_;
  mutable std::array<ReadBlock, 8> read_blocks_;
  mutable std::uint64_t uses_ = 0;
  Offset size_ = 0;
};

}  // namespace host

#endif  // HOST_STREAMS_BYTE_STORE_H_
