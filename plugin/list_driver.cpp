#include "plugin/list_driver.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "tracking/packet_summary.h"

namespace dicom {
namespace {

constexpr int kSegmentsPerCall = 60;
constexpr DWORD kFirstPumpAfter = 2000;  // ms
constexpr DWORD kNextPumpAfter = 500;    // ms
constexpr int kMessagesPerPump = 10;
constexpr std::int32_t kNoRow = -1;

template <class T, class Value>
void Write(T* to, Value value) {
  if (to != nullptr) *to = static_cast<T>(value);
}

// Lets the host's user interface live while a call reads a long capture.
class MessagePump {
 public:
  MessagePump() : deadline_(::GetTickCount() + kFirstPumpAfter) {}

  void PumpWhenDue() {
    // As a signed distance, since the tick count wraps.
    if (static_cast<std::int32_t>(::GetTickCount() - deadline_) <= 0) return;
    Pump();
    deadline_ = ::GetTickCount() + kNextPumpAfter;
  }

 private:
  static void Pump() {
    for (int i = 0; i < kMessagesPerPump; ++i) {
      MSG message;
      if (!::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) return;
      if (message.message == WM_QUIT) {  // the host's own loop must see it
        ::PostQuitMessage(static_cast<int>(message.wParam));
        return;
      }
      ::TranslateMessage(&message);
      ::DispatchMessageA(&message);
    }
  }

  DWORD deadline_;
};

// The busy flag is cleared on every way out, the message box's included.
class BusyScope {
 public:
  explicit BusyScope(bool& busy) : busy_(busy) { busy_ = true; }
  BusyScope(const BusyScope&) = delete;
  BusyScope& operator=(const BusyScope&) = delete;
  ~BusyScope() { busy_ = false; }

 private:
  bool& busy_;
};

// The progress in per cent, shifted to the high word. What is not a percentage
// counts as 0.
std::uint32_t ProgressWord(std::int32_t current_index, std::int32_t count) {
  const std::int64_t percent = std::int64_t{current_index} * 100 / count;
  return percent < 0 || percent > 100
             ? 0
             : static_cast<std::uint32_t>(percent) << 16;
}

template <std::size_t kSize>
void CopyText(char (&to)[kSize], std::string_view text) {
  const std::size_t count = std::min(text.size(), kSize - 1);
  std::memcpy(to, text.data(), count);
  to[count] = '\0';
}

void FillRow(const PduRecord& pdu, PacketListRow& row) {
  row.number = pdu.pdu_number;
  row.direction = pdu.direction;
  row.length = pdu.total_length;
  CopyText(row.summary, pdu.summary_text);
  CopyText(row.detail, "");
}

void FillRow(const DimseMessageRecord& message, PacketListRow& row) {
  row.number = message.message_number;
  row.direction = message.direction;
  row.length = message.command_length + message.data_length;
  CopyText(row.summary, message.first_text);
  CopyText(row.detail, SecondText(message));
}

template <class Records>
void FillRows(const Records& records, const ListRequest& request) {
  Write(request.first_available, 0);
  const auto last = static_cast<std::uint32_t>(records.size()) - 1;
  Write(request.last_available, last);
  if (records.empty()) {
    Write(request.first_index, kNoRow);
    Write(request.row_count, 0);
    return;
  }
  // As an unsigned number, so that a negative first row becomes the last one.
  std::uint32_t first = request.first_index != nullptr
                            ? static_cast<std::uint32_t>(*request.first_index)
                            : 0;
  std::uint32_t count = request.row_count != nullptr ? *request.row_count : 0;
  first = std::min(first, last);
  if (std::uint64_t{first} + count > last) count = last - first + 1;
  Write(request.first_index, first);
  // Deliberate: the count is not lowered to the rows that one call fills.
  Write(request.row_count, count);
  if (request.rows == nullptr) return;
  const std::uint32_t filled =
      std::min<std::uint32_t>({count, DICOM_ROWS_PER_CALL, last - first + 1});
  for (std::uint32_t i = 0; i < filled; ++i) {
    PacketListRow& row = request.rows[i];
    row.reserved1 = 0;
    row.reserved2 = 0;
    row.reserved3 = 0;
    FillRow(records[first + i], row);
  }
}

}  // namespace

std::uint32_t ListDriver::List(const ListRequest& request) {
  if (busy_) {
    return request.live ? DICOM_LIST_UP_TO_DATE : DICOM_LIST_CALL_AGAIN;
  }
  const BusyScope busy(busy_);
  return ListGuarded(request);
}

std::uint32_t ListDriver::ListGuarded(const ListRequest& request) {
  const std::optional<std::int32_t> packet_count =
      HostPacketRecord::AskPacketCount(request.host_window);
  // Deliberate: a refused count is no failure that is counted.
  if (!packet_count) return DICOM_LIST_FAILED;
  if (*packet_count == 0) {
    Write(request.first_index, kNoRow);
    Write(request.row_count, 0);
    return DICOM_LIST_UP_TO_DATE;
  }
  std::uint32_t progress_word = 0;
  try {
    const std::shared_ptr<HostContext> context =
        contexts_.ContextOf(request.host_window);
    const std::shared_ptr<PacketAccessor> accessor =
        contexts_.AccessorOf(request.host_window, *context);
    accessor->SetHostWindow(request.host_window);
    context->SetHostWindow(request.host_window);
    const bool more = ReadSegments(*accessor, *context, request.live);
    progress_word = ProgressWord(accessor->CurrentPacketIndex(), *packet_count);
    // Deliberate: tried on every call, until it has met an accept.
    context->BuildPresentationContexts();
    if (request.message_view) {
      FillRows(context->Reassembler().Messages(), request);
    } else {
      FillRows(context->Reassembler().Pdus(), request);
    }
    const std::uint32_t code =
        more && !request.live ? DICOM_LIST_CALL_AGAIN : DICOM_LIST_UP_TO_DATE;
    return progress_word + code;
  } catch (const std::exception& failure) {
    return ReportFailure(request.host_window, failure, progress_word);
  }
}

bool ListDriver::ReadSegments(PacketAccessor& accessor, HostContext& context,
                              bool live) {
  MessagePump pump;
  std::optional<TcpSegment> segment;
  for (int i = 0; i < kSegmentsPerCall; ++i) {
    pump.PumpWhenDue();
    segment = accessor.ReadNextSegment();
    if (!segment) break;
    context.ProcessSegment(*segment);
  }
  const bool more = segment.has_value();
  // Deliberate: what was held back has no limit of segments.
  if (!more && !live) {
    while ((segment = accessor.ReadLeftoverSegment())) {
      context.ProcessSegment(*segment);
    }
    context.Flush();
  }
  return more;
}

// Deliberate: the counter steps 0, 2, 4 and then reports, and while the
// unreported failures start the capture again, the reported one keeps what
// there is.
std::uint32_t ListDriver::ReportFailure(HWND host_window,
                                        const std::exception& failure,
                                        std::uint32_t progress_word) {
  ++failure_counter_;
  if (failure_counter_ % 5 != 0) {
    ++failure_counter_;
    contexts_.Remove(host_window);
    return progress_word + DICOM_LIST_UP_TO_DATE;
  }
  failure_counter_ = 0;
  ::MessageBoxA(host_window, failure.what(), "Exception", MB_OK);
  return progress_word + DICOM_LIST_FAILED;
}

}  // namespace dicom
