#ifndef HOST_ROWS_FINDING_MARKS_H_
#define HOST_ROWS_FINDING_MARKS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "host/findings/finding.h"
#include "host/rows/decoded_row.h"
#include "host/streams/connection.h"

namespace host {

// Which rows of one connection findings concern. A finding about a message
// marks the PDU as well in which the message begins.
class FindingMarks {
 public:
  FindingMarks() = default;  // nothing is marked
  // The findings are those of the whole capture, worst first; `index` is the
  // connection's in the capture.
  FindingMarks(const std::vector<Finding>& findings, std::size_t index,
               const Connection& connection);

  // Of the worst finding about the record of a list, by its index in
  // Connection::pdus or Connection::messages; empty without one.
  std::optional<Severity> Of(ListKind list, std::size_t record) const;

 private:
  void Mark(const FindingPlace& place, Severity severity,
            const std::vector<std::optional<std::uint32_t>>& first_pdus);

  using Marks = std::map<std::size_t, Severity>;
  std::array<Marks, 2> marks_;  // by ListKind
};

// The byte at which the finding shows in the row of its record, as the module's
// hex dump counts them: the reason of a reject, the status of an answer. 0 for
// one that concerns the whole row. Throws Failure when bytes of the capture
// cannot be read back.
std::uint32_t ByteOfFinding(const Finding& finding,
                            const Connection& connection);

}  // namespace host

#endif  // HOST_ROWS_FINDING_MARKS_H_
