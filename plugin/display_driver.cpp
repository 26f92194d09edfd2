#include "plugin/display_driver.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "dimse/message_decoder.h"
#include "tree/decode_tree_writer.h"
#include "tree/hex_dump.h"
#include "upper_layer/upper_layer_decoder.h"

namespace dicom {
namespace {

constexpr std::uint32_t kMaxMessageDump = 64000;  // bytes
// Deliberate: the host's own mask is for hex dump sections only.
constexpr std::uint32_t kExpandNoSection = 0;

// A copy of the record to show: fetching its packets runs the host's code,
// which may change the lists.
template <class Records>
typename Records::value_type RecordAt(const Records& records,
                                      std::int32_t index) {
  const auto last = static_cast<std::int32_t>(records.size()) - 1;
  // A negative index is behind every end. 32 bits of it, whatever a size_t has:
  // the failure's text shows the number.
  return records.at(static_cast<std::uint32_t>(std::min(index, last)));
}

std::vector<std::uint8_t> Gather(const SpanList& spans, HWND host_window) {
  HostPacketSource source(host_window);
  return GatherBytes(spans, std::numeric_limits<std::uint32_t>::max(), source);
}

}  // namespace

// No guard object for the busy flag: it has to stay set when an exception
// leaves.
void DisplayDriver::Display(const DisplayRequest& request) {
  if (busy_) return;
  busy_ = true;
  ClearTree(request.target.tree_window);
  // Deliberate: made for an unknown window too, but without an accessor.
  const std::shared_ptr<HostContext> context =
      contexts_.ContextOf(request.target.host_window);
  const PduReassembler& reassembler = context->Reassembler();
  if (request.message_view ? reassembler.Messages().empty()
                           : reassembler.Pdus().empty()) {
    ::SetWindowTextA(request.hex_window, "");
  } else if (request.message_view) {
    ShowMessage(request, *context);
  } else {
    ShowPdu(request, *context);
  }
  busy_ = false;
}

void DisplayDriver::ShowPdu(const DisplayRequest& request,
                            const HostContext& context) {
  const PduRecord pdu = RecordAt(context.Reassembler().Pdus(), request.index);
  const std::vector<std::uint8_t> gathered =
      Gather(pdu.spans, request.target.host_window);
  const ByteArrayView bytes(gathered);
  // Deliberate: a PDU is dumped whole, a message only up to a limit.
  ShowHexDump(request.hex_window, {bytes.Bytes(), bytes.Length()});
  DecodeTreeWriter writer(request.target, kExpandNoSection);
  UpperLayerDecoder(bytes, dictionary_, writer).DecodePdu();
  writer.FinishTree();
}

void DisplayDriver::ShowMessage(const DisplayRequest& request,
                                const HostContext& context) {
  const DimseMessageRecord message =
      RecordAt(context.Reassembler().Messages(), request.index);
  const std::vector<std::uint8_t> gathered =
      Gather(message.spans, request.target.host_window);
  const ByteArrayView bytes(gathered);
  const std::uint32_t length = message.command_length + message.data_length;
  const ByteArrayView dumped = bytes.Part(0, std::min(length, kMaxMessageDump));
  ShowHexDump(request.hex_window, {dumped.Bytes(), dumped.Length()});
  DecodeTreeWriter writer(request.target, kExpandNoSection);
  MessageDecoder(dictionary_, context.PresentationContexts(), writer)
      .DecodeMessage({bytes, message.command_length, message.data_length,
                      message.first_text, message.presentation_context_id});
  writer.FinishTree();
}

}  // namespace dicom
