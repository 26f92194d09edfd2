#include "host/module/host_window.h"

#include <algorithm>
#include <utility>

namespace host {
namespace {

constexpr wchar_t kClassName[] = L"DicomReferenceHost";
// Extra window memory: the display state's address, where the module looks for
// it, and behind it our own object.
constexpr int kObjectIndex = DICOM_DISPLAY_STATE_INDEX + sizeof(LONG_PTR);
constexpr int kExtraBytes = kObjectIndex + sizeof(LONG_PTR);

constexpr LRESULT kDone = 0;
constexpr LRESULT kRefused = 1;

LONG_PTR AsLong(const void* address) {
  return static_cast<LONG_PTR>(reinterpret_cast<std::uintptr_t>(address));
}

void RegisterClassOnce(WNDPROC procedure) {
  WNDCLASSW window_class{};
  window_class.lpfnWndProc = procedure;
  window_class.cbWndExtra = kExtraBytes;
  window_class.hInstance = GetModuleHandleW(nullptr);
  window_class.lpszClassName = kClassName;
  RegisterClassW(&window_class);  // fails harmlessly from the second time on
}

}  // namespace

HostWindow::HostWindow(const PacketFeed& feed) : feed_(feed) {
  RegisterClassOnce(OnMessage);
  window_ = MakeHiddenWindow(kClassName, 0);
  SetWindowLongPtrW(window_.get(), DICOM_DISPLAY_STATE_INDEX,
                    AsLong(state_.Block()));
  SetWindowLongPtrW(window_.get(), kObjectIndex, AsLong(this));
}

std::uint32_t HostWindow::PacketCount() const {
  return std::min(feed_.PacketCount(), limit_);
}

LRESULT CALLBACK HostWindow::OnMessage(HWND window, UINT message, WPARAM code,
                                       LPARAM data) {
  auto* self =
      reinterpret_cast<HostWindow*>(GetWindowLongPtrW(window, kObjectIndex));
  if (message == DICOM_HOST_MESSAGE && self != nullptr) {
    return self->Answer(code, data);
  }
  return DefWindowProcW(window, message, code, data);
}

LRESULT HostWindow::Answer(WPARAM code, LPARAM data) {
  if (code == DICOM_COUNT_PACKETS) {
    *reinterpret_cast<std::int32_t*>(data) =
        static_cast<std::int32_t>(PacketCount());
    return kDone;
  }
  auto& record = *reinterpret_cast<DicomPacketRecord*>(data);
  if (code == DICOM_FETCH_PACKET) {
    if (!Deliver(record.index, record)) return kRefused;
    ++fetched_again_;
    return kDone;
  }
  if (code == DICOM_FETCH_NEXT_PACKET) {
    if (!Deliver(std::int64_t{record.index} + 1, record)) return kRefused;
    next_packet_ = static_cast<std::uint32_t>(record.index) + 1;
    taken_ = std::max(taken_, next_packet_);
    return kDone;
  }
  return kRefused;
}

bool HostWindow::Deliver(std::int64_t number, DicomPacketRecord& record) {
  if (number < 0 || number >= PacketCount()) return false;
  if (record.buffer_size < sizeof record) return false;
  record.index = static_cast<std::int32_t>(number);
  try {
    const CopiedPacket copied =
        feed_.CopyPacket(static_cast<std::uint32_t>(number), record.bytes);
    record.tcp_bytes = copied.bytes;
    record.direction = copied.direction;
  } catch (const std::exception&) {
    if (!failure_) failure_ = std::current_exception();
    return false;
  }
  return true;
}

void HostWindow::RethrowFailure() {
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

}  // namespace host
