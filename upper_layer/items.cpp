#include <string>

#include "dimse/value_format.h"
#include "upper_layer/associate_form.h"

namespace dicom {

using enum LevelStep;

namespace {

constexpr char kNotFourBytes[] = " ERROR - The length should be 4!";

constexpr CodeRow kContextResults[] = {
    {0, 0, " - acceptance"},
    {1, 1, " - user rejection"},
    {2, 2, " - no reason (provider rejection)"},
    {3, 3, " - abstract syntax not supported (provider rejection)"},
    {4, 4, " - transfer syntaxes not supported (provider rejection)"},
};
static_assert(RowsAscend(kContextResults));

}  // namespace

// Deliberate: an empty transfer syntax, a role selection and an extended
// negotiation leave their level open. What returns to level 1 or 2 does not
// mind; what opens under the current level nests there.

// Every item begins with its type, a reserved byte and a 16-bit length that
// counts what follows; so an item covers its length and 4 bytes more.
std::uint32_t UpperLayerDecoder::ItemLength() const {
  return WordAt(PositionAfter(2), kBigEndian);
}

void UpperLayerDecoder::ShowItemHeader(const char* size_error) {
  Show("Item Type: " + ByteHex(), kLine, 1);
  Show("Reserved: " + ByteHex(), kLine, 1);
  Show("Item size: " + WordHexAndDecimal() + size_error, kLine, 2);
}

void UpperLayerDecoder::ShowUid(const char* caption, std::uint32_t length,
                                LevelStep description_step) {
  const std::string uid = UidText(length);
  ShowHere(caption + uid, kOpen, length);
  Show("UID description: " + dictionary_.LookupUidDescription(uid),
       description_step, length);
}

void UpperLayerDecoder::DecodeApplicationContext() {
  const std::uint32_t length = ItemLength();
  // Deliberate: opens under whatever is open, so behind a presentation context
  // it nests in it; the other items return to level 1.
  ShowHere("Application Context Item: " + UidText(length, 4), kOpen,
           length + 4);
  ShowItemHeader();
  ShowUid("Application context name: ", length, kLastLineOfTwo);
}

void UpperLayerDecoder::DecodeProposedContext() {
  const std::uint32_t length = ItemLength();
  const std::uint32_t end = PositionAfter(length + 4);
  ShowHere("Presentation Context Item: " + ByteHex(4), kOpenAtLevel1,
           length + 4);
  ShowItemHeader();
  Show("Presentation Context ID: " + ByteHex(), kLine, 1);
  Show("Reserved: " + ByteHex() + " " + ByteHex(1) + " " + ByteHex(2), kLine,
       3);
  while (position_ < end) DecodeProposedSyntax();
}

void UpperLayerDecoder::DecodeProposedSyntax() {
  switch (ByteAt(position_)) {
    case 0x30:
      return DecodeAbstractSyntax();
    case 0x40:
      return DecodeTransferSyntax();
    default:
      return DecodeUnknownSubItem();
  }
}

void UpperLayerDecoder::DecodeAbstractSyntax() {
  const std::uint32_t length = ItemLength();
  ShowHere("Abstract Syntax Sub Item: " + UidText(length, 4), kOpenAtLevel2,
           length + 4);
  ShowItemHeader();
  ShowUid("Abstract Syntax name: ", length, kLastLineOfTwo);
}

void UpperLayerDecoder::DecodeTransferSyntax() {
  const std::uint32_t length = ItemLength();
  // Deliberate: of all UIDs only this one may be empty. Rejected contexts are
  // answered so.
  const std::string uid = length == 0 ? "" : UidText(length, 4);
  ShowHere("Transfer syntax Item: " + uid, kOpenAtLevel2, length + 4);
  ShowItemHeader();
  if (length == 0) return;
  ShowUid("Transfer syntax name: ", length, kLastLineOfTwo);
}

void UpperLayerDecoder::DecodeAcceptedContext() {
  const std::uint32_t length = ItemLength();
  const std::uint32_t end = PositionAfter(length + 4);
  ShowHere("Presentation Context Item: " + ByteHex(4), kOpenAtLevel1,
           length + 4);
  ShowItemHeader();
  Show("Presentation Context ID: " + ByteHex(), kLine, 1);
  Show("Reserved: " + ByteHex(), kLine, 1);
  // Deliberate: the only " ERROR wrong value" without hyphen and "!".
  Show(CodeText("Result/Reason: ", kContextResults,
                ByteDecimal() + " ERROR wrong value"),
       kLine, 1);
  Show("Reserved: " + ByteHex(), kLine, 1);
  DecodeAcceptedSyntax();
  if (position_ == end) return;
  // Deliberate: the closing parenthesis is missing.
  ShowHere("ERROR in item size (either this item or in the sub item(s)",
           kSection, 1);
  // Deliberate: counted from the sub-item's last field, which is in general not
  // this item's end. It is at least 6 bytes behind this item's start, so the
  // decode still moves forward.
  SetPosition(previous_position_ + length - 4);
}

// Deliberate: exactly one sub-item, even where the item's length leaves no room
// for it or has room for more.
void UpperLayerDecoder::DecodeAcceptedSyntax() {
  if (ByteAt(position_) == 0x40) return DecodeTransferSyntax();
  DecodeUnknownSubItem();
}

void UpperLayerDecoder::DecodeUserInformation(const AssociateForm& form) {
  const std::uint32_t length = ItemLength();
  const std::uint32_t end = PositionAfter(length + 4);
  ShowHere("User Info Item", kOpenAtLevel1, length + 4);
  ShowItemHeader();
  while (position_ < end) DecodeUserSubItem(form);
}

void UpperLayerDecoder::DecodeUserSubItem(const AssociateForm& form) {
  switch (ByteAt(position_)) {
    case 0x51:
      return DecodeMaximumLength();
    case 0x52:
      return DecodeImplementationClass();
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
  ShowHere("Maximum Length Sub Item", kOpenAtLevel2, length + 4);
  ShowItemHeader(length == 4 ? "" : kNotFourBytes);
  // Deliberate: the value is 4 bytes wide whatever the length says; the line
  // covers and skips what it says.
  Show("Maximum length received: " + Unsigned(LongAt(position_, kBigEndian)),
       kLastLine, length);
}

void UpperLayerDecoder::DecodeImplementationClass() {
  const std::uint32_t length = ItemLength();
  ShowHere("Implementation Class UID Sub Item", kOpenAtLevel2, length + 4);
  ShowItemHeader();
  ShowUid("Implementation Class UID: ", length, kLastLineOfTwo);
}

void UpperLayerDecoder::DecodeOperationsWindow() {
  const std::uint32_t length = ItemLength();
  ShowHere("Asynchronous Operation Window Sub Item", kOpenAtLevel2, length + 4);
  ShowItemHeader(length == 4 ? "" : kNotFourBytes);
  // Deliberate: two words are read and passed whatever the length says.
  Show("Maximum number operations invoked: " +
           Unsigned(WordAt(position_, kBigEndian)),
       kLine, 2);
  Show("Maximum number operations performed: " +
           Unsigned(WordAt(position_, kBigEndian)),
       kLastLine, 2);
}

void UpperLayerDecoder::DecodeRoleSelection(const AssociateForm& form) {
  const std::uint32_t length = ItemLength();
  // Deliberate: carries the heading of the asynchronous operations window.
  ShowHere("Asynchronous Operation Window Sub Item", kOpenAtLevel2, length + 4);
  ShowItemHeader();
  const std::uint32_t uid_length = WordAt(position_, kBigEndian);
  Show("UID size: " + WordHexAndDecimal(), kLine, 2);
  ShowUid("SOP class UID: ", uid_length, kLastLine);
  Show(CodeText("SCU role: ", form.scu_roles, ByteDecimal() + kWrongValue),
       kLine, 1);
  Show(CodeText("SCP role: ", form.scp_roles, ByteDecimal() + kWrongValue),
       kLine, 1);
}

void UpperLayerDecoder::DecodeImplementationVersion() {
  const std::uint32_t length = ItemLength();
  ShowHere("Implementation Version Name Sub Item", kOpenAtLevel2, length + 4);
  ShowItemHeader();
  // Deliberate: plain text, not a UID: pad bytes stay, and the length may be 0.
  Show("Implementation version name: " + Characters(length), kLastLine, length);
}

void UpperLayerDecoder::DecodeExtendedNegotiation() {
  const std::uint32_t length = ItemLength();
  const std::uint32_t end = PositionAfter(length + 4);
  ShowHere("SOP Class Extended Negotiation Sub Item", kOpenAtLevel2,
           length + 4);
  ShowItemHeader();
  const std::uint32_t uid_length = WordAt(position_, kBigEndian);
  Show("SOP class UID size: " + WordHexAndDecimal(), kLine, 2);
  ShowUid("SOP class UID: ", uid_length, kLastLine);
  // Deliberate: wraps below zero when the UID claims more than the sub-item
  // holds: the line then marks all that follows, and the cursor returns to the
  // sub-item's end.
  ShowHere(
      "Service class application information: (as specified in the Service "
      "Class Specification)",
      kLine, length - uid_length - 2);
  previous_position_ = position_;
  position_ = end;
}

void UpperLayerDecoder::DecodeUnknownSubItem() {
  const std::uint32_t length = ItemLength();
  ShowHere("Unknown Sub Item Type: " + ByteHex(), kOpenAtLevel2, length + 4);
  Show("Item Type: " + ByteHex(), kLine, 1);
  Show("Reserved: " + ByteHex(), kLine, 1);
  ShowHere("Item size: " + WordHexAndDecimal(), kLastLine, 2);
  // One advance: an accepted context that resynchronises counts from the size.
  Advance(length + 2);
}

}  // namespace dicom
