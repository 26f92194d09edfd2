#ifndef TRACKING_NUMBER_TEXT_H_
#define TRACKING_NUMBER_TEXT_H_

#include <cstdint>
#include <string>

namespace dicom {

// Numbers as the texts show them, appended to `text`. A decode of many elements
// spends much of its time here, so there is no printf behind them.

// Upper-case hexadecimal digits, at least `min_digits` of them (at most 8).
void AppendHex(std::string& text, std::uint32_t value, int min_digits);

// "%u".
void AppendUnsigned(std::string& text, std::uint32_t value);

// "%d".
void AppendSigned(std::string& text, std::int32_t value);

// A tag as the dictionary and all lines write it: (gggg,eeee), upper case.
std::string TagText(std::uint16_t group, std::uint16_t element);

}  // namespace dicom

#endif  // TRACKING_NUMBER_TEXT_H_
