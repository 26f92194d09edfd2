#ifndef HOST_FINDINGS_VERDICT_H_
#define HOST_FINDINGS_VERDICT_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/findings/finding.h"
#include "host/findings/scene.h"

namespace host {

// How a capture is, in one line: "1 fault, 2 notes"; where nothing is worse
// than a note, a whole sentence: "No fault: 1 association and 2 messages
// checked for ...". Of `connection` only if it is given.
std::string VerdictText(const Scene& scene,
                        const std::vector<Finding>& findings,
                        std::optional<std::size_t> connection = {});

}  // namespace host

#endif  // HOST_FINDINGS_VERDICT_H_
