#ifndef HOST_CAPDUMP_TIMING_REPORT_H_
#define HOST_CAPDUMP_TIMING_REPORT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/capdump/report.h"
#include "host/streams/connection.h"
#include "host/timing/connection_timing.h"

namespace host {

// Where the time of associations went. Each writes all connections, or only the
// one of this index, and hands on its text in few pieces.

// For people: a bar and a table for each association, latencies by command, and
// what TCP did.
void WriteTiming(const std::vector<Connection>& connections,
                 std::optional<std::uint32_t> only, const Sink& sink);
// One JSON object an association, a line each.
void WriteTimingJson(const std::vector<Connection>& connections,
                     std::optional<std::uint32_t> only, const Sink& sink);
// One line a message, comma-separated with a head line (RFC 4180 but for its
// line ends): for spreadsheets.
void WriteTimingCsv(const std::vector<Connection>& connections,
                    std::optional<std::uint32_t> only, const Sink& sink);

// The fields of one association, as a JSON object.
std::string AssociationTimingJson(const Connection& connection,
                                  const ConnectionTiming& timing,
                                  std::uint32_t association);

}  // namespace host

#endif  // HOST_CAPDUMP_TIMING_REPORT_H_
