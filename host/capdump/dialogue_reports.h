#ifndef HOST_CAPDUMP_DIALOGUE_REPORTS_H_
#define HOST_CAPDUMP_DIALOGUE_REPORTS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/capdump/report.h"
#include "host/dialogue/dialogue.h"
#include "host/streams/connection.h"
#include "host/timing/connection_timing.h"

namespace host {

// Reports on what the host itself has read. Each writes all connections that
// have a dialogue, or only the one of this index in the whole capture, and
// hands on its text in few pieces.
using DialogueReport = void(const std::vector<Connection>& connections,
                            std::optional<std::uint32_t> only,
                            const Sink& sink);

// For each association who proposed and accepted what, and what is odd about
// it; all connections are looked at for what would have matched.
DialogueReport WriteContexts;
// The same as JSON objects of the kinds "association" and "context".
DialogueReport WriteContextsJson;

// Where the time of associations went, for people: a bar and a table for each
// association, latencies by command, and what TCP did.
DialogueReport WriteTiming;
// One JSON object a connection, a line each.
DialogueReport WriteTimingJson;
// One line a message, comma-separated with a head line (RFC 4180 but for its
// line ends): for spreadsheets.
DialogueReport WriteTimingCsv;

// The fields of one association, as a JSON object.
std::string AssociationTimingJson(const Connection& connection,
                                  const ConnectionTiming& timing,
                                  std::uint32_t association);

// Calls `take` with each connection that a report is to write, and with its
// dialogue.
template <class Take>
void ForEachDialogue(const std::vector<Connection>& connections,
                     std::optional<std::uint32_t> only, Take take) {
  for (const Connection& connection : connections) {
    const Dialogue* const dialogue = DialogueOf(connection);
    if (dialogue == nullptr || (only && *only != connection.index)) continue;
    take(connection, *dialogue);
  }
}

}  // namespace host

#endif  // HOST_CAPDUMP_DIALOGUE_REPORTS_H_
