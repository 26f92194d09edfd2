#ifndef HOST_BYTE_STORE_H_
#define HOST_BYTE_STORE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace host {

// Bytes of a capture, kept for as long as its connections are shown. Grows at
// the end in blocks of fixed size, so that nothing is ever moved and the store
// costs little more than what it holds.
class ByteStore {
 public:
  // Where a run of bytes begins, counted from the first byte ever appended.
  using Offset = std::uint64_t;

  Offset Append(std::span<const std::uint8_t> bytes);
  // [offset, offset + length) was appended before.
  void Copy(Offset offset, std::size_t length, std::uint8_t* to) const;
  bool Equal(Offset offset, std::span<const std::uint8_t> bytes) const;
  Offset size() const { return size_; }

 private:
  static constexpr std::size_t kBlockBytes = std::size_t{1} << 20;

  std::vector<std::unique_ptr<std::uint8_t[]>> blocks_;
  Offset size_ = 0;
};

}  // namespace host

#endif  // HOST_BYTE_STORE_H_
