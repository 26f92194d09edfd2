#ifndef HOST_FINDINGS_FINDINGS_H_
#define HOST_FINDINGS_FINDINGS_H_

#include <vector>

#include "host/findings/finding.h"
#include "host/findings/scene.h"

namespace host {

// All that is wrong in a capture, worst first: severity, then how near to the
// cause, then the order of the capture. Linear in the connections, PDUs and
// messages.
std::vector<Finding> FindAll(const Scene& scene);

}  // namespace host

#endif  // HOST_FINDINGS_FINDINGS_H_
