// growth_bench SHAPE N: runs one shape of capture, of size N, through the
// module and prints the memory that it held at most. tools/bench-growth.sh
// counts the instructions of RunShape with callgrind, for N and 2N, and prints
// how both grow. growth_bench without arguments lists the shapes, each with the
// N to begin with.
#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

#include "plugin/exports.h"
#include "tests/bytes.h"
#include "tests/test_dictionary.h"

namespace {

using namespace dicom::testing;

// Memory, as operator new gives it.

std::size_t live_bytes = 0;
std::size_t most_bytes = 0;

// The size stands before the block.
constexpr std::size_t kHead = 16;

void* Allocate(std::size_t size) {
  char* const block = static_cast<char*>(std::malloc(size + kHead));
  if (block == nullptr) throw std::bad_alloc();
  std::memcpy(block, &size, sizeof(size));
  live_bytes += size;
  if (live_bytes > most_bytes) most_bytes = live_bytes;
  return block + kHead;
}

void Free(void* memory) {
  if (memory == nullptr) return;
  char* const block = static_cast<char*>(memory) - kHead;
  std::size_t size;
  std::memcpy(&size, block, sizeof(size));
  live_bytes -= size;
  std::free(block);
}

// A host that does no more than it must.
struct Host {
  std::vector<CapturedPacket> packets;
  HWND window = nullptr, tree = nullptr, hex = nullptr;
};
Host host;

bool Deliver(std::int32_t index, DicomPacketRecord* record) {
  if (index < 0 || static_cast<std::size_t>(index) >= host.packets.size())
    return false;
  const CapturedPacket& packet = host.packets[static_cast<std::size_t>(index)];
  std::memcpy(record->bytes, packet.tcp_bytes.data(), packet.tcp_bytes.size());
  record->tcp_bytes = packet.tcp_bytes.Length();
  record->index = index;
  record->direction = packet.direction;
  return true;
}

LRESULT CALLBACK HostProcedure(HWND window, UINT message, WPARAM wparam,
                               LPARAM lparam) {
  if (message != DICOM_HOST_MESSAGE)
    return ::DefWindowProcA(window, message, wparam, lparam);
  auto* const record = reinterpret_cast<DicomPacketRecord*>(lparam);
  switch (wparam) {
    case DICOM_COUNT_PACKETS:
      *reinterpret_cast<std::int32_t*>(lparam) =
          static_cast<std::int32_t>(host.packets.size());
      return 0;
    case DICOM_FETCH_PACKET:
      return !Deliver(record->index, record);
    case DICOM_FETCH_NEXT_PACKET:
      return !Deliver(record->index + 1, record);
  }
  return 1;
}

HWND CreateWindowOf(const char* window_class) {
  return ::CreateWindowExA(0, window_class, "", 0, 0, 0, 10, 10, nullptr,
                           nullptr, nullptr, nullptr);
}

void OpenHost() {
  WNDCLASSA window_class{};
  window_class.lpfnWndProc = &HostProcedure;
  window_class.cbWndExtra = DICOM_DISPLAY_STATE_INDEX + 4;
  window_class.lpszClassName = "GrowthHost";
  ::RegisterClassA(&window_class);
  host.window = CreateWindowOf("GrowthHost");
  host.tree = CreateWindowOf(WC_TREEVIEWA);
  host.hex = CreateWindowOf("EDIT");
  static std::array<std::uint8_t, DICOM_STATE_SIZE> state{};
  state[DICOM_STATE_SHOW_MESSAGE_DATA] = 1;
  ::SetWindowLongA(host.window, DICOM_DISPLAY_STATE_INDEX,
                   reinterpret_cast<LONG>(state.data()));
}

// Captures.

constexpr std::size_t kMostPayload = DICOM_PACKET_BYTES - 20;

class Capture {
 public:
  Capture() {
    talk_.Open();
    TakePackets();
  }

  // In segments of `segment` bytes.
  Capture& Send(std::uint32_t direction, const Bytes& bytes,
                std::size_t segment = kMostPayload) {
    for (std::size_t at = 0; at < bytes.size(); at += segment) {
      talk_.Send(direction, bytes.Part(at, segment));
    }
    TakePackets();
    return *this;
  }
  Capture& Acknowledge(std::uint32_t direction) {
    talk_.Acknowledge(direction);
    TakePackets();
    return *this;
  }
  // Any segment, which the conversation does not go on from.
  void Add(std::uint32_t direction, const TcpFields& fields,
           const Bytes& payload) {
    host.packets.push_back({direction, TcpSegmentBytes(fields, payload)});
  }
  std::uint32_t Sequence(std::uint32_t direction) const {
    return talk_.Sequence(direction);
  }

 private:
  void TakePackets() {
    for (CapturedPacket& packet : talk_.Packets())
      host.packets.push_back(std::move(packet));
    talk_.Packets().clear();
  }

  Conversation talk_;
};

Bytes Joined(const Bytes& bytes, unsigned count) {
  Bytes all;
  all.reserve(bytes.size() * count);
  for (unsigned i = 0; i < count; ++i) all += bytes;
  return all;
}

const Bytes& Store() {
  static const Bytes command = PData(Pdv(1, kLastCommand, Command(0x0001, 7)));
  return command;
}

Bytes Accept() {
  return AssociateAccept(AnsweredContext(1, 0, "1.2.840.10008.1.2"));
}

void OrdinaryStores(unsigned n) {
  Capture capture;
  capture.Send(1, Accept()).Acknowledge(0);
  const Bytes data = PData(Pdv(1, kLastData, Repeat(1, 16048)));
  for (unsigned i = 0; i < n; ++i) {
    capture.Send(0, Store()).Send(0, data, 1448).Acknowledge(1);
  }
}

// The first of n segments is missing and comes last.
void LostSegment(unsigned n) {
  Capture capture;
  for (unsigned i = 0; i < n; ++i) capture.Send(0, ReleaseRequest());
  CapturedPacket first = host.packets[3];
  host.packets.erase(host.packets.begin() + 3);
  host.packets.push_back(std::move(first));
}

void NoAnswer(unsigned n) {
  Capture capture;
  for (unsigned i = 0; i < n; ++i) capture.Send(0, ReleaseRequest());
}

// Held segments, and behind them an acknowledgement with each one's own
// numbers.
void LateAcknowledgements(unsigned n) {
  Capture capture;
  const std::uint32_t first = capture.Sequence(0);
  for (unsigned i = 0; i < n; ++i) capture.Send(0, ReleaseRequest());
  for (unsigned i = 0; i < n; ++i) {
    capture.Add(0, {first + 10 * (n - 1 - i), capture.Sequence(1)}, {});
  }
}

// Segments end where a PDU does: a cut header would end the reading.
void PdusInFewSegments(unsigned n) {
  Capture().Send(0, Joined(ReleaseRequest(), n), 15950);
}

// Segments end where a PDV does, for the same reason.
void PdvsInOnePdu(unsigned n) {
  constexpr std::size_t kFirstPdvs = 6 + 2278 * 7;  // behind the PDU header
  const Bytes pdu = PData(Joined(Pdv(1, kLastCommand, {0}), n));
  Capture()
      .Send(0, pdu.First(kFirstPdvs))
      .Send(0, pdu.From(kFirstPdvs), 2279 * 7);
}

// A message that is replaced n times while the other direction lists n
// messages.
void ReplacedMessage(unsigned n) {
  Capture capture;
  capture.Send(0, Store());
  const Bytes part = PData(Pdv(1, kLastData, Repeat(2, 20)));
  for (unsigned i = 0; i < n; ++i) capture.Send(0, part).Send(1, Store());
}

void NoAccept(unsigned n) {
  Capture capture;
  for (unsigned i = 0; i < n; ++i)
    capture.Send(0, ReleaseRequest()).Acknowledge(1);
}

void ElementsOfOneMessage(unsigned n) {
  Capture capture;
  capture.Send(1, Accept()).Send(0, Store());
  capture.Send(
      0, PData(Pdv(1, kLastData,
                   Joined(ImplicitElement(0x0008, 0x0016, Text("1.2 ")), n))));
  capture.Acknowledge(1);
}

void BytesOfOnePdu(unsigned n) {
  Capture().Send(0, PData(Pdv(1, kLastData, Repeat(3, n)))).Acknowledge(1);
}

void ItemsOfOneAssociation(unsigned n) {
  Capture().Send(1, AssociateAccept(Joined(Item(0x99, {}), n))).Acknowledge(0);
}

// The dearest shape: every item claims a name of 65,535 bytes, inside which the
// next ones begin.
void OverlappingNames(unsigned n) {
  const Bytes item =
      Bytes{0x21, 1, 1, 1, 1, 1, 1, 1, 0x40, 1, 0xFF, 0xFF} + Bytes(253, '1');
  Capture()
      .Send(1, AssociateAccept(Joined(item, n) + Bytes(65535, '1')), 1448)
      .Acknowledge(0);
}

void EqualEarlySegments(unsigned n) {
  Capture capture;
  const TcpFields ahead{capture.Sequence(0) + 10, capture.Sequence(1)};
  for (unsigned i = 0; i < n; ++i) capture.Add(0, ahead, ReleaseRequest());
  capture.Send(0, ReleaseRequest()).Send(0, ReleaseRequest());
}

void SegmentsOfOneByte(unsigned n) {
  Capture().Send(0, PData(Pdv(1, kLastData, Repeat(4, n))), 1).Acknowledge(1);
}

void ReverseOrder(unsigned n) {
  NoAnswer(n);
  std::reverse(host.packets.begin() + 3, host.packets.end());
}

// What the host does with the capture.

constexpr std::uint32_t kPdus = 0;
constexpr std::uint32_t kMessages = 1;

std::uint32_t List(std::uint32_t view, std::uint32_t live) {
  std::array<PacketListRow, DICOM_ROWS_PER_CALL> rows;
  std::int32_t first = 0;
  std::uint32_t count = DICOM_ROWS_PER_CALL, first_available, last_available;
  return GetDicomPacketList(host.window, rows.data(), &first, &count,
                            &first_available, &last_available, view, live) &
         0xFFFF;
}

void ListAll(unsigned) {
  while (List(kPdus, 0) == DICOM_LIST_CALL_AGAIN) {
  }
}

void ListLive(unsigned n) {
  for (unsigned i = 0; i < n; ++i) List(kPdus, 1);
}

void Display(std::uint32_t view) {
  constexpr std::int32_t kLast = 0x7FFFFFFF;
  DisplayDicomPacket(host.window, host.tree, kLast, nullptr, host.hex, view);
  ClearDicomDisplay(0, host.tree, host.hex);
}

void DisplayPdu(unsigned n) {
  ListAll(n);
  Display(kPdus);
}

void DisplayMessage(unsigned n) {
  ListAll(n);
  Display(kMessages);
}

struct Shape {
  const char* name;
  unsigned n;  // to begin with
  void (*build)(unsigned n);
  void (*run)(unsigned n);
};

constexpr Shape kShapes[] = {
    {"ordinary-stores", 200, &OrdinaryStores, &ListAll},
    {"lost-segment", 4000, &LostSegment, &ListAll},
    {"no-answer", 4000, &NoAnswer, &ListAll},
    {"late-acknowledgements", 4000, &LateAcknowledgements, &ListAll},
    {"pdus-in-few-segments", 20000, &PdusInFewSegments, &ListAll},
    {"pdvs-in-one-pdu", 10000, &PdvsInOnePdu, &ListAll},
    {"replaced-message", 2000, &ReplacedMessage, &ListAll},
    {"no-accept", 4000, &NoAccept, &ListLive},
    {"elements-of-one-message", 4000, &ElementsOfOneMessage, &DisplayMessage},
    {"bytes-of-one-pdu", 200000, &BytesOfOnePdu, &DisplayPdu},
    {"items-of-one-association", 4000, &ItemsOfOneAssociation, &DisplayPdu},
    {"overlapping-names", 300, &OverlappingNames, &DisplayPdu},
    {"equal-early-segments", 4000, &EqualEarlySegments, &ListAll},
    {"segments-of-one-byte", 4000, &SegmentsOfOneByte, &DisplayPdu},
    {"reverse-order", 4000, &ReverseOrder, &ListAll},
};

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }

// What is counted. Its name is known to the script.
extern "C" [[gnu::noinline]] void RunShape(const void* shape, unsigned n) {
  static_cast<const Shape*>(shape)->run(n);
}

int main(int count, char** arguments) {
  if (count != 3) {
    for (const Shape& shape : kShapes)
      std::printf("%s %u\n", shape.name, shape.n);
    return 0;
  }
  WriteFileBytes(kDataDicPath,
                 "0000,0100;Command Field;US\n0008,0016;SOP Class UID;UI\n");
  WriteFileBytes(kUidDicPath, "1.2;A UID\n");
  const auto n = static_cast<unsigned>(std::atoi(arguments[2]));
  for (const Shape& shape : kShapes) {
    if (std::string_view(shape.name) != arguments[1]) continue;
    OpenHost();
    shape.build(n);
    if (!dicom::LoadModule()) return 1;
    most_bytes = live_bytes;
    const std::size_t before = live_bytes;
    RunShape(&shape, n);
    std::printf("%zu\n", most_bytes - before);
    return 0;
  }
  std::fprintf(stderr, "no such shape: %s\n", arguments[1]);
  return 2;
}
