#ifndef HOST_DIALOGUE_ASSOCIATION_CHECK_H_
#define HOST_DIALOGUE_ASSOCIATION_CHECK_H_

#include "host/dialogue/dialogue.h"

namespace host {

// Holds what was said in an association, which is over and captured whole, to
// what was agreed at its beginning, and notes what does not fit. Only now is
// everything there, in whatever order the capture has the two directions.
// Linear in the association's PDUs and messages.
void CheckAssociation(const Association& association, Dialogue& dialogue);

}  // namespace host

#endif  // HOST_DIALOGUE_ASSOCIATION_CHECK_H_
