#ifndef PLUGIN_HOST_PACKETS_H_
#define PLUGIN_HOST_PACKETS_H_

#include <cstdint>
#include <optional>

#include "interface/host_interface.h"
#include "tracking/packet_source.h"

namespace dicom {

// One packet record and the host messages that fill it. The record is cleared
// once, never between fetches: that would cost more than all the rest of one.
class HostPacketRecord {
 public:
  // The window that is asked from now on.
  void SetHostWindow(HWND host_window) { host_window_ = host_window; }

  // The number of packets in the capture; nothing when the host refuses. The
  // record's own window need not be set.
  static std::optional<std::int32_t> AskPacketCount(HWND host_window);

  // Asks for the packet after `current` (-1: the first). False when the capture
  // has none or the host refuses. Throws HandleNotSet without a host window.
  bool FetchNext(std::int32_t current);

  // Asks for packet `index`; false when the host refuses. Whether it delivered
  // that one, Index() says. Throws HandleNotSet without a host window.
  bool Fetch(std::int32_t index);

  // What the last fetch delivered. The bytes stay until the next one.
  std::int32_t Index() const { return record_.index; }
  const std::uint8_t* Bytes() const { return record_.bytes; }
  std::uint32_t Length() const;  // bytes, at most what a record holds
  std::uint8_t Direction() const { return record_.direction != 0 ? 1 : 0; }

 private:
  // Writes what a request for `index` tells the host, and asks for the count as
  // before every request; nothing when the host refuses that.
  std::optional<std::int32_t> PrepareAndCount(std::int32_t index);

  // False when the host refuses.
  bool Ask(WPARAM code);

  std::optional<HWND> host_window_;
  DicomPacketRecord record_{};
};

// Fetches earlier packets by number, into a record of its own: what it delivers
// never disturbs the segment that is being processed.
class HostPacketSource : public PacketSource {
 public:
  explicit HostPacketSource(HWND host_window) {
    packet_.SetHostWindow(host_window);
  }
  void SetHostWindow(HWND host_window) { packet_.SetHostWindow(host_window); }

  ByteArrayView PacketBytes(std::uint32_t number) override;

 private:
  HostPacketRecord packet_;
};

}  // namespace dicom

#endif  // PLUGIN_HOST_PACKETS_H_
