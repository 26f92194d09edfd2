#ifndef HOST_ROWS_ROW_TEXT_H_
#define HOST_ROWS_ROW_TEXT_H_

#include <cstdint>
#include <optional>
#include <string>

#include "host/rows/decoded_row.h"
#include "host/streams/connection.h"

namespace host {

// What a row of the list says besides its texts, for windows and consoles.

// How a row is to be told from others at a glance.
enum class RowKind {
  kPlain,
  kAssociate,  // request and accept
  kRelease,
  kWarning,  // a response whose status is a warning, or bytes were lost
  kFault,    // reject, abort, a response whose status is a failure
};
RowKind KindOf(const ListedRow& row, const WireRecord* wire);

// The message ID in a row's detail text.
std::optional<std::uint32_t> MessageIdOf(const ListedRow& row);
// Whether the two rows of the message view are a command and its response.
bool AreCommandAndResponse(const ListedRow& one, const ListedRow& other);
bool IsResponse(const ListedRow& row);

}  // namespace host

#endif  // HOST_ROWS_ROW_TEXT_H_
