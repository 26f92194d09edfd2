#ifndef HOST_CAPDUMP_CONTEXTS_REPORT_H_
#define HOST_CAPDUMP_CONTEXTS_REPORT_H_

#include <cstddef>
#include <optional>
#include <vector>

#include "host/capdump/report.h"
#include "host/streams/connection.h"

namespace host {

// What --contexts shows: for each association who proposed and accepted what,
// and what is odd about it. `only`: the one connection that is wanted, by its
// index; all are looked at for what would have matched.
void WriteContexts(const std::vector<Connection>& connections,
                   std::optional<std::uint32_t> only, const Sink& sink);
// The same as JSON objects of the kinds "association" and "context".
void WriteContextsJson(const std::vector<Connection>& connections,
                       std::optional<std::uint32_t> only, const Sink& sink);

}  // namespace host

#endif  // HOST_CAPDUMP_CONTEXTS_REPORT_H_
