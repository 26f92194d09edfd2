#ifndef HOST_CAPTURE_WIRE_BYTES_H_
#define HOST_CAPTURE_WIRE_BYTES_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace host {

// The one way in which the host reads and writes numbers of the wire and of
// capture files. Both classes hold a view of bytes that someone else owns and
// that have to stay where they are.

// Reads from the front on. A read that does not fit takes nothing, answers zero
// or no bytes, and every read behind it does the same: a header is read field
// by field and ok() asked once.
class WireReader {
 public:
  // `order` is that of the numbers: big-endian in network headers and PDUs,
  // little-endian in command sets.
  explicit WireReader(std::span<const std::uint8_t> bytes,
                      std::endian order = std::endian::big)
      : rest_(bytes), order_(order) {}

  std::uint8_t Byte() { return static_cast<std::uint8_t>(Number(1)); }
  std::uint16_t Word16() { return static_cast<std::uint16_t>(Number(2)); }
  std::uint32_t Word32() { return Number(4); }
  // Exactly `count` bytes, or none.
  std::span<const std::uint8_t> Bytes(std::size_t count);
  void Skip(std::size_t count) { Bytes(count); }

  // Whether all that was asked for was there.
  bool ok() const { return ok_; }
  // What was not read yet.
  std::span<const std::uint8_t> rest() const { return rest_; }

 private:
  std::uint32_t Number(std::size_t width);

  std::span<const std::uint8_t> rest_;
  std::endian order_;
  bool ok_ = true;
};

// Writes big-endian numbers from the front on; one that does not fit is not
// written.
class WireWriter {
 public:
  explicit WireWriter(std::span<std::uint8_t> room) : rest_(room) {}

  void Byte(std::uint8_t value) { Number(value, 1); }
  void Word16(std::uint16_t value) { Number(value, 2); }
  void Word32(std::uint32_t value) { Number(value, 4); }

 private:
  void Number(std::uint32_t value, std::size_t width);

  std::span<std::uint8_t> rest_;
};

}  // namespace host

#endif  // HOST_CAPTURE_WIRE_BYTES_H_
