#ifndef TRACKING_MESSAGE_ASSEMBLER_H_
#define TRACKING_MESSAGE_ASSEMBLER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

#include "tracking/packet_source.h"
#include "tracking/packet_summary.h"
#include "tracking/records.h"
#include "tracking/tcp_segment.h"

namespace dicom {

// Follows the PDV items inside P-DATA-TF PDUs and lists the DIMSE messages they
// make up. A message is listed when its command set ends and replaced as its
// data set completes.
class MessageAssembler {
 public:
  // Takes `length` bytes at `offset` of the segment's TCP bytes, contents of
  // P-DATA-TF PDUs. Summaries fetch earlier packets from `source`. Throws
  // OutOfRange when the chunk's first PDV header is cut, and what the source
  // throws; what was done before the failure stays done.
  void Feed(const TcpSegment& segment, std::uint32_t offset,
            std::uint32_t length, PacketSource& source);

  // Closes the two messages that are still being filled, at the end of a
  // capture.
  void Flush();

  const std::deque<DimseMessageRecord>& Messages() const { return messages_; }

 private:
  // One direction's message and where it stands in its PDV.
  struct PdvStream {
    std::uint32_t missing = 0;  // bytes of the current PDV value not yet seen
    bool is_command = false;
    bool last_fragment = true;  // so that the first command starts a message
    DimseMessageRecord message;
    MessageSummary summary;
    std::optional<std::size_t> newest_entry;  // of the message, in the list
  };

  // One call's piece of a stream: which bytes, and how far they are used up.
  struct Chunk {
    ByteArrayView bytes;  // never beyond the segment, so perhaps fewer than:
    std::uint32_t packet_number;
    std::uint32_t offset;
    std::uint32_t length;
    std::uint32_t consumed;
    std::uint8_t direction;

    std::uint32_t Left() const { return length - consumed; }
  };

  // Both read a PDV header, the one at the chunk's first byte and the one
  // behind what is used up, start a message where it says so, and use it up.
  // OutOfRange when the end of the segment cuts it.
  void ReadFirstHeader(PdvStream& stream, Chunk& chunk);
  void ReadNextHeader(PdvStream& stream, Chunk& chunk);

  // Lists a message for each PDV value that ends before the chunk does. False
  // when the chunk is used up, or ends in fewer bytes than a header has.
  bool ListValuesThatEndInside(PdvStream& stream, Chunk& chunk,
                               PacketSource& source);

  // The stream goes on with a new message, of the next number.
  void StartMessage(PdvStream& stream, std::uint8_t direction,
                    std::uint8_t context_id);

  // Counts the chunk's next `count` bytes to the stream's message, without
  // using them up.
  static void TakeValue(PdvStream& stream, const Chunk& chunk,
                        std::uint32_t count);

  // Lists the stream's message as it is now, with the texts of its command set.
  void ListMessage(PdvStream& stream, PacketSource& source);

  // Nothing when the message is not listed.
  void ReplaceNewestEntry(PdvStream& stream);

  // Where the newest entry with the message's number is. Both directions have a
  // message 0, of the data before any command: they share its entries.
  std::optional<std::size_t>& NewestEntry(PdvStream& stream);

  // Lists the message as far as it came: in the place of the entry at the
  // position that its number names, if there is one and its lengths differ; at
  // the end, if there is none and it has a command.
  void FlushStream(const DimseMessageRecord& message);

  std::uint32_t message_counter_ = 0;
  std::array<PdvStream, 2> streams_;  // by direction
  std::deque<DimseMessageRecord> messages_;
  std::optional<std::size_t> newest_entry_of_message_0_;
};

}  // namespace dicom

#endif  // TRACKING_MESSAGE_ASSEMBLER_H_
