#ifndef PLUGIN_PACKET_ACCESSOR_H_
#define PLUGIN_PACKET_ACCESSOR_H_

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "plugin/early_segment_store.h"
#include "plugin/host_packets.h"
#include "tracking/segment_history.h"
#include "tracking/tcp_segment.h"

namespace dicom {

// Reads the host's packets one after the other and delivers the TCP segments of
// one connection in stream order: waits for a handshake, follows the expected
// sequence numbers of both directions, sets early segments aside and takes them
// back when their turn comes, and starts over after a reset or when both sides
// have closed. It lives between list calls, so each goes on where the one
// before stopped.
class PacketAccessor {
 public:
  // `history` is the host context's.
  explicit PacketAccessor(std::shared_ptr<SegmentHistory> history)
      : history_(std::move(history)) {}

  void SetHostWindow(HWND host_window) { packet_.SetHostWindow(host_window); }

  // The next segment that the history reports ready; nothing when the host has
  // no further packet now. The bytes stay until the next call. Throws
  // HandleNotSet, ArrayTooShort, UnableToGetPacketFromTapvane, Unexpected.
  std::optional<TcpSegment> ReadNextSegment();

  // At the end of a capture: a segment that the history still holds, settled or
  // not; nothing when there is none. Throws HandleNotSet, ArrayTooShort,
  // UnableToGetPacketFromTapvane.
  std::optional<TcpSegment> ReadLeftoverSegment();

  // The last packet delivered as the next one; -1, as hosts are asked for the
  // first packet, before that.
  std::int32_t CurrentPacketIndex() const { return current_index_; }

 private:
  enum class HandshakeStep { kFound, kReset, kNoMorePackets };

  // Both fill segment_ from the host: with the packet behind the current one,
  // which it becomes, false when there is none; or with an earlier one, which
  // the host has to deliver. Throw what a Read does.
  bool FetchNextPacket();
  void FetchPacket(std::uint32_t number);
  void Refill();

  // Reads on to the end of a handshake and synchronises with it; false when the
  // packets end before that.
  bool FindHandshake();
  // Its three packets; the one that was found is segment_.
  bool FindSyn();
  HandshakeStep FindAnswer();
  HandshakeStep FindClosingAck();
  void Synchronise();

  // One step: reads one packet and decides what it is. False when there is
  // none.
  bool AdvanceStream();
  // An early segment whose turn has come, or else the next packet.
  bool FetchForStream();
  // Whether segment_ is the one that is expected.
  bool IsInOrder() const;
  bool Matches(std::size_t side, std::uint32_t number) const;
  // The expected number, or the one behind it when the side has closed.
  std::uint32_t NumberBehindFin(std::size_t side) const;
  // segment_ goes to the history or settles what is there; or it is set aside
  // or dropped.
  void TakeInOrder();
  void CountInOrder();
  void TakeOutOfOrder();

  HostPacketRecord packet_;
  TcpSegment segment_;  // refilled from the record after each fetch
  std::shared_ptr<SegmentHistory> history_;
  EarlySegmentStore early_segments_;
  std::array<std::uint32_t, 2> expected_{};  // sequence number by side
  std::array<bool, 2> fin_seen_{};           // by side
  bool synchronised_ = false;   // a handshake was found and is not over yet
  bool segment_ready_ = false;  // the history may have a settled segment
  std::int32_t current_index_ = -1;
};

}  // namespace dicom

#endif  // PLUGIN_PACKET_ACCESSOR_H_
