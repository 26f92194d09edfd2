#ifndef DIMSE_VALUE_FORMAT_H_
#define DIMSE_VALUE_FORMAT_H_

#include <cstdint>
#include <string>

#include "tracking/byte_array_view.h"

namespace dicom {

// The only forms in which decoders show numbers: hexadecimal digits, as many as
// the field has, and decimals, as few as will do.
// Deliberate: "%d" of a 32-bit value is signed (80000000h, -2147483648).
std::string ByteDecimal(std::uint8_t value);         // 7
std::string ByteHex(std::uint8_t value);             // 07h
std::string WordHex(std::uint16_t value);            // 0030h
std::string WordHexAndDecimal(std::uint16_t value);  // 0002h, 2
std::string LongHex(std::uint32_t value);            // 00000004h
std::string LongHexAndDecimal(std::uint32_t value);  // 00000004h, 4
std::string HexAndDecimal(std::uint32_t value);      // 1Ah, 26
std::string Unsigned(std::uint32_t value);           // 4294967295

// A UID's characters without one trailing zero byte, if there is one; what is
// empty stays empty.
std::string UidText(std::string characters);

// The text behind "Value Field: " for a value of `length` bytes at `position`,
// by its VR code (a VrCode, or any other number). Throws OutOfRange when the
// bytes that the VR reads reach past the end.
std::string ValueText(const ByteArrayView& bytes, std::uint32_t position,
                      std::uint32_t length, std::uint32_t order,
                      std::int32_t vr_code);

}  // namespace dicom

#endif  // DIMSE_VALUE_FORMAT_H_
