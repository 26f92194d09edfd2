#ifndef TRACKING_MESSAGE_ASSEMBLER_H_
#define TRACKING_MESSAGE_ASSEMBLER_H_

#include <array>
#include <cstdint>
#include <deque>
#include <vector>

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
  struct Stream {
    std::uint32_t missing = 0;  // bytes of the current PDV value not yet seen
    bool is_command = false;
    bool last_fragment = true;  // so that the first command starts a message
    DimseMessageRecord message;
    MessageSummary summary;
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

  void ReadFirstHeader(Stream& stream, Chunk& chunk);
  void ReadNextHeader(Stream& stream, Chunk& chunk);
  bool ListValuesThatEndInside(Stream& stream, Chunk& chunk,
                               PacketSource& source);
  void StartMessage(Stream& stream, std::uint8_t direction,
                    std::uint8_t context_id);
  static void TakeValue(Stream& stream, const Chunk& chunk,
                        std::uint32_t count);
  void ListMessage(Stream& stream, PacketSource& source);
  void ReplaceNewestEntry(const DimseMessageRecord& message);
  void FlushStream(const DimseMessageRecord& message);

  std::uint32_t message_counter_ = 0;
  std::array<Stream, 2> streams_;  // by direction
  std::deque<DimseMessageRecord> messages_;
  // By message number: the list position of its newest entry plus 1, 0 for
  // none. Spares the search from the newest entry backwards.
  std::vector<std::uint32_t> newest_entry_ = {0};
};

}  // namespace dicom

#endif  // TRACKING_MESSAGE_ASSEMBLER_H_
