#include "plugin/host_packets.h"

#include <algorithm>

#include "errors/errors.h"

namespace dicom {
namespace {

constexpr LRESULT kHostSucceeded = 0;
constexpr std::int32_t kNoCount = -1;

}  // namespace

std::optional<std::int32_t> HostPacketRecord::AskPacketCount(HWND host_window) {
  std::int32_t count = kNoCount;
  const LRESULT answer =
      ::SendMessageA(host_window, DICOM_HOST_MESSAGE, DICOM_COUNT_PACKETS,
                     reinterpret_cast<LPARAM>(&count));
  if (answer != kHostSucceeded) return std::nullopt;
  return count;
}

bool HostPacketRecord::FetchNext(std::int32_t current) {
  const std::optional<std::int32_t> count = PrepareAndCount(current);
  // A refused count is no error: the host's answer to the fetch decides.
  if (count && std::int64_t{current} + 1 >= *count) return false;
  return Ask(DICOM_FETCH_NEXT_PACKET);
}

bool HostPacketRecord::Fetch(std::int32_t index) {
  const std::optional<std::int32_t> count = PrepareAndCount(index);
  // Deliberate: unlike above, an index equal to the count is still sent.
  if (count && index > *count) return false;
  return Ask(DICOM_FETCH_PACKET);
}

std::optional<std::int32_t> HostPacketRecord::PrepareAndCount(
    std::int32_t index) {
  if (!host_window_) throw HandleNotSet();
  record_.index = index;
  record_.buffer_size = DICOM_PACKET_RECORD_SIZE;
  return AskPacketCount(*host_window_);
}

bool HostPacketRecord::Ask(WPARAM code) {
  return ::SendMessageA(*host_window_, DICOM_HOST_MESSAGE, code,
                        reinterpret_cast<LPARAM>(&record_)) == kHostSucceeded;
}

std::uint32_t HostPacketRecord::Length() const {
  return std::min<std::uint32_t>(record_.tcp_bytes, DICOM_PACKET_BYTES);
}

ByteArrayView HostPacketSource::PacketBytes(std::uint32_t number) {
  const auto index = static_cast<std::int32_t>(number);
  if (!packet_.Fetch(index) || packet_.Index() != index) {
    throw UnableToGetPacketFromTapvane();
  }
  return {packet_.Bytes(), packet_.Length()};
}

}  // namespace dicom
