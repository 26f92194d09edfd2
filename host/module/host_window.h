#ifndef HOST_MODULE_HOST_WINDOW_H_
#define HOST_MODULE_HOST_WINDOW_H_

#include <windows.h>

#include <cstdint>
#include <limits>

#include "host/module/display_state.h"
#include "host/streams/connection.h"

namespace host {

// The window by which the module knows one connection. Never shown. It answers
// the module's message for packets from the connection's feed and carries the
// display state. Lives on the thread that calls the module.
class HostWindow {
 public:
  // The feed must outlive the window. Throws Failure.
  explicit HostWindow(const PacketFeed& feed);
  ~HostWindow();
  HostWindow(const HostWindow&) = delete;
  HostWindow& operator=(const HostWindow&) = delete;

  HWND Handle() const { return window_; }
  DisplayState& State() { return state_; }

  // Packets that the module is told of: those of the feed, or fewer after
  // LimitPackets.
  std::uint32_t PacketCount() const;
  void LimitPackets(std::uint32_t count) { limit_ = count; }

  // What the module has asked for since StartReading, to tell whether it still
  // gets on. "Taken" is fetched by code 151, one after the other.
  void StartReading() { taken_ = position_ = 0; }
  std::uint32_t PacketsTaken() const { return taken_; }  // highest number + 1
  std::uint32_t Position() const { return position_; }   // last number + 1
  std::uint64_t PacketsFetchedAgain() const { return fetched_again_; }

 private:
  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM code,
                                    LPARAM data);
  LRESULT Answer(WPARAM code, LPARAM data);
  bool Deliver(std::int64_t number, DicomPacketRecord& record) const;

  const PacketFeed& feed_;
  DisplayState state_;
  HWND window_ = nullptr;
  std::uint32_t limit_ = std::numeric_limits<std::int32_t>::max();
  std::uint32_t taken_ = 0;
  std::uint32_t position_ = 0;
  std::uint64_t fetched_again_ = 0;
};

}  // namespace host

#endif  // HOST_MODULE_HOST_WINDOW_H_
