#include "tracking/byte_array_view.h"

#include <algorithm>
#include <limits>

namespace dicom {

ByteArrayView::ByteArrayView(const std::vector<std::uint8_t>& bytes)
    : ByteArrayView(
          bytes.data(),
          static_cast<std::uint32_t>(std::min<std::uint64_t>(
              bytes.size(), std::numeric_limits<std::uint32_t>::max()))) {}

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
