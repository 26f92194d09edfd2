#include "tracking/byte_array_view.h"

#include <algorithm>

#include "errors/errors.h"

namespace dicom {

void ByteArrayView::RequireBytes(std::uint32_t offset,
                                 std::uint32_t count) const {
  if (count > length_ || offset > length_ - count) throw OutOfRange();
}

std::uint8_t ByteArrayView::ByteAt(std::uint32_t offset) const {
  RequireBytes(offset, 1);
  return bytes_[offset];
}

std::uint16_t ByteArrayView::WordAt(std::uint32_t offset,
                                    std::uint32_t order) const {
  RequireBytes(offset, 2);
  const std::uint8_t* p = bytes_ + offset;
  return static_cast<std::uint16_t>(order == kBigEndian ? p[0] << 8 | p[1]
                                                        : p[1] << 8 | p[0]);
}

std::uint32_t ByteArrayView::LongAt(std::uint32_t offset,
                                    std::uint32_t order) const {
  RequireBytes(offset, 4);
  const std::uint8_t* p = bytes_ + offset;
  const std::uint32_t b0 = p[0], b1 = p[1], b2 = p[2], b3 = p[3];
  return order == kBigEndian ? b0 << 24 | b1 << 16 | b2 << 8 | b3
                             : b3 << 24 | b2 << 16 | b1 << 8 | b0;
}

std::string_view ByteArrayView::CharactersAt(std::uint32_t offset,
                                             std::uint32_t count) const {
  RequireBytes(offset, count);
  if (count == 0) return {};
  return {reinterpret_cast<const char*>(bytes_) + offset, count};
}

ByteArrayView ByteArrayView::Part(std::uint32_t offset,
                                  std::uint32_t count) const {
  if (offset >= length_) return {};
  return {bytes_ + offset, std::min(count, length_ - offset)};
}

}  // namespace dicom
