#include "plugin/host_context.h"

#include <string_view>
#include <vector>

#include "tracking/packet_summary.h"

namespace dicom {
namespace {

std::uintptr_t KeyOf(HWND host_window) {
  return reinterpret_cast<std::uintptr_t>(host_window);
}

}  // namespace

bool HostContext::IsAccept(std::size_t position) const {
  return reassembler_.Pdus()[position].summary_text ==
         std::string_view(kAssociateAcceptName);
}

void HostContext::BuildPresentationContexts() {
  if (presentation_contexts_built_) return;
  const std::size_t count = reassembler_.Pdus().size();
  while (first_unread_pdu_ < count && !IsAccept(first_unread_pdu_)) {
    ++first_unread_pdu_;
  }
  if (first_unread_pdu_ == count) return;
  for (std::size_t i = first_unread_pdu_; i < count; ++i) {
    if (!IsAccept(i)) continue;
    const PduRecord accept = reassembler_.Pdus()[i];
    const std::vector<std::uint8_t> bytes =
        GatherBytes(accept.spans, accept.total_length, source_);
    presentation_contexts_.AddAcceptedContexts(ByteArrayView(bytes));
  }
  presentation_contexts_built_ = true;
}

std::shared_ptr<HostContext> HostContexts::ContextOf(HWND host_window) {
  std::shared_ptr<HostContext>& context = contexts_[KeyOf(host_window)];
  if (!context) context = std::make_shared<HostContext>(host_window);
  return context;
}

std::shared_ptr<PacketAccessor> HostContexts::AccessorOf(
    HWND host_window, const HostContext& context) {
  std::shared_ptr<PacketAccessor>& accessor = accessors_[KeyOf(host_window)];
  if (!accessor) accessor = std::make_shared<PacketAccessor>(context.History());
  return accessor;
}

void HostContexts::Remove(HWND host_window) {
  contexts_.erase(KeyOf(host_window));
  accessors_.erase(KeyOf(host_window));
}

}  // namespace dicom
