#ifndef TRACKING_PACKET_SUMMARY_H_
#define TRACKING_PACKET_SUMMARY_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tracking/packet_span.h"
#include "tracking/records.h"

namespace dicom {

// The name by which the PDU view lists a PDU. The texts live forever.
const char* PduName(std::uint8_t pdu_type);

// The PDU name by which accepted presentation contexts are found.
extern const char kAssociateAcceptName[];

// The second text of a message row, "Message Id: 7"; empty without a message
// ID.
std::string SecondText(const DimseMessageRecord& message);

// Derives a message's texts from its command set. A message can be listed many
// times while it grows, so the walk over the command set goes on from the last
// whole element instead of starting again: the bytes before it cannot change.
// Deliberate: packets read once are not asked for again, also when the host
// would by now refuse them.
class MessageSummary {
 public:
  // Walks what the first `command_length` bytes of the message's spans hold now
  // and sets the texts that it finds; the others stay. Throws
  // UnableToGetPacketFromTapvane.
  // Deliberate: these are the first bytes whatever PDVs they came in, data PDVs
  // included.
  void Build(DimseMessageRecord& message, PacketSource& source);

 private:
  // Takes what the element at `position` says into the message's texts and
  // answers where it ends. Nothing at the end of the bytes or where that cuts
  // what is read of the element: the rest has not come yet, or never will.
  static std::optional<std::uint32_t> ReadElement(const ByteArrayView& bytes,
                                                  std::uint32_t position,
                                                  DimseMessageRecord& message);

  SpanGatherer gatherer_;
  std::vector<std::uint8_t> unread_;  // gathered, from the next element on
  std::uint32_t skip_ = 0;            // bytes to pass over before that element
};

}  // namespace dicom

#endif  // TRACKING_PACKET_SUMMARY_H_
