#ifndef HOST_STREAMS_CLEAN_FEED_H_
#define HOST_STREAMS_CLEAN_FEED_H_

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/streams/connection.h"
#include "host/streams/stream_assembler.h"

namespace host {

// Bytes of one PDU that are sent in packets of one size.
struct PacketRun {
  StreamPosition position = 0;  // in its direction's stream
  std::uint64_t length = 0;
  std::uint32_t first = 0;  // its first data packet, counted over the feed
  // What each side has sent before it, modulo 2^32 as sequence numbers are.
  std::array<std::uint32_t, 2> sent{};
  std::uint16_t packet_bytes = 0;  // the last packet holds the rest
  std::uint8_t direction = 0;

  std::uint32_t packets() const {
    return static_cast<std::uint32_t>((length + packet_bytes - 1) /
                                      packet_bytes);
  }
};

// Shows PDUs to the module in the form in which it reads every one of them: a
// handshake, then packets with both numbers exactly in step, each with bytes of
// one PDU and of one PDV item only and each acknowledged at once, and at the
// end a FIN from both sides. Packets are made when they are asked for; kept are
// the streams and one entry for each PDV item.
class CleanFeed final : public PacketFeed {
 public:
  // Both directions' bytes are in `store`.
  explicit CleanFeed(const std::shared_ptr<ByteStore>& store);

  // The bytes of one direction, from which the packets are made.
  StreamAssembler& stream(std::uint32_t direction) {
    return streams_[direction];
  }

  // Reports the handshake: SYN from side `syn_direction`. `ports` are those of
  // the sides 0 and 1.
  void Open(std::array<std::uint16_t, 2> ports, std::uint32_t syn_direction);
  // Reports the bytes [from, to) of a direction's stream, with an
  // acknowledgement behind each packet. They are a PDU, or of one the bytes
  // that hold one PDV item; `tail` of them at the end are no part of the item.
  // Open() comes first; the answer is gone with the next call.
  const PacketRun& AddRun(std::uint32_t direction, StreamPosition from,
                          StreamPosition to, std::uint32_t tail);
  // Reports the closing: a FIN from each side. Nothing may follow.
  void Close();

  bool opened() const { return opened_; }

  std::uint32_t PacketCount() const override;
  CopiedPacket CopyPacket(std::uint32_t number, PacketRoom room) const override;

 private:
  // What the header of a packet has to say.
  struct PacketHeader {
    std::uint32_t direction = 0;
    std::uint32_t sequence = 0;
    std::uint32_t acknowledgement = 0;
    std::uint8_t flags = 0;
  };

  // `number` is 0, 1 or 2.
  PacketHeader HandshakeHeader(std::uint32_t number) const;
  // The header of a packet after which each side has sent `sent` bytes.
  PacketHeader InStep(std::uint32_t direction,
                      const std::array<std::uint32_t, 2>& sent,
                      std::uint8_t flags) const;
  // Makes data packet `exchange`, counted from 0 over the feed, or the packet
  // that acknowledges it.
  CopiedPacket CopyData(std::uint32_t exchange, bool acknowledgement,
                        PacketRoom room) const;
  CopiedPacket WriteHeader(const PacketHeader& header, PacketRoom room) const;

  std::array<StreamAssembler, 2> streams_;
  std::vector<PacketRun> runs_;
  std::uint32_t data_packets_ = 0;
  std::array<std::uint32_t, 2> sent_{};
  std::array<std::uint16_t, 2> ports_{};
  std::uint32_t syn_direction_ = 0;
  bool opened_ = false;
  bool closed_ = false;
};

}  // namespace host

#endif  // HOST_STREAMS_CLEAN_FEED_H_
