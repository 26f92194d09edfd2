#ifndef TRACKING_SATURATING_SUM_H_
#define TRACKING_SATURATING_SUM_H_

#include <cstdint>
#include <limits>

namespace dicom {

// a + b, or the largest value where that would wrap. For positions and line
// lengths that come from captured bytes: past the end stays past the end.
constexpr std::uint32_t SaturatingSum(std::uint32_t a, std::uint32_t b) {
  constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();
  return b > kMax - a ? kMax : a + b;
}

}  // namespace dicom

#endif  // TRACKING_SATURATING_SUM_H_
