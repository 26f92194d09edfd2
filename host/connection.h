#ifndef HOST_CONNECTION_H_
#define HOST_CONNECTION_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace host {

// A point in time as capture files keep it: nanoseconds since 1970-01-01 UTC.
using Nanoseconds = std::int64_t;

// One packet as it is handed to the module: TCP header and payload.
struct TcpPacket {
  std::uint32_t direction =
      0;  // 0: the side of the first captured packet, else 1
  std::vector<std::uint8_t> tcp_bytes;  // at most DICOM_PACKET_BYTES
};

// The packets that one connection shows to the module, numbered from 0. Cheap
// to ask in any order; what was once reported never changes.
class PacketFeed {
 public:
  virtual ~PacketFeed() = default;
  virtual std::uint32_t PacketCount() const = 0;
  // Copies packet `number` to `bytes` (room for DICOM_PACKET_BYTES) and answers
  // its length in bytes; `direction` receives 0 or 1. `number` is less than
  // PacketCount().
  virtual std::uint32_t CopyPacket(std::uint32_t number, std::uint8_t* bytes,
                                   std::uint32_t* direction) const = 0;
};

// Where a PDU or message of the wire was in the capture. Frames are numbered
// from 1, as capture tools show them.
struct WireRecord {
  std::uint32_t direction = 0;
  std::uint64_t length =
      0;  // as the module's list shows it: PDU bytes, or both set lengths
  std::uint32_t first_frame = 0;
  std::uint32_t last_frame = 0;
  Nanoseconds time = 0;  // of the frame that completed it
  std::string
      note;  // for example "120 lost bytes were filled with zero"; or empty
};

// One TCP connection of the capture, ready to be offered to the module as a
// host window of its own.
struct Connection {
  std::string
      first_endpoint;  // direction 0, "192.0.2.10:41522" or "[2001:db8::1]:104"
  std::string second_endpoint;  // direction 1
  bool carries_dicom =
      false;  // its first payload in either direction begins like a PDU
  std::uint64_t captured_packets = 0;
  std::uint64_t payload_bytes = 0;  // both directions, each byte once
  Nanoseconds first_time = 0;
  Nanoseconds last_time = 0;
  std::unique_ptr<PacketFeed> feed;
  bool live = false;  // what the list call's `live` must say for this feed
  std::vector<WireRecord>
      pdus;  // in list order; empty when handed over as captured
  std::vector<WireRecord> messages;  // likewise
  std::vector<std::string>
      notes;  // one clear sentence each: losses, skipped bytes, TLS, ...
};

}  // namespace host

#endif  // HOST_CONNECTION_H_
