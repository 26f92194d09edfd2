#ifndef HOST_DATASET_BYTE_WINDOW_H_
#define HOST_DATASET_BYTE_WINDOW_H_

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "host/dataset/byte_source.h"

namespace host {

// The part of a source that a reader is at. Reading forwards asks the source
// for each byte once, however small the steps.
class ByteWindow {
 public:
  static constexpr std::size_t kBytes = std::size_t{1} << 14;

  // `source` has to outlive it.
  explicit ByteWindow(ByteSource& source) : source_(source) {}
  // Of the same source, but without bytes: a copy costs little.
  ByteWindow(const ByteWindow& other) : source_(other.source_) {}

  // The bytes at `offset`, at most kBytes, fewer at the end of the source only.
  // They stay until the next call.
  std::span<const std::uint8_t> At(std::uint64_t offset, std::size_t count) {
    if (offset < begin_ || offset - begin_ > filled_ ||
        filled_ - (offset - begin_) < count) {
      bytes_.resize(kBytes);
      begin_ = offset;
      filled_ = source_.Read(offset, bytes_);
    }
    const std::span<const std::uint8_t> from(
        bytes_.data() + static_cast<std::size_t>(offset - begin_),
        static_cast<std::size_t>(filled_ - (offset - begin_)));
    return from.first(std::min(count, from.size()));
  }

 private:
  ByteSource& source_;
  std::vector<std::uint8_t> bytes_;  // kBytes, or none before the first use
  std::uint64_t begin_ = 0;          // of the window in the source
  std::uint64_t filled_ = 0;         // bytes of it that hold something
};

}  // namespace host

#endif  // HOST_DATASET_BYTE_WINDOW_H_
