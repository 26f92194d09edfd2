#include "host/streams/byte_store.h"

#include <algorithm>
#include <cstring>

namespace host {

ByteStore::Offset ByteStore::Append(std::span<const std::uint8_t> bytes) {
  const Offset start = size_;
  while (!bytes.empty()) {
    const auto within = static_cast<std::size_t>(size_ % kBlockBytes);
    if (within == 0) {
      if (blocks_.size() - moved_out_ >= blocks_in_memory_) MoveOldestOut();
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
    std::memcpy(to, BytesOf(block) + within, count);
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
    if (std::memcmp(BytesOf(block) + within, bytes.data(), count) != 0) {
      return false;
    }
    bytes = bytes.subspan(count);
    offset += count;
  }
  return true;
}

void ByteStore::MoveOldestOut() {
  if (!file_) file_.emplace();
  Block& oldest = blocks_[moved_out_];
  file_->Write(Offset{moved_out_} * kBlockBytes, {oldest.get(), kBlockBytes});
  oldest.reset();
  ++moved_out_;
}

const std::uint8_t* ByteStore::BytesOf(std::size_t index) const {
  return index < moved_out_ ? ReadBack(index) : blocks_[index].get();
}

const std::uint8_t* ByteStore::ReadBack(std::size_t index) const {
  ReadBlock* place = &read_blocks_.front();
  for (ReadBlock& block : read_blocks_) {
    if (block.bytes && block.index == index) {
      block.used = ++uses_;
      return block.bytes.get();
    }
    if (block.used < place->used) place = &block;
  }
  if (!place->bytes) {
    place->bytes = std::make_unique_for_overwrite<std::uint8_t[]>(kBlockBytes);
  }
  place->used = 0;  // nobody's, should the file fail
  place->index = blocks_.size();
  file_->Read(Offset{index} * kBlockBytes, {place->bytes.get(), kBlockBytes});
  place->index = index;
  place->used = ++uses_;
  return place->bytes.get();
}

}  // namespace host
