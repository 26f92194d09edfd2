#ifndef HOST_STREAMS_CONNECTION_H_
#define HOST_STREAMS_CONNECTION_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/capture/frame_names.h"
#include "host/streams/transfer_facts.h"
#include "host/streams/transport_facts.h"
#include "host/text/time_text.h"
#include "interface/host_interface.h"

namespace host {

// Room for the largest packet that the module takes.
using PacketRoom = std::span<std::uint8_t, DICOM_PACKET_BYTES>;

struct CopiedPacket {
  std::uint32_t bytes = 0;      // of the room that it takes
  std::uint32_t direction = 0;  // 0 or 1
};

// The packets that one connection shows to the module, numbered from 0. Cheap
// to ask in any order; what was once reported never changes.
class PacketFeed {
 public:
  virtual ~PacketFeed() = default;
  virtual std::uint32_t PacketCount() const = 0;
  // Copies a packet, from its TCP header on. `number` is less than
  // PacketCount(). Throws Failure when its bytes cannot be read back.
  virtual CopiedPacket CopyPacket(std::uint32_t number,
                                  PacketRoom room) const = 0;
};

// Where a PDU or message of the wire was in the capture. Frames are numbered
// from 1 over the capture, whose names say what they are called, and are 0 when
// nothing of it was captured.
struct WireRecord {
  std::uint32_t direction = 0;
  // As the module's list shows it: PDU bytes, or the sum of both set lengths.
  std::uint64_t length = 0;
  std::uint32_t first_frame = 0;  // the frames that its bytes came from
  std::uint32_t last_frame = 0;
  Nanoseconds time = 0;  // of last_frame
  // False for what was on the wire and has no row in the module's list; `note`
  // says why.
  bool listed = true;
  std::string note;  // "120 lost bytes were filled with zero"; often empty
  std::optional<std::uint16_t> status = {};  // of a response message
  // When it was there with all before it in its direction: later than `time`
  // where its bytes came before others that it had to wait for.
  Nanoseconds complete_time = 0;
};

// Bytes of one direction that nobody captured, and the frames with those before
// and behind them.
struct StreamGap {
  std::uint32_t frame_before = 0;
  std::uint32_t frame_behind = 0;
  std::uint64_t bytes = 0;
};

class PduObserver;

// One TCP connection of the capture, ready to be offered to the module as a
// host window of its own.
struct Connection {
  std::uint32_t index = 0;  // in the capture, all parts of it, from 0
  // Direction 0 sent the first captured packet: "192.0.2.10:41522" or
  // "[2001:db8::1]:104".
  std::string first_endpoint;
  std::string second_endpoint;
  // Its first payload in either direction begins like a PDU, or PDUs were found
  // in it.
  bool carries_dicom = false;
  std::uint64_t captured_packets = 0;
  std::uint64_t payload_bytes = 0;  // both directions, each byte once
  Nanoseconds first_time = 0;
  Nanoseconds last_time = 0;  // the latest, should the clock have stepped
  std::unique_ptr<PacketFeed> feed;
  // Whoever was asked to see the PDUs of clean streams; else null. It reads
  // bytes of `feed`. Shared so that this header need not know it.
  std::shared_ptr<PduObserver> observer;
  bool live = false;  // what the list call's `live` must say for this feed
  // The records of the wire in list order; both are empty when the packets are
  // handed over as captured. The n-th row of a list is the n-th `listed` one.
  std::vector<WireRecord> pdus;
  std::vector<WireRecord> messages;
  // One clear sentence each: losses, skipped bytes, streams that are no DICOM.
  std::vector<std::string> notes;
  // Where bytes are missing between such as came from different files of the
  // capture; known at the end of clean streams.
  std::vector<StreamGap> gaps;
  // What its frames are called; null where their numbers do.
  std::shared_ptr<const FrameNames> frame_names;
  // Its streams' beginnings and losses are known for clean streams only.
  TransportFacts transport;
  TransferFacts transfer;

  const FrameNames& names() const {
    static const FrameNames kNumbers;
    return frame_names ? *frame_names : kNumbers;
  }
};

}  // namespace host

#endif  // HOST_STREAMS_CONNECTION_H_
