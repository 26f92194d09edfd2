#ifndef HOST_DIALOGUE_IRREGULARITY_TEXT_H_
#define HOST_DIALOGUE_IRREGULARITY_TEXT_H_

#include <string>

#include "host/dialogue/irregularity.h"

namespace host {

// What a side did, without its name and a full stop: "Context 3 was answered
// twice".
std::string IrregularityText(const Irregularity& irregularity);

// Whether it is about presentation contexts, roles, lengths or windows that
// were agreed on, or should have been.
bool IsAboutNegotiation(IrregularityKind kind);

}  // namespace host

#endif  // HOST_DIALOGUE_IRREGULARITY_TEXT_H_
