#include "host/dialogue/associate_pdu.h"

#include <utility>

#include "host/capture/wire_bytes.h"
#include "host/dataset/value_check.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kTitleBytes = 16;
constexpr std::size_t kReservedBytes = 32;  // behind the titles
constexpr std::size_t kMostUidCharacters = 64;
constexpr std::size_t kMostShown = 256;  // characters of a bad one
// Contexts have 128 IDs. What has more items than this is not read on: each
// costs more memory than bytes of the capture.
constexpr std::size_t kMostContexts = 512;
// Of all contexts together; 128 contexts with every registered syntax have half
// of them.
constexpr std::size_t kMostSyntaxes = 16384;

enum ItemType : std::uint8_t {
  kApplicationContext = 0x10,
  kProposedContext = 0x20,
  kAnsweredContext = 0x21,
  kAbstractSyntax = 0x30,
  kTransferSyntax = 0x40,
  kUserInformation = 0x50,
  kMaximumLength = 0x51,
  kImplementationClass = 0x52,
  kAsynchronousWindow = 0x53,
  kRole = 0x54,
  kImplementationVersion = 0x55,
  kExtendedNegotiation = 0x56,
  kCommonExtendedNegotiation = 0x57,
  kUserIdentityRequest = 0x58,
  kUserIdentityAnswer = 0x59,
};

class AssociatePduReader {
 public:
  explicit AssociatePduReader(bool is_request) : is_request_(is_request) {}

  AssociatePdu Read(Bytes body) && {
    WireReader in(body);
    pdu_.side.protocol_version = in.Word16();
    in.Skip(2);
    pdu_.side.called_ae_title = TrimmedText(in.Bytes(kTitleBytes));
    pdu_.side.calling_ae_title = TrimmedText(in.Bytes(kTitleBytes));
    in.Skip(kReservedBytes);
    if (!in.ok()) {
      Damaged(0);
    } else {
      ReadItems(in.rest(), &AssociatePduReader::TakeItem);
      CheckFields();
    }
    return std::move(pdu_);
  }

 private:
  using TakeMember = void (AssociatePduReader::*)(std::uint8_t, Bytes);

  void Problem(IrregularityKind kind, std::uint64_t found,
               std::string text = {}) {
    pdu_.problems.push_back({kind, {}, 0, found, std::move(text), {}, {}});
  }
  void Damaged(std::uint8_t item_type) {
    if (!pdu_.side.is_damaged) {
      Problem(IrregularityKind::kDamagedItems, item_type);
    }
    pdu_.side.is_damaged = true;
  }

  void CheckFields() {
    // The standard's version is bit 0; others must not be tested.
    if ((pdu_.side.protocol_version & 1) == 0) {
      Problem(IrregularityKind::kBadProtocolVersion,
              pdu_.side.protocol_version);
    }
    const std::string& context = pdu_.side.application_context;
    if (is_request_ && context != "1.2.840.10008.3.1.1.1") {
      Problem(IrregularityKind::kBadApplicationContext, 0,
              PrintableFromCodePage1252(context));
    }
  }

  // Hands each item to `take`: its type and its value.
  void ReadItems(Bytes bytes, TakeMember take) {
    WireReader in(bytes);
    while (!in.rest().empty()) {
      const std::uint8_t type = in.Byte();
      in.Skip(1);
      const std::uint16_t length = in.Word16();
      const Bytes value = in.Bytes(length);
      if (!in.ok()) return Damaged(type);
      (this->*take)(type, value);
    }
  }

  void TakeItem(std::uint8_t type, Bytes value) {
    if (type == kApplicationContext) {
      pdu_.side.application_context = TrimmedText(value);
    } else if (type == kUserInformation) {
      ReadItems(value, &AssociatePduReader::TakeUserItem);
    } else if (type == (is_request_ ? kProposedContext : kAnsweredContext)) {
      TakeContext(type, value);
    }
  }

  void TakeContext(std::uint8_t type, Bytes value) {
    if (pdu_.contexts.size() >= kMostContexts) return TooMany();
    WireReader in(value);
    PresentationContext context;
    context.id = in.Byte();
    in.Skip(1);
    const std::uint8_t result = in.Byte();
    in.Skip(1);
    if (!in.ok()) return Damaged(type);
    context.proposed = is_request_;
    if (!is_request_) context.result = result;
    pdu_.contexts.push_back(std::move(context));
    ReadItems(in.rest(), &AssociatePduReader::TakeSyntax);
  }

  void TakeSyntax(std::uint8_t type, Bytes value) {
    PresentationContext& context = pdu_.contexts.back();
    std::string uid = TrimmedText(value);
    if (type == kAbstractSyntax) {
      CheckUid(uid, pdu_.problems);
      context.abstract_syntax = std::move(uid);
    } else if (type == kTransferSyntax && is_request_) {
      if (++syntaxes_ > kMostSyntaxes) return TooMany();
      CheckUid(uid, pdu_.problems);
      context.transfer_syntaxes.push_back(std::move(uid));
    } else if (type == kTransferSyntax) {
      // Of a refused context it means nothing and is often left over.
      if (context.IsAccepted()) CheckUid(uid, pdu_.problems);
      context.chosen_syntax = std::move(uid);
    }
  }

  void TakeUserItem(std::uint8_t type, Bytes value) {
    AssociationSide& side = pdu_.side;
    WireReader in(value);
    switch (type) {
      case kMaximumLength:
        side.max_pdu_bytes = in.Word32();
        break;
      case kImplementationClass:
        side.implementation_class_uid = TrimmedText(value);
        CheckUid(side.implementation_class_uid, pdu_.problems);
        break;
      case kImplementationVersion:
        side.implementation_version = TrimmedText(value);
        break;
      case kAsynchronousWindow:
        side.window = AsyncWindow{in.Word16(), in.Word16()};
        break;
      case kRole:
        TakeRole(in);
        break;
      case kExtendedNegotiation:
      case kCommonExtendedNegotiation:
        TakeExtended(in);
        break;
      case kUserIdentityRequest:
        TakeIdentity(in);
        break;
      case kUserIdentityAnswer:
        side.answers_user_identity = true;
        break;
      default:
        break;
    }
    if (!in.ok()) Damaged(type);
  }

  void TakeRole(WireReader& in) {
    RoleSelection role;
    const std::uint16_t length = in.Word16();
    role.sop_class = TrimmedText(in.Bytes(length));
    role.scu = in.Byte() != 0;
    role.scp = in.Byte() != 0;
    if (!in.ok()) return;
    if (pdu_.side.roles.size() >= kMostContexts) return TooMany();
    pdu_.side.roles.push_back(std::move(role));
  }

  void TakeExtended(WireReader& in) {
    const std::uint16_t length = in.Word16();
    std::string uid = TrimmedText(in.Bytes(length));
    if (!in.ok()) return;
    auto& all = pdu_.side.extended_negotiations;
    if (all.size() >= kMostContexts) return TooMany();
    all.push_back(std::move(uid));
  }

  void TakeIdentity(WireReader& in) {
    UserIdentity identity;
    identity.type = in.Byte();
    identity.wants_answer = in.Byte() != 0;
    identity.primary_bytes = in.Word16();
    in.Skip(identity.primary_bytes);
    identity.secondary_bytes = in.Word16();
    in.Skip(identity.secondary_bytes);
    if (in.ok()) pdu_.side.user_identity = identity;
  }

  void TooMany() {
    if (too_many_) return;
    too_many_ = true;
    Problem(IrregularityKind::kTooManyItems, kMostContexts);
  }

  const bool is_request_;
  AssociatePdu pdu_;
  std::size_t syntaxes_ = 0;
  bool too_many_ = false;
};

}  // namespace

AssociatePdu ReadAssociatePdu(Bytes body, bool is_request) {
  return AssociatePduReader(is_request).Read(body);
}

std::string TrimmedText(Bytes bytes) {
  std::string_view text(reinterpret_cast<const char*>(bytes.data()),
                        bytes.size());
  text = text.substr(0, text.find('\0'));
  const std::size_t first = text.find_first_not_of(' ');
  if (first == text.npos) return {};
  return std::string(
      text.substr(first, text.find_last_not_of(' ') - first + 1));
}

void CheckUid(std::string_view uid, std::vector<Irregularity>& problems) {
  if (uid.empty()) return;
  const std::string text = PrintableFromCodePage1252(uid.substr(0, kMostShown));
  IrregularityKind kind = IrregularityKind::kUidTooLong;
  if (uid.size() <= kMostUidCharacters) {
    if (CheckValue(Vr::kUI, text).empty()) return;
    kind = IrregularityKind::kBadUid;
  }
  problems.push_back({kind, {}, 0, uid.size(), text, {}, {}});
}

}  // namespace host
