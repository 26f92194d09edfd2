#ifndef TRACKING_BYTE_ARRAY_VIEW_H_
#define TRACKING_BYTE_ARRAY_VIEW_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "errors/errors.h"

namespace dicom {

// Byte order codes as every reader takes them: 1 is big-endian, any other value
// little-endian.
constexpr std::uint32_t kLittleEndian = 0;
constexpr std::uint32_t kBigEndian = 1;

// A bounded, read-only view of bytes that someone else owns; valid only while
// they stay where they are. Offsets and lengths are in bytes. A read whose last
// byte lies at or beyond the length throws OutOfRange.
class ByteArrayView {
 public:
  ByteArrayView() = default;
  ByteArrayView(const std::uint8_t* bytes, std::uint32_t length)
      : bytes_(bytes), length_(length) {}
  // Of the vector's bytes, the first 4 GB of them.
  explicit ByteArrayView(const std::vector<std::uint8_t>& bytes);

  const std::uint8_t* Bytes() const { return bytes_; }
  std::uint32_t Length() const { return length_; }

  std::uint8_t ByteAt(std::uint32_t offset) const {
    RequireBytes(offset, 1);
    return bytes_[offset];
  }
  std::uint16_t WordAt(std::uint32_t offset, std::uint32_t order) const {
    RequireBytes(offset, 2);
    const std::uint8_t* p = bytes_ + offset;
    return static_cast<std::uint16_t>(order == kBigEndian ? p[0] << 8 | p[1]
                                                          : p[1] << 8 | p[0]);
  }
  std::uint32_t LongAt(std::uint32_t offset, std::uint32_t order) const {
    RequireBytes(offset, 4);
    const std::uint8_t* p = bytes_ + offset;
    const std::uint32_t b0 = p[0], b1 = p[1], b2 = p[2], b3 = p[3];
    return order == kBigEndian ? b0 << 24 | b1 << 16 | b2 << 8 | b3
                               : b3 << 24 | b2 << 16 | b1 << 8 | b0;
  }

  // `count` bytes at `offset`, zero bytes included; valid like the view itself.
  std::string_view CharactersAt(std::uint32_t offset,
                                std::uint32_t count) const;

  // Throws OutOfRange unless `count` bytes lie at `offset`. Subtracts, so that
  // no sum can wrap.
  void RequireBytes(std::uint32_t offset, std::uint32_t count) const {
    if (count > length_ || offset > length_ - count) throw OutOfRange();
  }

  // The bytes from `offset` on, at most `count` of them; empty when `offset` is
  // past the end.
  ByteArrayView Part(std::uint32_t offset, std::uint32_t count) const;

 private:
  const std::uint8_t* bytes_ = nullptr;
  std::uint32_t length_ = 0;
};

}  // namespace dicom

#endif  // TRACKING_BYTE_ARRAY_VIEW_H_
