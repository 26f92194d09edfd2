#ifndef HOST_ROWS_ROW_OUTCOME_H_
#define HOST_ROWS_ROW_OUTCOME_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/dialogue/dialogue.h"
#include "host/rows/decoded_row.h"
#include "host/streams/connection.h"

namespace host {

// What became of the rows of one list, from the connection's dialogue: what
// stands beside the module's texts. Knows what was there when it was made.
class RowOutcomes {
 public:
  // The connection must outlive it.
  RowOutcomes(const Connection& connection, ListKind list);

  // The dialogue's message that a record of the message list is of; empty for
  // PDUs and where it is not known.
  std::optional<std::uint32_t> MessageOf(const WireRecord& record) const;
  // One line, UTF-8; empty when there is nothing to say. Throws Failure when
  // the bytes of the command set cannot be read back.
  std::string Text(const WireRecord& record) const;

 private:
  std::uint32_t IndexOf(const WireRecord& record) const;

  const Dialogue* dialogue_;  // null: there is none
  const std::vector<WireRecord>& records_;
  const ListKind list_;
  std::vector<std::optional<std::uint32_t>> messages_;  // of each record
};

}  // namespace host

#endif  // HOST_ROWS_ROW_OUTCOME_H_
