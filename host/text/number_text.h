#ifndef HOST_TEXT_NUMBER_TEXT_H_
#define HOST_TEXT_NUMBER_TEXT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace host {

// The one spelling of counts and sizes in everything that people read. The
// number of a row, a connection or a frame is a name, which people type in
// again: it is spelt without commas.

std::string NumberText(std::uint64_t number);  // "16,390"
// A count with the noun for one and for any other number: "1 packet", "16,390
// packets".
std::string CountText(std::uint64_t count, std::string_view one,
                      std::string_view many);
// The index from 0 of what people count from 1, whose number they have typed,
// with or without commas; empty for all that is no such number.
std::optional<std::uint32_t> IndexFromText(std::string_view number);

std::string BytesText(std::uint64_t count);  // "1 byte", "16,390 bytes"
// Four digits, as DICOM writes its codes: "A700h", "0000h".
std::string HexText(std::uint16_t number);

}  // namespace host

#endif  // HOST_TEXT_NUMBER_TEXT_H_
