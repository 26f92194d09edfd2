#ifndef DIMSE_VALUE_FORMAT_H_
#define DIMSE_VALUE_FORMAT_H_

#include <cstdint>
#include <string>

#include "tracking/byte_array_view.h"

namespace dicom {

// The only forms in which decoders show numbers. Those with `bytes` read the
// field at `position` (throwing OutOfRange past the end), those with `order` in
// that byte order; the others show the value that they are given.
// Deliberate: "%d" of a 32-bit value is signed (80000000h, -2147483648).

std::string HexAndDecimal(std::uint32_t value);  // 1Ah, 26
std::string ByteDecimal(const ByteArrayView& bytes,
                        std::uint32_t position);                          // 7
std::string ByteHex(const ByteArrayView& bytes, std::uint32_t position);  // 07h
std::string WordHex(const ByteArrayView& bytes, std::uint32_t position,
                    std::uint32_t order);  // 0030h
std::string WordHexAndDecimal(const ByteArrayView& bytes,
                              std::uint32_t position,
                              std::uint32_t order);  // 0002h, 2
std::string LongHex(const ByteArrayView& bytes, std::uint32_t position,
                    std::uint32_t order);  // 00000004h
std::string LongHexAndDecimal(const ByteArrayView& bytes,
                              std::uint32_t position,
                              std::uint32_t order);  // 00000004h, 4
std::string Unsigned(std::uint32_t value);           // "%u"

// Group and element at `position` as (gggg,eeee).
std::string TagText(const ByteArrayView& bytes, std::uint32_t position,
                    std::uint32_t order);

// The `length` bytes at `position` without one trailing zero byte, if there is
// one; empty for length 0.
std::string UidText(const ByteArrayView& bytes, std::uint32_t position,
                    std::uint32_t length);

// The text behind "Value Field: " for a value of `length` bytes at `position`,
// by VR code. Throws OutOfRange when the bytes that the VR reads reach past the
// end.
std::string ValueText(const ByteArrayView& bytes, std::uint32_t position,
                      std::uint32_t length, std::uint32_t order,
                      std::int32_t vrCode);

}  // namespace dicom

#endif  // DIMSE_VALUE_FORMAT_H_
