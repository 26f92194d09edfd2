#ifndef HOST_DIALOGUE_ASSOCIATION_H_
#define HOST_DIALOGUE_ASSOCIATION_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/time_text.h"

namespace host {

// What two sides agreed on, DICOM PS3.8 section 9.3 and PS3.7 annex D, as plain
// data. Directions are those of the connection: direction 0 sent its first
// packet, which need not be the requestor. UIDs stand without padding.

// Where in the capture a PDU or a message was.
struct WirePlace {
  std::uint32_t pdu = 0;  // index in Dialogue::pdus and in Connection::pdus
  std::uint32_t direction = 0;
  std::uint32_t first_frame = 0;  // 0: nothing of it was captured
  std::uint32_t last_frame = 0;
  Nanoseconds time = 0;  // of last_frame
};

// The results of a presentation context in an A-ASSOCIATE-AC.
enum ContextResult : std::uint8_t {
  kContextAccepted = 0,
  kContextUserRejection = 1,
  kContextNoReason = 2,
  kAbstractSyntaxNotSupported = 3,
  kTransferSyntaxesNotSupported = 4,
};

// A presentation context with what became of it: a row of the negotiation.
struct PresentationContext {
  std::uint8_t id = 0;
  // False for an answer with an ID that was not proposed, and for all contexts
  // when the request was not captured; both syntaxes are then not known.
  bool proposed = false;
  std::string abstract_syntax;
  std::vector<std::string> transfer_syntaxes;  // as proposed
  // Empty when there was no answer, in the A-ASSOCIATE-AC or at all. A number
  // that is no ContextResult is possible.
  std::optional<std::uint8_t> result;
  // The transfer syntax of the answer; says something where it was accepted.
  std::string chosen_syntax;
  std::uint32_t messages = 0;  // in both directions that used it

  bool IsAccepted() const { return result == kContextAccepted; }
};

// Of a SOP class: whether the requestor may act as SCU and as SCP. Without a
// selection it is SCU only.
struct RoleSelection {
  std::string sop_class;
  bool scu = false;
  bool scp = false;
};

// How many operations may be open at once; 0 is no limit. Without negotiation
// it is one of each.
struct AsyncWindow {
  std::uint16_t invoked = 1;    // by the requestor
  std::uint16_t performed = 1;  // by the requestor
};

enum UserIdentityType : std::uint8_t {
  kIdentityName = 1,
  kIdentityNameAndPasscode = 2,
  kIdentityKerberos = 3,
  kIdentitySaml = 4,
  kIdentityJwt = 5,
};

struct UserIdentity {
  std::uint8_t type = 0;  // a UserIdentityType, or another number
  bool wants_answer = false;
  std::uint32_t primary_bytes = 0;    // of the name or token itself,
  std::uint32_t secondary_bytes = 0;  // of the passcode: never kept
};

// What an A-ASSOCIATE-RQ or A-ASSOCIATE-AC says but for its contexts.
struct AssociationSide {
  WirePlace place;
  std::uint16_t protocol_version = 0;
  // Bytes of code page 1252 without the blanks around them, up to the first
  // zero byte. In an A-ASSOCIATE-AC they mean nothing by the standard.
  std::string calling_ae_title;
  std::string called_ae_title;
  std::string application_context;
  // That this side receives; 0 is no limit. Empty when the item is missing.
  std::optional<std::uint32_t> max_pdu_bytes;
  std::string implementation_class_uid;
  std::string implementation_version;  // as it was sent, without blanks
  std::vector<RoleSelection> roles;    // asked for, or granted
  std::optional<AsyncWindow> window;
  // SOP classes of which extended or common extended negotiation was sent.
  std::vector<std::string> extended_negotiations;
  std::optional<UserIdentity> user_identity;  // of the request
  bool answers_user_identity = false;         // of the accept
  // The PDU holds items that end outside of it, or was not captured whole.
  bool is_damaged = false;
};

// An A-ASSOCIATE-RJ.
struct Rejection {
  WirePlace place;
  std::uint8_t result = 0;  // 1 permanent, 2 transient
  std::uint8_t source = 0;  // 1 user, 2 provider (ACSE), 3 provider (other)
  std::uint8_t reason = 0;  // means something with its source only
};

// An A-ABORT.
struct Abort {
  WirePlace place;
  std::uint8_t source = 0;  // 0 user, 2 provider
  std::uint8_t reason = 0;  // means something for source 2 only
};

// One association. A TCP connection mostly carries one, and may carry several
// behind each other; a capture that begins in the middle shows one without a
// request.
struct Association {
  // An association begins with its request; empty when that is not there, in a
  // capture from the middle or with a peer that does not ask.
  std::optional<AssociationSide> request;
  std::optional<AssociationSide> accept;
  std::optional<Rejection> reject;
  std::vector<Abort> aborts;  // in their order, one from each side at most
  std::optional<WirePlace> release_request;  // the first
  std::optional<WirePlace> release_answer;
  // In the order of the request; behind them those of answers that were not
  // proposed, and of messages where neither was captured.
  std::vector<PresentationContext> contexts;
  // Its parts of Dialogue::pdus and Dialogue::messages: [first, end).
  std::uint32_t first_pdu = 0;
  std::uint32_t end_pdu = 0;
  std::uint32_t first_message = 0;
  std::uint32_t end_message = 0;

  // The direction of the requestor: who sent the request, else who did not send
  // the answer; empty when neither was captured.
  std::optional<std::uint32_t> RequestorDirection() const;
  // The context of this ID: the first that was proposed, else the first; null
  // when there is none.
  const PresentationContext* FindContext(std::uint8_t id) const;
  // The role of a SOP class that was granted, or asked for; null when there is
  // none.
  const RoleSelection* GrantedRole(std::string_view sop_class) const;
  const RoleSelection* AskedRole(std::string_view sop_class) const;
};

}  // namespace host

#endif  // HOST_DIALOGUE_ASSOCIATION_H_
