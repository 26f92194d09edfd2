#include "tracking/packet_summary.h"

#include <algorithm>
#include <array>

#include "errors/errors.h"
#include "tracking/command_set_walk.h"
#include "tracking/number_text.h"

namespace dicom {

// Deliberate: the row text is also the key to the accepts, so the two stay one.
const char kAssociateAcceptName[] = "A-ASSOCIATE-AC PDU";

namespace {

// Deliberate: the spelling is the users'.
constexpr char kUnknownPduName[] = "unkown PDU";
constexpr std::array<const char*, 8> kPduNames = {
    kUnknownPduName,      "A-ASSOCIATE-RQ PDU", kAssociateAcceptName,
    "A-ASSOCIATE-RJ PDU", "P-DATA-TF PDU",      "A-RELEASE-RQ PDU",
    "A-RELEASE-RP PDU",   "A-ABORT PDU",
};

}  // namespace

const char* PduName(std::uint8_t pdu_type) {
  return pdu_type < kPduNames.size() ? kPduNames[pdu_type] : kUnknownPduName;
}

std::string SecondText(const DimseMessageRecord& message) {
  std::string text;
  if (message.message_id) {
    // Deliberate: a lower-case d, and 65535 where others show -1.
    text = "Message Id: ";
    AppendUnsigned(text, *message.message_id);
  }
  return text;
}

void MessageSummary::Build(DimseMessageRecord& message, PacketSource& source) {
  gatherer_.GatherUpTo(message.command_length, message.spans, source, unread_);
  const ByteArrayView bytes(unread_.data(),
                            static_cast<std::uint32_t>(unread_.size()));
  std::uint32_t position = skip_;
  try {
    while (ReadElement(bytes, position, message)) {
    }
  } catch (const OutOfRange&) {
    // The rest of this element has not come yet, or never will.
  }
  const std::uint32_t done = std::min(position, bytes.Length());
  skip_ = position - done;
  unread_.erase(unread_.begin(),
                unread_.begin() + static_cast<std::int32_t>(done));
}

// False at the end of the bytes. Throws OutOfRange, `position` unmoved, when
// the end cuts what is read of the element.
bool MessageSummary::ReadElement(const ByteArrayView& bytes,
                                 std::uint32_t& position,
                                 DimseMessageRecord& message) {
  std::uint32_t next = position;
  CommandElement element;
  if (!NextCommandElement(bytes, next, element)) return false;
  // Deliberate: 16 bits are read whatever the value length says, and of the two
  // message ID elements the later one counts.
  if (element.Is(0x0000, 0x0100)) {
    message.first_text =
        CommandName(bytes.WordAt(element.value_offset, kLittleEndian)).data();
  } else if (element.Is(0x0000, 0x0110) || element.Is(0x0000, 0x0120)) {
    message.message_id = bytes.WordAt(element.value_offset, kLittleEndian);
  }
  position = next;
  return true;
}

}  // namespace dicom
