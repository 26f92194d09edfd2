#ifndef HOST_DIALOGUE_ASSOCIATE_PDU_H_
#define HOST_DIALOGUE_ASSOCIATE_PDU_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/dialogue/association.h"
#include "host/dialogue/irregularity.h"

namespace host {

// An A-ASSOCIATE-RQ or A-ASSOCIATE-AC, read item by item.
struct AssociatePdu {
  AssociationSide side;  // without its place
  // In a request the ID and both syntaxes are filled in, in an accept the ID,
  // the result and the chosen syntax.
  std::vector<PresentationContext> contexts;
  std::vector<Irregularity> problems;  // without their places
};

// Bytes of such a PDU that are looked at; real ones have a few thousand.
inline constexpr std::size_t kMostAssociateBytes = 1 << 18;

// `body` is what follows the PDU header, up to kMostAssociateBytes of it. Never
// fails: what cannot be read is a problem. Linear.
AssociatePdu ReadAssociatePdu(std::span<const std::uint8_t> body,
                              bool is_request);

// Of text in a PDU or a command set: up to the first zero byte, without blanks
// around it.
std::string TrimmedText(std::span<const std::uint8_t> bytes);
// Adds a problem if `uid`, which may be empty, is not what a UID must be.
void CheckUid(std::string_view uid, std::vector<Irregularity>& problems);

}  // namespace host

#endif  // HOST_DIALOGUE_ASSOCIATE_PDU_H_
