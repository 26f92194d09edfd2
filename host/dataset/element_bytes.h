#ifndef HOST_DATASET_ELEMENT_BYTES_H_
#define HOST_DATASET_ELEMENT_BYTES_H_

#include <cstdint>
#include <span>

#include "host/dataset/tag.h"
#include "host/dataset/transfer_syntax.h"
#include "host/dataset/vr.h"

namespace host {

// The headers of elements as they stand in a data set, DICOM PS3.5 section 7.1.
// None of these looks whether the bytes are there: the caller has.

constexpr std::uint32_t kUndefinedLength = 0xFFFF'FFFF;
constexpr std::size_t kShortHeaderBytes = 8;
constexpr std::size_t kLongHeaderBytes = 12;  // explicit VR, 32 bits of length

// The first `width` bytes, at most 8, as a number; there are so many.
inline std::uint64_t NumberAt(std::span<const std::uint8_t> bytes,
                              std::size_t width, ByteOrder order) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < width; ++i) {
    number = number << 8 | bytes[order == ByteOrder::kBig ? i : width - 1 - i];
  }
  return number;
}

// The tag at the beginning of `bytes`; four are there.
inline Tag TagAt(std::span<const std::uint8_t> bytes, ByteOrder order) {
  return {static_cast<std::uint16_t>(NumberAt(bytes, 2, order)),
          static_cast<std::uint16_t>(NumberAt(bytes.subspan(2), 2, order))};
}

// A length of 32 bits; four bytes are there.
inline std::uint32_t LengthAt(std::span<const std::uint8_t> bytes,
                              ByteOrder order) {
  return static_cast<std::uint32_t>(NumberAt(bytes, 4, order));
}

// The letters of an explicit VR, behind the tag.
inline Vr VrAt(std::span<const std::uint8_t> header) {
  return Vr{static_cast<std::uint16_t>(
      NumberAt(header.subspan(4), 2, ByteOrder::kBig))};
}

// False as well when fewer than four bytes are there.
inline bool StartsWithTag(std::span<const std::uint8_t> bytes, Tag tag,
                          ByteOrder order) {
  return bytes.size() >= 4 && TagAt(bytes, order) == tag;
}

// Whether a value of `length` bytes that begins with these 8 begins with an
// item that has room in it.
inline bool StartsWithItem(std::span<const std::uint8_t> bytes,
                           std::uint64_t length, ByteOrder order) {
  if (length < kShortHeaderBytes || bytes.size() < kShortHeaderBytes) {
    return false;
  }
  const std::uint32_t item = LengthAt(bytes.subspan(4), order);
  return TagAt(bytes, order) == kItemTag &&
         (item == kUndefinedLength || item <= length - kShortHeaderBytes);
}

}  // namespace host

#endif  // HOST_DATASET_ELEMENT_BYTES_H_
