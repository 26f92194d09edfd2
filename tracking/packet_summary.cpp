#include "tracking/packet_summary.h"

#include <algorithm>
#include <array>

#include "tracking/command_set_walk.h"
#include "tracking/number_text.h"

namespace dicom {

// Deliberate: the row text is also the key to the accepts, so the two stay one.
const char kAssociateAcceptName[] = "A-ASSOCIATE-AC PDU";

namespace {

constexpr std::uint32_t kTagAndLength = 8;

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
  const ByteArrayView bytes(unread_);
  std::uint32_t position = skip_;
  while (const auto end = ReadElement(bytes, position, message)) {
    position = *end;
  }
  const std::uint32_t done = std::min(position, bytes.Length());
  skip_ = position - done;
  unread_.erase(unread_.begin(),
                unread_.begin() + static_cast<std::ptrdiff_t>(done));
}

// That the end cuts an element is asked, not caught, since it can be so for
// every PDV of a capture.
std::optional<std::uint32_t> MessageSummary::ReadElement(
    const ByteArrayView& bytes, std::uint32_t position,
    DimseMessageRecord& message) {
  const auto holds = [&](std::uint32_t offset, std::uint32_t count) {
    return offset <= bytes.Length() && count <= bytes.Length() - offset;
  };
  if (!holds(position, kTagAndLength)) return std::nullopt;
  const CommandElement element = *CommandElementAt(bytes, position);
  const bool is_command_field = element.Is(0x0000, 0x0100);
  const bool is_message_id =
      element.Is(0x0000, 0x0110) || element.Is(0x0000, 0x0120);
  if ((is_command_field || is_message_id) && !holds(element.value_offset, 2)) {
    return std::nullopt;
  }
  // Deliberate: 16 bits are read whatever the value length says, and of the two
  // message ID elements the later one counts.
  if (is_command_field) {
    message.first_text =
        CommandName(bytes.WordAt(element.value_offset, kLittleEndian));
  } else if (is_message_id) {
    message.message_id = bytes.WordAt(element.value_offset, kLittleEndian);
  }
  return element.End();
}

}  // namespace dicom
