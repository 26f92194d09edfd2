#ifndef HOST_STREAMS_NOTE_TEXT_H_
#define HOST_STREAMS_NOTE_TEXT_H_

#include <cstdint>
#include <string>

namespace host {

// "1 lost byte was filled with zero", "120 lost bytes were filled with zero".
std::string FilledText(std::uint64_t lost);
// "a P-DATA-TF PDU", "an A-ABORT PDU"; other types are "a PDU of type 9".
std::string PduTypeText(std::uint8_t type);
// Adds a part to a note, behind a semicolon if there is one already.
void AppendNote(const std::string& part, std::string* note);

}  // namespace host

#endif  // HOST_STREAMS_NOTE_TEXT_H_
