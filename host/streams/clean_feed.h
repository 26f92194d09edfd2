#ifndef HOST_STREAMS_CLEAN_FEED_H_
#define HOST_STREAMS_CLEAN_FEED_H_

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/streams/pdu_cutter.h"
#include "host/streams/stream_assembler.h"

namespace host {

// Bytes of one PDU that are sent in packets of one size.
struct PacketRun {
  StreamPosition position = 0;
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
  explicit CleanFeed(const std::shared_ptr<ByteStore>& store);

  StreamAssembler& stream(std::uint32_t direction) {
    return streams_[direction];
  }
  const StreamAssembler& stream(std::uint32_t direction) const {
    return streams_[direction];
  }

  // Reports the handshake: SYN from side `syn_direction`. `ports` are those of
  // the sides 0 and 1.
  void Open(std::array<std::uint16_t, 2> ports, std::uint32_t syn_direction);
  // Reports a PDU with its acknowledgements. `items_are_whole` says whether its
  // PDV items fill it exactly. Open() comes first.
  void AddPdu(std::uint32_t direction, const CutPdu& pdu,
              bool* items_are_whole);
  // Reports the closing.
  void Close();

  bool opened() const { return opened_; }
  const std::vector<PacketRun>& runs() const { return runs_; }

  std::uint32_t PacketCount() const override;
  CopiedPacket CopyPacket(std::uint32_t number, PacketRoom room) const override;

 private:
  struct Header {
    std::uint32_t direction = 0;
    std::uint32_t sequence = 0;
    std::uint32_t acknowledgement = 0;
    std::uint8_t flags = 0;
  };

  void AddItems(std::uint32_t direction, const CutPdu& pdu,
                bool* items_are_whole);
  void RepairItemHeader(std::uint32_t direction, StreamPosition at,
                        StreamPosition pdu_end);
  void AddRun(std::uint32_t direction, StreamPosition from, StreamPosition to,
              std::uint32_t tail);
  Header HandshakeHeader(std::uint32_t number) const;
  Header InStep(std::uint32_t direction,
                const std::array<std::uint32_t, 2>& sent,
                std::uint8_t flags) const;
  CopiedPacket CopyData(std::uint32_t exchange, bool acknowledgement,
                        PacketRoom room) const;
  CopiedPacket WriteHeader(const Header& header, PacketRoom room) const;

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
