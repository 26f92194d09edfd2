#ifndef HOST_ROWS_ROW_TEXT_H_
#define HOST_ROWS_ROW_TEXT_H_

#include <cstdint>
#include <optional>
#include <string>

#include "host/rows/decoded_row.h"
#include "host/streams/connection.h"

namespace host {

// What a row says besides its texts, for windows and consoles.

// How a row is to be told from others at a glance.
enum class RowKind {
  kPlain,
  kAssociate,  // request and accept
  kRelease,
  kWarning,  // a response whose status is a warning, or bytes were lost
  kFault,    // reject, abort, a response whose status is a failure
};
// `wire` is null when the row's record is not known; its kind is then that of
// its summary.
RowKind KindOf(const ListedRow& row, const WireRecord* wire);

// The message ID in the detail text of a message's row.
std::optional<std::uint32_t> MessageIdOf(const ListedRow& row);
// Whether the message is a response, by its summary.
bool IsResponse(const ListedRow& row);
// Whether the two messages are a command and its response, in either order: of
// one service and message ID, one in each direction.
bool AreCommandAndResponse(const ListedRow& one, const ListedRow& other);

}  // namespace host

#endif  // HOST_ROWS_ROW_TEXT_H_
