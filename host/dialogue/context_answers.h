#ifndef HOST_DIALOGUE_CONTEXT_ANSWERS_H_
#define HOST_DIALOGUE_CONTEXT_ANSWERS_H_

#include <vector>

#include "host/dialogue/association.h"
#include "host/dialogue/irregularity.h"

namespace host {

// Both answer what is irregular, without its place.

// Looks at the IDs that the request proposes.
std::vector<Irregularity> CheckProposals(const Association& association);

// Puts the contexts of the A-ASSOCIATE-AC to those that were proposed. Where
// the request is not there, or damaged, nothing is held against the answers.
std::vector<Irregularity> MergeAnswers(std::vector<PresentationContext> answers,
                                       Association& association);

}  // namespace host

#endif  // HOST_DIALOGUE_CONTEXT_ANSWERS_H_
