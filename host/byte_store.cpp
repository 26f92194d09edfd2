#include "host/byte_store.h"

#include <algorithm>
#include <cstring>

namespace host {

ByteStore::Offset ByteStore::Append(std::span<const std::uint8_t> bytes) {
  const Offset start = size_;
  while (!bytes.empty()) {
    const auto within = static_cast<std::size_t>(size_ % kBlockBytes);
    if (within == 0) {
      blocks_.push_back(
          std::make_unique_for_overwrite<std::uint8_t[]>(kBlockBytes));
    }
    const std::size_t count = std::min(bytes.size(), kBlockBytes - within);
    std::memcpy(blocks_.back().get() + within, bytes.data(), count);
    bytes = bytes.subspan(count);
    size_ += count;
  }
  return start;
}

void ByteStore::Copy(Offset offset, std::size_t length,
                     std::uint8_t* to) const {
  while (length != 0) {
    const auto within = static_cast<std::size_t>(offset % kBlockBytes);
    const std::size_t count = std::min(length, kBlockBytes - within);
    const auto block = static_cast<std::size_t>(offset / kBlockBytes);
    std::memcpy(to, blocks_[block].get() + within, count);
    to += count;
    offset += count;
    length -= count;
  }
}

bool ByteStore::Equal(Offset offset,
                      std::span<const std::uint8_t> bytes) const {
  while (!bytes.empty()) {
    const auto within = static_cast<std::size_t>(offset % kBlockBytes);
    const std::size_t count = std::min(bytes.size(), kBlockBytes - within);
    const auto block = static_cast<std::size_t>(offset / kBlockBytes);
    if (std::memcmp(blocks_[block].get() + within, bytes.data(), count) != 0) {
      return false;
    }
    bytes = bytes.subspan(count);
    offset += count;
  }
  return true;
}

}  // namespace host
