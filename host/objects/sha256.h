#ifndef HOST_OBJECTS_SHA256_H_
#define HOST_OBJECTS_SHA256_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace host {

// The SHA-256 of bytes that come piece by piece, FIPS 180-4. Uses the
// processor's own instructions where it has them.
class Sha256 {
 public:
  void Add(std::span<const std::uint8_t> bytes);
  // 64 lower case hexadecimal digits. Nothing may be added behind it.
  std::string Finish();

 private:
  static constexpr std::size_t kBlockBytes = 64;

  std::array<std::uint32_t, 8> state_{0x6A09E667, 0xBB67AE85, 0x3C6EF372,
                                      0xA54FF53A, 0x510E527F, 0x9B05688C,
                                      0x1F83D9AB, 0x5BE0CD19};
  std::array<std::uint8_t, kBlockBytes> block_{};  // not full yet
  std::uint64_t count_ = 0;                        // bytes so far
};

}  // namespace host

#endif  // HOST_OBJECTS_SHA256_H_
