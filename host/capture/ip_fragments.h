#ifndef HOST_CAPTURE_IP_FRAGMENTS_H_
#define HOST_CAPTURE_IP_FRAGMENTS_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "host/capture/ip_fragment.h"
#include "host/capture/tcp_frame.h"
#include "host/text/time_text.h"

namespace host {

// What an IP packet held that came in fragments.
struct WholePacket {
  IpPacketName name;
  // Up to the first byte that a snap length has cut.
  std::vector<std::uint8_t> bytes;
  std::uint32_t wire_length = 0;
  std::vector<FramePart> parts;  // in the order of the bytes
};

// Puts the fragments of IP packets together, whatever order they come in. Of
// bytes that come twice the first copy counts. Packets that stay incomplete are
// given up half a minute later, as the hosts do, or earlier when too much
// waits: memory is bounded.
class IpFragments {
 public:
  // The packet that this fragment completes, null as long as there is none.
  // Valid until the next call; the fragment's bytes may be of the answer
  // before.
  const WholePacket* Add(const IpFragment& fragment, std::uint32_t frame,
                         Nanoseconds time);

  // Fragments whose packets have not become whole.
  std::uint64_t left_out() const { return left_out_; }
  // Fragments that overlap others, but for such as repeat one.
  std::uint64_t overlaps() const { return overlaps_; }

 private:
  // Bytes that one fragment brought and none before it.
  struct Piece {
    std::uint32_t length = 0;  // on the wire
    std::vector<std::uint8_t> bytes;
    FramePart from;
  };
  // A fragment as it came.
  struct Seen {
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
    std::uint64_t hash = 0;  // of its bytes

    bool operator==(const Seen&) const = default;
  };
  struct Packet {
    std::uint64_t order = 0;
    Nanoseconds time = 0;                   // of the first fragment
    std::map<std::uint32_t, Piece> pieces;  // by offset; none overlap
    std::map<std::uint32_t, Seen> seen;     // by offset, the first there
    std::optional<std::uint32_t> length;    // once the last one has come
    std::uint32_t covered = 0;              // bytes that have come
    std::uint32_t fragments = 0;
    std::size_t memory = 0;
    bool is_whole = false;  // and handed on: kept to know repeated fragments
  };
  using Packets = std::map<IpPacketName, Packet>;

  // The packet that the fragment belongs to; null if it is known already.
  Packet* FindPacket(const IpFragment& fragment, const Seen& seen);
  void Insert(const IpFragment& fragment, const FramePart& from,
              Packet& packet);
  // Keeps the fragment's bytes [begin, end), counted in the packet.
  void Keep(const IpFragment& fragment, std::uint32_t begin, std::uint32_t end,
            const FramePart& from, Packet& packet);
  // The packet's length is known: forgets what lies behind it.
  void SetLength(std::uint32_t length, Packet& packet);
  void Assemble(const IpPacketName& name, Packet& packet);
  // Gives up what is too old or too much.
  void Age();
  void Charge(std::size_t bytes, Packet& packet);

  Packets packets_;
  // In the order in which they began, with such as are there no more.
  std::deque<std::pair<IpPacketName, std::uint64_t>> by_age_;
  std::uint64_t begun_ = 0;
  Nanoseconds clock_ = 0;
  std::size_t memory_ = 0;
  std::uint64_t left_out_ = 0;
  std::uint64_t overlaps_ = 0;
  WholePacket whole_;
};

}  // namespace host

#endif  // HOST_CAPTURE_IP_FRAGMENTS_H_
