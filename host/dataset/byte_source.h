#ifndef HOST_DATASET_BYTE_SOURCE_H_
#define HOST_DATASET_BYTE_SOURCE_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace host {

// Where the bytes of a data set come from. Positions count from its first byte;
// whoever makes the source knows where in the capture they were.
class ByteSource {
 public:
  virtual ~ByteSource() = default;

  virtual std::uint64_t size() const = 0;
  // Copies the bytes from `offset` on into `to` and answers how many: all of
  // `to`, fewer at the end of the source only. Every offset is allowed.
  virtual std::size_t Read(std::uint64_t offset,
                           std::span<std::uint8_t> to) = 0;
};

// Bytes in memory, which stay the caller's.
class MemorySource final : public ByteSource {
 public:
  explicit MemorySource(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::uint64_t size() const override { return bytes_.size(); }
  std::size_t Read(std::uint64_t offset, std::span<std::uint8_t> to) override {
    if (offset >= bytes_.size()) return 0;
    const auto from = bytes_.subspan(static_cast<std::size_t>(offset));
    const std::size_t count = std::min(from.size(), to.size());
    std::copy_n(from.begin(), count, to.begin());
    return count;
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

}  // namespace host

#endif  // HOST_DATASET_BYTE_SOURCE_H_
