#ifndef HOST_DIALOGUE_IRREGULARITY_H_
#define HOST_DIALOGUE_IRREGULARITY_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "host/dialogue/association.h"

namespace host {

// Where a side did not keep to the protocol. `expected`, `found` and `text` of
// an irregularity are named behind each kind.
enum class IrregularityKind : std::uint8_t {
  // PDUs.
  kUnknownPduType,  // found: the type
  kWrongPduLength,  // expected, found: of a PDU of a fixed length; or 0 and
                    // the length, where that of its type may be so long
  kUnexpectedPdu,   // found: the type; out of turn, as data before an accept
  kDamagedItems,    // an item of an association PDU ends outside of it;
                    // found: the item's type
  kBadProtocolVersion,     // found: the version, whose bit 0 is not set
  kBadApplicationContext,  // text: the UID
  kPduAboveMaximum,  // expected: the maximum that the other side announced;
                     // found: the length
  // Presentation contexts.
  kEvenContextId,        // found: the ID
  kDuplicateContextId,   // found: the ID, proposed twice
  kUnproposedContextId,  // found: the ID of an answer
  kDuplicateAnswer,      // found: the ID, answered twice
  kMissingAnswer,        // found: the ID, without an answer
  kUnofferedSyntax,      // found: the ID; text: the chosen transfer syntax,
                         // which was not proposed
  kTooManyItems,         // found: more than are kept of one PDU
  // PDVs.
  kWrongPdvLength,  // found: the length; it goes beyond its PDU, or is < 2
  kOddPdvLength,    // found: the length of an odd fragment
  kStrayBytes,      // found: bytes behind the last item of a PDU
  kUnknownContext,  // found: the ID that was never negotiated
  kRefusedContext,  // found: the ID that was refused or not answered
  kInterleavedFragments,  // expected, found: context IDs; a message begins or
                          // goes on inside another one
  kMissingLastFragment,   // expected: 0 of a command set, 1 of a data set;
                          // found: bytes of it that came before something
                          // else came
  kDataWithoutCommand,    // found: the context ID; data that no command set
                          // has announced
  // Messages.
  kDamagedCommand,     // the command set cannot be read
  kUnknownCommand,     // found: the Command Field
  kWrongSopClass,      // expected: the context ID; text: the SOP class, which
                       // is not the abstract syntax of the context
  kMessageIdInUse,     // found: the message ID of a request still open
  kUnaskedAnswer,      // found: the message ID that no request has
  kWrongAnswer,        // expected, found: Command Fields; an answer to another
                       // kind of request
  kWindowExceeded,     // expected: operations that may be open; found: are
  kRoleNotNegotiated,  // text: the SOP class; a request from the side that
                       // has no SCU role for it
  // UIDs.
  kUidTooLong,  // found: characters; text: the UID
  kBadUid,      // text: the UID, with other characters than digits and
                // dots, or with an empty component
  // Messages, again.
  kMissingElement,        // text: "Message ID", "Status": what the command set
                          // has to have
  kAnswerOnOtherContext,  // expected, found: IDs of the request's context and
                          // of the answer's
  kCount                  // no kind
};
inline constexpr std::size_t kIrregularityKinds =
    static_cast<std::size_t>(IrregularityKind::kCount);

struct Irregularity {
  IrregularityKind kind = IrregularityKind::kUnknownPduType;
  WirePlace place;  // its direction is the side that did it
  std::uint64_t expected = 0;
  std::uint64_t found = 0;
  std::string text;  // printable ASCII; others as in "\x1B"
  std::optional<std::uint32_t> association;  // indices of the dialogue
  std::optional<std::uint32_t> message;
};

}  // namespace host

#endif  // HOST_DIALOGUE_IRREGULARITY_H_
