#ifndef HOST_MODULE_HOST_WINDOW_H_
#define HOST_MODULE_HOST_WINDOW_H_

#include <windows.h>

#include <cstdint>
#include <exception>
#include <limits>

#include "host/module/display_state.h"
#include "host/module/window_handle.h"
#include "host/streams/connection.h"

namespace host {

// The window by which the module knows one connection. Never shown. It answers
// the module's message for packets from the connection's feed and carries the
// display state. Lives on the thread that calls the module.
class HostWindow {
 public:
  // The feed must outlive the window. Throws Failure.
  explicit HostWindow(const PacketFeed& feed);
  HostWindow(const HostWindow&) = delete;
  HostWindow& operator=(const HostWindow&) = delete;

  HWND Handle() const { return window_.get(); }
  DisplayState& State() { return state_; }

  // Packets that the module is told of: those of the feed, or fewer after
  // LimitPackets.
  std::uint32_t PacketCount() const;
  void LimitPackets(std::uint32_t count) { limit_ = count; }
  void LiftLimit() { limit_ = kNoLimit; }

  // What the module has asked for since StartReading, by which one sees whether
  // it still gets on. It takes packets one after the other, and fetches some of
  // them again. After a failure it begins anew at the first one.
  void StartReading() { taken_ = next_packet_ = 0; }
  std::uint32_t PacketsTaken() const { return taken_; }      // different ones
  std::uint32_t NextPacket() const { return next_packet_; }  // to be taken
  std::uint64_t PacketsFetchedAgain() const { return fetched_again_; }

  // The module asks for packets, and what the feed throws must not pass through
  // it: throws the first of that once, behind the module's call.
  void RethrowFailure();

 private:
  // As many packets as the module can count.
  static constexpr std::uint32_t kNoLimit =
      std::numeric_limits<std::int32_t>::max();

  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM code,
                                    LPARAM data);
  // Answers the message for packets: 0, or another value for "no".
  LRESULT Answer(WPARAM code, LPARAM data);
  // Fills the record with the packet; false, and the record as it was but for
  // its index, when there is no such packet or no room for it.
  bool Deliver(std::int64_t number, DicomPacketRecord& record);

  const PacketFeed& feed_;
  DisplayState state_;
  WindowHandle window_;
  std::uint32_t limit_ = kNoLimit;
  std::uint32_t taken_ = 0;
  std::uint32_t next_packet_ = 0;
  std::uint64_t fetched_again_ = 0;
  std::exception_ptr failure_;  // of the feed
};

}  // namespace host

#endif  // HOST_MODULE_HOST_WINDOW_H_
