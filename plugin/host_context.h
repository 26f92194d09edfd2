#ifndef PLUGIN_HOST_CONTEXT_H_
#define PLUGIN_HOST_CONTEXT_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

#include "plugin/packet_accessor.h"
#include "tracking/pdu_reassembler.h"
#include "tracking/presentation_context_table.h"
#include "tracking/segment_history.h"

namespace dicom {

// What is known of one host window's capture: its PDUs, its messages and the
// accepted presentation contexts. The bytes stay with the host.
class HostContext {
 public:
  explicit HostContext(HWND host_window) : source_(host_window) {}

  // The window that earlier packets are fetched from while segments are
  // processed.
  void SetHostWindow(HWND host_window) { source_.SetHostWindow(host_window); }

  // PduReassembler's, with what it throws.
  void ProcessSegment(const TcpSegment& segment) {
    reassembler_.ProcessSegment(segment, source_);
  }
  // The end of the capture: lists what is incomplete, once.
  void Flush() { reassembler_.Flush(); }

  // Reads the accepts among the PDUs. Throws UnableToGetPacketFromTapvane.
  // Deliberate: once only. After a walk that met at least one accept it does
  // nothing more, so an association that is accepted later is not read.
  void BuildPresentationContexts();

  const PduReassembler& Reassembler() const { return reassembler_; }
  const PresentationContextTable& PresentationContexts() const {
    return presentation_contexts_;
  }
  const std::shared_ptr<SegmentHistory>& History() const { return history_; }

 private:
  // Whether the PDU at that position of the list is an A-ASSOCIATE-AC.
  bool IsAccept(std::size_t position) const;

  HostPacketSource source_;
  std::shared_ptr<SegmentHistory> history_ = std::make_shared<SegmentHistory>();
  PduReassembler reassembler_;
  PresentationContextTable presentation_contexts_;
  bool presentation_contexts_built_ = false;
  // The PDUs before this position are no accepts and need no second look.
  std::size_t first_unread_pdu_ = 0;
};

// The contexts of all host windows, with their packet accessors, in two maps by
// window handle. Entries are shared, so that a driver can keep its own while a
// call from inside the host removes them here.
class HostContexts {
 public:
  // The window's entry, made when there is none.
  std::shared_ptr<HostContext> ContextOf(HWND host_window);
  std::shared_ptr<PacketAccessor> AccessorOf(HWND host_window,
                                             const HostContext& context);

  // Drops both; the next list call reads the capture from its first packet.
  void Remove(HWND host_window);

 private:
  std::map<std::uintptr_t, std::shared_ptr<HostContext>> contexts_;
  std::map<std::uintptr_t, std::shared_ptr<PacketAccessor>> accessors_;
};

}  // namespace dicom

#endif  // PLUGIN_HOST_CONTEXT_H_
