#ifndef HOST_NOTE_TEXT_H_
#define HOST_NOTE_TEXT_H_

#include <cstdint>
#include <string>

namespace host {

std::string NumberText(std::uint64_t number);  // "16,390"
std::string BytesText(std::uint64_t count);    // "1 byte", "16,390 bytes"
std::string FilledText(std::uint64_t lost);
// "a P-DATA-TF PDU", "an A-ABORT PDU"; other types are "a PDU of type 9".
std::string PduTypeText(std::uint8_t type);
// Adds a part to a note, behind a semicolon if there is one already.
void AppendNote(const std::string& part, std::string* note);

}  // namespace host

#endif  // HOST_NOTE_TEXT_H_
