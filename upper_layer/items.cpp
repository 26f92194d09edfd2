#include <string>

#include "dimse/value_format.h"
#include "errors/errors.h"
#include "upper_layer/associate_form.h"

// The items and sub-items of A-ASSOCIATE-RQ and -AC.

namespace dicom {

using enum LevelStep;

// An item or sub-item whose value is one UID.
struct UidItem {
  const char* heading;
  bool heading_shows_uid;
  LevelStep step;  // of the heading
  const char* caption;
  bool may_be_empty;
};

namespace {

// Deliberate: opens under whatever is open, so behind a presentation context it
// nests in it; the other items return to level 1.
constexpr UidItem kApplicationContext = {  // 10h
    "Application Context Item: ", true, kOpen,
    "Application context name: ", false};
constexpr UidItem kAbstractSyntax = {  // 30h
    "Abstract Syntax Sub Item: ", true, kOpenAtLevel2,
    "Abstract Syntax name: ", false};
// Deliberate: of all UIDs only this one may be empty. Rejected contexts are
// answered so.
constexpr UidItem kTransferSyntax = {  // 40h
    "Transfer syntax Item: ", true, kOpenAtLevel2,
    "Transfer syntax name: ", true};
constexpr UidItem kImplementationClass = {  // 52h
    "Implementation Class UID Sub Item", false, kOpenAtLevel2,
    "Implementation Class UID: ", false};

constexpr char kNotFourBytes[] = " ERROR - The length should be 4!";

constexpr CodeRow kContextResults[] = {
    {0, 0, " - acceptance"},
    {1, 1, " - user rejection"},
    {2, 2, " - no reason (provider rejection)"},
    {3, 3, " - abstract syntax not supported (provider rejection)"},
    {4, 4, " - transfer syntaxes not supported (provider rejection)"},
};
static_assert(RowsAscend(kContextResults));

// Deliberate: where a UID has to be, an empty one is a failure, and the decode
// ends at its item.
std::string RequiredUid(const std::string& characters) {
  if (characters.empty()) throw OutOfRange();
  return UidText(characters);
}

}  // namespace

// Deliberate: an empty transfer syntax, a role selection and an extended
// negotiation leave their level open. What returns to level 1 or 2 does not
// mind; what opens under the current level nests there.

void UpperLayerDecoder::ShowItemHeader(const std::string& heading,
                                       LevelStep step, const char* size_error) {
  ShowHere(heading, step, ItemLength() + 4);
  Show("Item Type: " + ByteHex(Byte()), kLine, 1);
  Show("Reserved: " + ByteHex(Byte()), kLine, 1);
  Show("Item size: " + WordHexAndDecimal(Word()) + size_error, kLine, 2);
}

void UpperLayerDecoder::ShowUid(const char* caption, std::uint32_t length,
                                LevelStep description_step) {
  const std::string uid = RequiredUid(Characters(length));
  ShowHere(caption + uid, kOpen, length);
  Show("UID description: " + dictionary_.LookupUidDescription(uid),
       description_step, length);
}

void UpperLayerDecoder::DecodeItem(const AssociateForm& form) {
  const std::uint8_t type = Byte();
  if (type == form.context_item) return (this->*form.decode_context_item)();
  switch (type) {
    case 0x10:
      return DecodeUidItem(kApplicationContext);
    case 0x50:
      return DecodeUserInformation(form);
    default:
      return DecodeUnknownItem(form);
  }
}

void UpperLayerDecoder::DecodeUnknownItem(const AssociateForm& form) {
  const std::uint32_t length = ItemLength();
  // Deliberate: the range is the item's claim, even past the buffer's end.
  ShowHere("Unknown Item Type: " + ByteHex(Byte()), form.unknown_item,
           length + 4);
  Advance(1);
  Show("Reserved: " + ByteHex(Byte()), kLine, 1);
  ShowHere("Item size: " + WordHexAndDecimal(Word()), kLastLine, 2);
  Advance(length + 2);
}

void UpperLayerDecoder::DecodeUidItem(const UidItem& item) {
  const std::uint32_t length = ItemLength();
  const bool is_empty = item.may_be_empty && length == 0;
  std::string heading = item.heading;
  if (item.heading_shows_uid && !is_empty) {
    heading += RequiredUid(Characters(length, 4));
  }
  ShowItemHeader(heading, item.step);
  if (!is_empty) ShowUid(item.caption, length, kLastLineOfTwo);
}

void UpperLayerDecoder::DecodeProposedContext() {
  const std::uint32_t end = PositionAfter(ItemLength() + 4);
  ShowItemHeader("Presentation Context Item: " + ByteHex(Byte(4)),
                 kOpenAtLevel1);
  Show("Presentation Context ID: " + ByteHex(Byte()), kLine, 1);
  Show("Reserved: " + ByteHex(Byte()) + " " + ByteHex(Byte(1)) + " " +
           ByteHex(Byte(2)),
       kLine, 3);
  while (Position() < end) DecodeProposedSyntax();
}

void UpperLayerDecoder::DecodeProposedSyntax() {
  switch (Byte()) {
    case 0x30:
      return DecodeUidItem(kAbstractSyntax);
    case 0x40:
      return DecodeUidItem(kTransferSyntax);
    default:
      return DecodeUnknownSubItem();
  }
}

void UpperLayerDecoder::DecodeAcceptedContext() {
  const std::uint32_t length = ItemLength();
  const std::uint32_t end = PositionAfter(length + 4);
  ShowItemHeader("Presentation Context Item: " + ByteHex(Byte(4)),
                 kOpenAtLevel1);
  Show("Presentation Context ID: " + ByteHex(Byte()), kLine, 1);
  Show("Reserved: " + ByteHex(Byte()), kLine, 1);
  // Deliberate: the only " ERROR wrong value" without hyphen and "!".
  Show("Result/Reason: " + CodeText(Byte(), kContextResults,
                                    ByteDecimal(Byte()) + " ERROR wrong value"),
       kLine, 1);
  Show("Reserved: " + ByteHex(Byte()), kLine, 1);
  // Deliberate: exactly one sub-item, even where the item's length leaves no
  // room for it or has room for more.
  Byte() == 0x40 ? DecodeUidItem(kTransferSyntax) : DecodeUnknownSubItem();
  if (Position() == end) return;
  // Deliberate: the closing parenthesis is missing.
  ShowHere("ERROR in item size (either this item or in the sub item(s)",
           kSection, 1);
  // Deliberate: counted from the sub-item's last field, which is in general not
  // this item's end. It is at least 6 bytes behind this item's start, so the
  // decode still moves forward.
  const std::uint32_t resumed = PreviousPosition() + length - 4;
  if (resumed > Bytes().Length()) throw OutOfRange();
  JumpTo(resumed);
}

void UpperLayerDecoder::DecodeUserInformation(const AssociateForm& form) {
  const std::uint32_t end = PositionAfter(ItemLength() + 4);
  ShowItemHeader("User Info Item", kOpenAtLevel1);
  while (Position() < end) DecodeUserSubItem(form);
}

void UpperLayerDecoder::DecodeUserSubItem(const AssociateForm& form) {
  switch (Byte()) {
    case 0x51:
      return DecodeMaximumLength();
    case 0x52:
      return DecodeUidItem(kImplementationClass);
    case 0x53:
      return DecodeOperationsWindow();
    case 0x54:
      return DecodeRoleSelection(form);
    case 0x55:
      return DecodeImplementationVersion();
    case 0x56:
      return DecodeExtendedNegotiation();
    default:
      return DecodeUnknownSubItem();
  }
}

void UpperLayerDecoder::DecodeMaximumLength() {
  const std::uint32_t length = ItemLength();
  ShowItemHeader("Maximum Length Sub Item", kOpenAtLevel2,
                 length == 4 ? "" : kNotFourBytes);
  // Deliberate: the value is 4 bytes wide whatever the length says; the line
  // covers and skips what it says.
  Show("Maximum length received: " + Unsigned(Long()), kLastLine, length);
}

void UpperLayerDecoder::DecodeOperationsWindow() {
  ShowItemHeader("Asynchronous Operation Window Sub Item", kOpenAtLevel2,
                 ItemLength() == 4 ? "" : kNotFourBytes);
  // Deliberate: two words are read and passed whatever the length says.
  Show("Maximum number operations invoked: " + Unsigned(Word()), kLine, 2);
  Show("Maximum number operations performed: " + Unsigned(Word()), kLastLine,
       2);
}

void UpperLayerDecoder::DecodeRoleSelection(const AssociateForm& form) {
  // Deliberate: carries the heading of the asynchronous operations window.
  ShowItemHeader("Asynchronous Operation Window Sub Item", kOpenAtLevel2);
  const std::uint32_t uid_length = Word();
  Show("UID size: " + WordHexAndDecimal(Word()), kLine, 2);
  ShowUid("SOP class UID: ", uid_length, kLastLine);
  Show("SCU role: " +
           CodeText(Byte(), form.scu_roles, ByteDecimal(Byte()) + kWrongValue),
       kLine, 1);
  Show("SCP role: " +
           CodeText(Byte(), form.scp_roles, ByteDecimal(Byte()) + kWrongValue),
       kLine, 1);
}

void UpperLayerDecoder::DecodeImplementationVersion() {
  const std::uint32_t length = ItemLength();
  ShowItemHeader("Implementation Version Name Sub Item", kOpenAtLevel2);
  // Deliberate: plain text, not a UID: pad bytes stay, and the length may be 0.
  Show("Implementation version name: " + Characters(length), kLastLine, length);
}

void UpperLayerDecoder::DecodeExtendedNegotiation() {
  const std::uint32_t length = ItemLength();
  const std::uint32_t end = PositionAfter(length + 4);
  ShowItemHeader("SOP Class Extended Negotiation Sub Item", kOpenAtLevel2);
  const std::uint32_t uid_length = Word();
  Show("SOP class UID size: " + WordHexAndDecimal(Word()), kLine, 2);
  ShowUid("SOP class UID: ", uid_length, kLastLine);
  // Deliberate: wraps below zero when the UID claims more than the sub-item
  // holds: the line then marks all that follows, and the cursor returns to the
  // sub-item's end.
  ShowHere(
      "Service class application information: (as specified in the Service "
      "Class Specification)",
      kLine, length - uid_length - 2);
  JumpTo(end);
}

void UpperLayerDecoder::DecodeUnknownSubItem() {
  const std::uint32_t length = ItemLength();
  ShowHere("Unknown Sub Item Type: " + ByteHex(Byte()), kOpenAtLevel2,
           length + 4);
  Show("Item Type: " + ByteHex(Byte()), kLine, 1);
  Show("Reserved: " + ByteHex(Byte()), kLine, 1);
  ShowHere("Item size: " + WordHexAndDecimal(Word()), kLastLine, 2);
  // One advance: an accepted context that resynchronises counts from the size.
  Advance(length + 2);
}

}  // namespace dicom
