#ifndef HOST_ROWS_NEGOTIATION_TEXT_H_
#define HOST_ROWS_NEGOTIATION_TEXT_H_

#include <cstdint>
#include <string>

#include "host/dialogue/dialogue.h"
#include "host/dialogue/negotiation.h"

namespace host {

// The negotiation of an association as text, as both programs show it: UTF-8,
// in a font whose characters are equally wide.

// What became of the association: "2 of 2 contexts accepted", "rejected, ..."
// and why, "no answer". `index` of the dialogue.
std::string AssociationOutcome(const Dialogue& dialogue, std::uint32_t index);

// What a side says of itself: "DCMTK 3.6.7, takes PDUs of 16,384 bytes".
std::string AssociationSideText(const AssociationSide& side);

// Both AE titles and the outcome, what each side says of itself, the contexts
// as a table, what is odd about them; lines with LF, all but the first indented
// by four blanks. `all`: of the capture, what would have matched.
std::string AssociationText(const Dialogue& dialogue, std::uint32_t index,
                            const Acceptances& all);

}  // namespace host

#endif  // HOST_ROWS_NEGOTIATION_TEXT_H_
