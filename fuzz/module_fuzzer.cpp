// The whole module through its exports: a host that does what the input says,
// well or badly, with captures that the input makes up. An input is a list of
// operations; the low four bits of the first byte choose one, the others are
// its window and flags.
#include <array>
#include <cstring>
#include <string>
#include <utility>

#include "fuzz/fuzz_input.h"
#include "fuzz/tree_check.h"
#include "plugin/exports.h"
#include "tests/bytes.h"
#include "tests/recorders.h"
#include "tests/test_module.h"

namespace dicom::fuzz {
namespace {

using testing::Bytes;
using testing::ListCall;
using testing::TcpFields;
using testing::TestHost;

constexpr std::size_t kMostPackets = 2000;  // of a window

// One analyzer window and what its connection has come to.
struct Window {
  TestHost host;
  testing::Conversation talk{0xFFFFFF00, 5000};  // one side's numbers wrap
};

class Session {
 public:
  Session(const std::uint8_t* bytes, std::size_t size) : input_(bytes, size) {
    boxes_.WhileBoxIsOpen([this] { RunNested(in_box_); });
  }

  // Everything that the host saw, in short.
  std::uint64_t Run() {
    while (!input_.AtEnd()) Step();
    for (Window& window : windows_) Behave(window);
    for (std::uint32_t view : {0u, 1u}) {
      for (Window& window : windows_) ShowSomeRows(window, view);
    }
    for (Window& window : windows_) testing::Clear(window.host);
    // The records of diverted lines are left behind.
    Require(diverted_ || testing::GlobalBlocks() == 0, "all blocks are freed");
    testing::ForgetGlobalBlocks();
    DropMessages();
    return seen_;
  }

 private:
  using Operation = void (Session::*)();

  void Step() {
    static constexpr Operation kOperations[16] = {
        &Session::Open,       &Session::SendBytes,   &Session::SendBytes,
        &Session::SendPdu,    &Session::SendPdvs,    &Session::SendPdvs,
        &Session::AddRaw,     &Session::SendSkewed,  &Session::Rearrange,
        &Session::CallList,   &Session::CallDisplay, &Session::CallOther,
        &Session::SetOutput,  &Session::PlanNested,  &Session::Misbehave,
        &Session::Acknowledge};
    const std::uint8_t first = input_.Byte();
    window_ = &windows_[first >> 4 & 1];
    flags_ = first >> 5;
    (this->*kOperations[first & 15])();
    if (display_failed_) Reload();
  }

  // Captures.

  void Add(std::uint32_t direction, const Bytes& tcp_bytes) {
    auto& packets = window_->host.packets;
    if (packets.size() < kMostPackets)
      packets.push_back({direction, tcp_bytes});
  }

  void Send(std::uint32_t direction, std::uint8_t tcp_flags,
            const Bytes& payload = {}) {
    auto& talk = window_->talk.Add(direction, tcp_flags, payload).Packets();
    Add(direction, talk.back().tcp_bytes);
    talk.clear();
  }

  void Open() {
    const std::uint32_t opener = flags_ & 1;
    Send(opener, testing::kSyn);
    Send(1 - opener, testing::kSyn | testing::kAck);
    Send(opener, testing::kAck);
  }

  void SendInSegments(std::uint32_t direction, const Bytes& bytes) {
    const std::size_t segment = flags_ & 2 ? 1u + input_.Byte() : 1448;
    for (std::size_t at = 0; at < bytes.size(); at += segment) {
      Send(direction, testing::kAck, bytes.Part(at, segment));
    }
    if (flags_ & 4) Send(1 - direction, testing::kAck);
  }

  void SendBytes() { SendInSegments(flags_ & 1, input_.Take(input_.Word())); }

  // A PDU whose length field is right.
  void SendPdu() {
    const std::uint8_t type = input_.Byte();
    SendInSegments(flags_ & 1, testing::Pdu(type, input_.Take(input_.Word())));
  }

  // A P-DATA-TF PDU of PDVs whose lengths are right.
  void SendPdvs() {
    Bytes pdvs;
    const std::uint8_t count = input_.Byte();
    for (std::uint8_t i = 0; i <= count % 8; ++i) {
      const std::uint8_t context = input_.Byte();
      const std::uint8_t control = input_.Byte();
      pdvs += testing::Pdv(context, control, input_.Take(input_.Word()));
    }
    SendInSegments(flags_ & 1, testing::PData(pdvs));
  }

  void AddRaw() { Add(flags_, input_.Take(input_.Word())); }

  void SendSkewed() {
    const std::uint32_t direction = flags_ & 1;
    const auto sequence = static_cast<std::int8_t>(input_.Byte());
    const auto acknowledgement = static_cast<std::int8_t>(input_.Byte());
    const std::uint8_t tcp_flags = input_.Byte();
    const std::uint8_t words = input_.Byte();
    const TcpFields fields{window_->talk.Sequence(direction) +
                               static_cast<std::uint32_t>(sequence),
                           window_->talk.Sequence(1 - direction) +
                               static_cast<std::uint32_t>(acknowledgement),
                           tcp_flags, 5};
    Bytes bytes =
        TcpSegmentBytes(fields, input_.Take(words >> 4 ? input_.Byte() : 0));
    bytes[12] = static_cast<std::uint8_t>(words << 4);
    Add(direction, bytes);
  }

  void Acknowledge() {
    constexpr std::uint8_t kFlags[] = {
        testing::kAck, testing::kAck | testing::kFin,
        testing::kAck | testing::kRst, testing::kFin};
    Send(flags_ & 1, kFlags[flags_ >> 1]);
  }

  // Reordered, doubled, lost and late packets, and a capture that shrinks.
  void Rearrange() {
    auto& packets = window_->host.packets;
    if (packets.empty()) return;
    const std::size_t back = 1 + input_.Byte() % packets.size();
    const auto place = packets.end() - static_cast<std::ptrdiff_t>(back);
    switch (flags_ % 4) {
      case 0:
        return std::swap(*place, packets.back());
      case 1:
        if (packets.size() < kMostPackets)
          packets.insert(place, packets.back());
        return;
      case 2:
        packets.erase(place);
        return;
      case 3:
        packets.erase(place, packets.end());
    }
  }

  // Calls.

  void CallList() {
    const std::uint8_t kind = input_.Byte();
    const auto first = static_cast<std::int8_t>(input_.Byte());
    List(*window_, kind & 1, kind >> 1 & 1, first,
         kind & 4 ? 0xFFFFFFF0 : kind >> 3);
  }

  std::uint32_t List(Window& window, std::uint32_t view, std::uint32_t live,
                     std::int32_t first, std::uint32_t count) {
    const ListCall call = testing::List(window.host, view, live, first, count);
    Require(call.Code() <= DICOM_LIST_CALL_AGAIN &&
                (live == 0 || call.Code() != DICOM_LIST_CALL_AGAIN),
            "the list answers a known code");
    Require(call.Progress() <= 100, "the progress is a percentage");
    rows_written_ = call.Written();
    Require(rows_written_ <= DICOM_ROWS_PER_CALL,
            "no more rows than there is room for");
    for (std::size_t i = 0; i < rows_written_; ++i) CheckRow(call.rows[i]);
    if (rows_written_ != 0) {
      Require(call.first_available == 0 && call.first >= 0 &&
                  static_cast<std::uint32_t>(call.first) + rows_written_ - 1 <=
                      call.last_available,
              "rows are rows of the view");
      Require(rows_written_ <= call.count, "no more rows than wanted");
    }
    See(&call.word, sizeof(call.word));
    See(&call.last_available, sizeof(call.last_available));
    See(call.rows.data(), rows_written_ * sizeof(PacketListRow));
    window.host.TakeRequests();
    return call.Code();
  }

  static void CheckRow(const PacketListRow& row) {
    Require(row.direction <= 1 && row.reserved1 == 0 && row.reserved2 == 0 &&
                row.reserved3 == 0,
            "a row is filled");
    Require(std::memchr(row.summary, 0, 81) != nullptr &&
                std::memchr(row.detail, 0, 81) != nullptr,
            "texts are terminated");
  }

  void CallDisplay() {
    const std::uint8_t kind = input_.Byte();
    Display(*window_, kind & 1, static_cast<std::int8_t>(input_.Byte()));
  }

  void Display(Window& window, std::uint32_t view, std::int32_t index) {
    TestHost& host = window.host;
    if (OutputIsOn(host)) diverted_ = true;
    const bool was_busy = display_failed_;
    const std::string before = was_busy ? host.TreeText() : "";
    const std::string failure = testing::Show(host, index, view);
    // While it stays busy, nothing changes.
    if (was_busy)
      Require(failure.empty() && host.TreeText() == before, "busy is busy");
    display_failed_ |= !failure.empty();
    // A message's dump is cut, its tree is not, and without memory there is no
    // dump.
    std::size_t bytes = host.HexText().size() / 4;
    if (view != 0 || memory_fails_)
      bytes += host.packets.size() * DICOM_PACKET_BYTES;
    if (!was_busy) CheckTree(host, bytes);
    See(failure.data(), failure.size());
    const std::string tree =
        host.TreeText(testing::kSections | testing::kExpansion);
    See(tree.data(), tree.size());
    host.TakeRequests();
  }

  void CallOther() {
    const HWND window = window_->host.Window();
    switch (flags_ % 4) {
      case 0:
        return testing::Clear(window_->host);
      case 1:
        return RefreshDicomDecode(window);
      case 2:
        return DicomDeRegisterParent(window);
      case 3:
        SaveDicomDecodeToFile(window);
    }
  }

  // A module whose display has failed must be loaded anew; then it works.
  void Reload() {
    Display(*window_, 0, 0);
    module_.Reload();
    display_failed_ = false;
    Behave(*window_);
    ShowSomeRows(*window_, 0);
  }

  void ShowSomeRows(Window& window, std::uint32_t view) {
    std::size_t calls = 0;
    while (List(window, view, 0, 0, 40) == DICOM_LIST_CALL_AGAIN) {
      Require(++calls <= window.host.packets.size(),
              "the list comes to an end");
    }
    const std::size_t rows = rows_written_;
    for (std::int32_t row = 0; row < 3; ++row) Display(window, view, row);
    testing::Clear(window.host);
    Display(window, view, 0x7FFFFFFF);
    Require(!display_failed_, "a host that behaves sees every row");
    Require(view != 0 || rows == 0 || !window.host.HexText().empty(),
            "only a failure leaves the display busy");
  }

  // The host.

  static bool OutputIsOn(const TestHost& host) {
    const char mode = host.State<char>(DICOM_STATE_OUTPUT_MODE);
    return mode == '7' || mode == '8';
  }

  void SetOutput() {
    TestHost& host = window_->host;
    const std::uint8_t kind = input_.Byte();
    host.StopOutput();
    if (flags_ == 1) {
      host.StartPrinting(printer_.DeviceContext(), 10, kind);
    } else if (flags_ == 2) {
      host.StartSaving();
    }
    host.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, std::uint32_t{kind} & 1);
    host.SetState(DICOM_STATE_SECTION_EXPAND_MASK, std::uint32_t{kind} << 5);
  }

  // A call from inside the pump, a message to the host or an open box.
  void PlanNested() {
    const std::uint8_t kind = input_.Byte();
    TestHost& host = window_->host;
    if (flags_ & 1) {
      in_box_ = kind;
    } else if (flags_ & 2) {
      in_answer_ = kind;
      host.before_answer = [this](WPARAM, std::int32_t) {
        RunNested(in_answer_);
      };
    } else {
      testing::AdvanceTicks(1);
      host.before_answer = [](WPARAM, std::int32_t) {
        testing::AdvanceTicks(2001);
      };
      host.Post([this, kind] {
        int planned = kind;
        RunNested(planned);
      });
    }
  }

  void RunNested(int& planned) {
    const int kind = std::exchange(planned, -1);
    if (kind < 0) return;
    Window& window = windows_[kind & 1];
    switch (kind >> 1 & 3) {
      case 0:
        List(window, kind >> 3 & 1, kind >> 4 & 1, 0, 40);
        return;
      case 1:
        return Display(window, kind >> 3 & 1, kind >> 4);
      case 2:
        return RefreshDicomDecode(window.host.Window());
      case 3:
        return testing::Clear(window.host);
    }
  }

  void Misbehave() {
    TestHost& host = window_->host;
    const std::int32_t packet = input_.Byte();
    const std::uint8_t value = input_.Byte();
    switch (flags_) {
      case 0:
        host.refuse_count = value & 1;
        return;
      case 1:
        host.refuse_next = value & 1;
        return;
      case 2:
        host.refused.insert(packet);
        return;
      case 3:
        host.delivered_instead[packet] = value;
        return;
      case 4:
        host.claimed_bytes[packet] = value & 1 ? 0xFFFFFFFF : value;
        return;
      case 5:
        memory_fails_ = true;
        return testing::FailGlobalAlloc(value % 64);
      default:
        return ChangePacket(static_cast<std::size_t>(packet), value);
    }
  }

  // The packet is another one when it is fetched again.
  void ChangePacket(std::size_t packet, std::uint8_t value) {
    auto& packets = window_->host.packets;
    if (packet >= packets.size() || packets[packet].tcp_bytes.empty()) return;
    Bytes& bytes = packets[packet].tcp_bytes;
    if (flags_ == 6) {
      bytes[value % bytes.size()] ^= input_.Byte();
    } else {
      bytes.resize(value % bytes.size());
    }
  }

  void Behave(Window& window) {
    TestHost& host = window.host;
    host.StopOutput();
    host.refuse_count = host.refuse_next = false;
    host.refused.clear();
    host.delivered_instead.clear();
    host.claimed_bytes.clear();
    host.before_answer = nullptr;
    testing::FailGlobalAlloc(0);
    memory_fails_ = false;
    in_box_ = in_answer_ = -1;
    DropMessages();
    // What was read of packets that have changed since cannot be shown.
    RefreshDicomDecode(host.Window());
  }

  // Those that this session posted are not for the next one.
  static void DropMessages() {
    MSG message;
    while (::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
    }
  }

  void See(const void* bytes, std::size_t count) {
    const auto* const next = static_cast<const std::uint8_t*>(bytes);
    for (std::size_t i = 0; i < count; ++i)
      seen_ = (seen_ ^ next[i]) * 0x100000001B3;
  }

  FuzzInput input_;
  testing::LoadedModule module_;
  testing::MessageBoxRecorder boxes_;
  testing::PrinterRecorder printer_;
  std::array<Window, 2> windows_;
  Window* window_ = windows_.data();
  unsigned flags_ = 0;
  bool display_failed_ = false;
  bool diverted_ = false;
  bool memory_fails_ = false;
  std::size_t rows_written_ = 0;  // by the last list call
  int in_box_ = -1;
  int in_answer_ = -1;
  std::uint64_t seen_ = 0xCBF29CE484222325;
};

}  // namespace
}  // namespace dicom::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  if (size > 1 << 14) return 0;
  const std::uint64_t seen = dicom::fuzz::Session(data, size).Run();
  // Every eighth input runs twice, and must look the same.
  if (size % 8 == 0) {
    dicom::fuzz::Require(dicom::fuzz::Session(data, size).Run() == seen,
                         "two runs are the same");
  }
  return 0;
}
