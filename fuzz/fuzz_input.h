#ifndef FUZZ_FUZZ_INPUT_H_
#define FUZZ_FUZZ_INPUT_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "tests/bytes.h"

namespace dicom::fuzz {

// Takes a fuzzer's input apart from its front, little-endian. Behind the end
// there are zeros, so every input says something.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* bytes, std::size_t size)
      : next_(bytes), left_(size) {}

  bool AtEnd() const { return left_ == 0; }
  std::uint8_t Byte() {
    if (left_ == 0) return 0;
    --left_;
    return *next_++;
  }
  std::uint16_t Word() {
    const std::uint8_t low = Byte();
    return static_cast<std::uint16_t>(low | Byte() << 8);
  }
  // As many bytes as there are, at most `count`.
  testing::Bytes Take(std::size_t count) {
    count = std::min(count, left_);
    const std::uint8_t* const first = next_;
    next_ += count;
    left_ -= count;
    return testing::Bytes(first, next_);
  }
  testing::Bytes Rest() { return Take(left_); }

 private:
  const std::uint8_t* next_;
  std::size_t left_;
};

// Ends the process, which is how a fuzz target reports a finding.
inline void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}

}  // namespace dicom::fuzz

#endif  // FUZZ_FUZZ_INPUT_H_
