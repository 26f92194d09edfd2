#ifndef HOST_STREAMS_TRANSPORT_FACTS_H_
#define HOST_STREAMS_TRANSPORT_FACTS_H_

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/text/time_text.h"

namespace host {

// What TCP and the capture show of one connection, whatever it carries: plain
// data, of which the size does not depend on the connection's.

// A frame in which something happened. Frames are numbered from 1.
struct FrameMark {
  std::uint32_t frame = 0;
  Nanoseconds time = 0;
};

// What one side says of itself in TLS, as far as it is not encrypted.
struct TlsFacts {
  struct Alert {
    bool is_fatal = false;
    std::uint8_t description = 0;  // 48 is "unknown CA"
  };

  bool hello = false;
  // Of a hello: 0x0303 is TLS 1.2, 0x0304 TLS 1.3. The client's highest, the
  // server's choice.
  std::uint16_t version = 0;
  std::string server_name;  // that the client asks for; often empty
  std::optional<Alert> alert;
  // Among the first records: those that hold application data or, in TLS 1.3,
  // anything that is encrypted; the bytes of the last one; and the frames in
  // which the first, the last but one and the last ended, 0 for none.
  std::uint32_t encrypted_records = 0;
  std::uint32_t last_encrypted_bytes = 0;
  std::uint32_t first_encrypted_frame = 0;
  std::uint32_t last_but_one_encrypted_frame = 0;
  std::uint32_t last_encrypted_frame = 0;
};

// What one side of a connection sent. Counts are of packets unless they name
// something else; a packet that a mirror port doubled counts once, under
// `duplicates` only the second time.
struct SideFacts {
  std::uint64_t packets = 0;
  std::uint64_t payload_packets = 0;
  std::uint32_t syns = 0;  // one for each attempt
  std::optional<FrameMark> syn;
  std::optional<FrameMark> first_payload;
  std::optional<FrameMark> last_payload;
  std::optional<FrameMark> last;  // whatever it held
  std::optional<FrameMark> fin;
  std::optional<FrameMark> rst;
  bool acknowledged = false;  // the other side's SYN, or anything later
  // Its last packets, to which nothing came back any more, and how many of
  // them repeat payload.
  std::uint32_t unheard = 0;
  std::uint32_t unheard_retransmissions = 0;

  std::uint32_t retransmissions = 0;
  // The silences that ended with a retransmission, of both sides together.
  Nanoseconds retransmission_wait = 0;
  std::uint32_t zero_windows = 0;
  Nanoseconds zero_window_time = 0;  // until it could take data again

  std::uint32_t duplicates = 0;   // the same packet once more, by a mirror port
  std::uint32_t cut_packets = 0;  // by the snap length
  std::uint64_t cut_bytes = 0;
  // Longer than the other side takes (or, where that is not known, than any
  // wire carries): captured before offload cut them or after it joined them.
  std::uint32_t offloaded_packets = 0;
  std::uint32_t longest_payload = 0;       // of a packet, in bytes
  std::uint32_t unfinished_checksums = 0;  // left to the network adapter
  // Payload bytes that are missing although the other side acknowledged them.
  std::uint64_t lost_bytes = 0;

  // What it sent first, at most kFirstBytes.
  static constexpr std::size_t kFirstBytes = 64;
  std::vector<std::uint8_t> first_bytes;
  std::optional<TlsFacts> tls;  // where its stream begins like TLS
};

struct TransportFacts {
  // The side whose SYN, or whose SYN's answer, was captured.
  std::optional<std::uint32_t> opener;
  std::array<SideFacts, 2> sides;

  // The longest time in which neither side sent anything.
  struct Silence {
    Nanoseconds duration = 0;
    std::uint32_t from_frame = 0;
    std::uint32_t to_frame = 0;
  } silence;
};

}  // namespace host

#endif  // HOST_STREAMS_TRANSPORT_FACTS_H_
