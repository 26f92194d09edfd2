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

  // The number of packets of the capture; nothing when the host refuses.
  std::optional<std::int32_t> GetPacketCount() const {
    return HostPacketRecord::AskPacketCount(packet_.HostWindow());
  }

  // Delivers the next segment that the history reports ready; false when the
  // host has no further packet now. The bytes stay until the next call. Throws
  // HandleNotSet, ArrayTooShort, UnableToGetPacketFromTapvane, Unexpected.
  bool ReadNextSegment(TcpSegment& segment);

  // At the end of a capture: delivers a segment that the history still holds,
  // settled or not; false when there is none. Throws HandleNotSet,
  // ArrayTooShort, UnableToGetPacketFromTapvane.
  bool ReadLeftoverSegment(TcpSegment& segment);

  // The last packet delivered as the next one; -1 before the first.
  std::int32_t CurrentPacketIndex() const { return current_index_; }

 private:
  enum class HandshakeStep { kFound, kReset, kNoMorePackets };

  bool FetchNextPacket();
  bool FetchPacket(std::int32_t index);
  void RequirePacket(std::int32_t index);
  void Refill();

  bool FindHandshake();
  bool FindSyn();
  HandshakeStep FindAnswer();
  HandshakeStep FindClosingAck();
  void Synchronise();

  bool AdvanceStream();
  bool FetchForStream();
  bool IsInOrder() const;
  bool Matches(std::size_t side, std::uint32_t number) const;
  std::uint32_t NumberBehindFin(std::size_t side) const;
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
