#include "tracking/byte_array_view.h"

#include <algorithm>

namespace dicom {

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
