// What the module costs a host under Windows, each figure beside what it cannot
// be cheaper than: listing against the same messages without the module, and
// showing a long message against inserting and clearing its lines directly.
//
//   list_bench [MEGABYTES [ELEMENTS]]
//
// Run from the folder of DicomDecode.dll and its dictionaries.
#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "plugin/exports.h"
#include "tests/bytes.h"

namespace {

using namespace dicom::testing;

// The packets lie in one piece that is not the heap's: thousands of small
// blocks there would slow down whoever allocates after them, the module first.
struct StoredPacket {
  std::uint32_t direction;
  const std::uint8_t* bytes;
  std::uint32_t size;
};
struct Host {
  std::vector<StoredPacket> packets;
  std::uint8_t* room = nullptr;
  HWND window = nullptr, tree = nullptr, hex = nullptr;
  std::uint64_t delivered_bytes = 0;
};
Host host;

bool Deliver(std::int32_t index, DicomPacketRecord* record) {
  if (index < 0 || static_cast<std::size_t>(index) >= host.packets.size()) {
    return false;
  }
  const StoredPacket& packet = host.packets[static_cast<std::size_t>(index)];
  std::memcpy(record->bytes, packet.bytes, packet.size);
  record->tcp_bytes = packet.size;
  record->index = index;
  record->direction = packet.direction;
  host.delivered_bytes += record->tcp_bytes;
  return true;
}

LRESULT CALLBACK HostProcedure(HWND window, UINT message, WPARAM wparam,
                               LPARAM lparam) {
  if (message != DICOM_HOST_MESSAGE) {
    return ::DefWindowProcA(window, message, wparam, lparam);
  }
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

HWND CreateWindowOf(const char* window_class, HWND parent) {
  const HWND window = ::CreateWindowExA(
      0, window_class, "", parent != nullptr ? WS_CHILD : WS_OVERLAPPED, 0, 0,
      300, 300, parent, nullptr, ::GetModuleHandleA(nullptr), nullptr);
  if (!::IsWindow(window)) {  // SendMessage to none would cost nothing
    std::fprintf(stderr, "no window %s; is there a display?\n", window_class);
    std::exit(1);
  }
  return window;
}

void OpenHost() {
  ::InitCommonControls();
  WNDCLASSA window_class{};
  window_class.lpfnWndProc = &HostProcedure;
  window_class.cbWndExtra = DICOM_DISPLAY_STATE_INDEX + 4;
  window_class.hInstance = ::GetModuleHandleA(nullptr);
  window_class.lpszClassName = "ListBench";
  ::RegisterClassA(&window_class);
  host.window = CreateWindowOf("ListBench", nullptr);
  host.tree = CreateWindowOf(WC_TREEVIEWA, host.window);
  // Takes the hex dump in its stride: the lines are what is compared.
  host.hex = CreateWindowOf("STATIC", host.window);
}

double Now() {  // milliseconds
  LARGE_INTEGER ticks, per_second;
  ::QueryPerformanceCounter(&ticks);
  ::QueryPerformanceFrequency(&per_second);
  return 1000.0 * static_cast<double>(ticks.QuadPart) /
         static_cast<double>(per_second.QuadPart);
}

template <class Action>
double Timed(Action action) {
  const double before = Now();
  action();
  return Now() - before;
}

// The best of a few runs, since other programs share the machine.
template <class Action>
double Best(int runs, Action action) {
  double best = Timed(action);
  for (int i = 1; i < runs; ++i) best = std::min(best, Timed(action));
  return best;
}

void EmptyCapture(std::size_t bytes) {
  if (host.room != nullptr) ::VirtualFree(host.room, 0, MEM_RELEASE);
  host.room = static_cast<std::uint8_t*>(
      ::VirtualAlloc(nullptr, bytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
  host.packets.clear();
  if (host.room == nullptr) std::exit(1);
}

// What a network makes of the segments, in parts of a thousand.
struct Disorder {
  unsigned retransmitted = 0;
  unsigned early = 0;
};

void Disturb(std::vector<CapturedPacket>& packets, const Disorder& disorder) {
  static std::mt19937 random(1);
  for (std::size_t i = 0; i + 1 < packets.size(); ++i) {
    if (packets[i].tcp_bytes.size() <= 20) continue;
    const auto at = packets.begin() + static_cast<std::ptrdiff_t>(i);
    if (random() % 1000 < disorder.retransmitted) {
      const CapturedPacket again = *at;
      packets.insert(at + 1, again);
    } else if (random() % 1000 < disorder.early) {
      std::swap(*at, *(at + 1));
    }
  }
}

void TakePackets(Conversation& talk, const Disorder& disorder = {}) {
  static std::uint8_t* next;
  if (host.packets.empty()) next = host.room;
  Disturb(talk.Packets(), disorder);
  for (const CapturedPacket& packet : talk.Packets()) {
    std::copy(packet.tcp_bytes.begin(), packet.tcp_bytes.end(), next);
    host.packets.push_back({packet.direction, next, packet.tcp_bytes.Length()});
    next += packet.tcp_bytes.size();
  }
  talk.Packets().clear();
}

// Storage traffic: messages of 16 PDUs of 16,060 bytes in segments of 1,460, so
// that no segment's end cuts a header; every second segment is acknowledged.
void MakeStorage(std::size_t bytes, const Disorder& disorder) {
  EmptyCapture(bytes + bytes / 8 + (1 << 20));
  host.packets.reserve(bytes / 900);
  Conversation talk;
  talk.Open().Send(1,
                   AssociateAccept(AnsweredContext(1, 0, "1.2.840.10008.1.2")));
  const Bytes command = PData(
      Pdv(1, kLastCommand, Command(0x0001, 7) + Repeat(0, 1460 - 12 - 32)));
  const Bytes part = PData(Pdv(1, kData, Repeat(1, 16048)));
  const Bytes last = PData(Pdv(1, kLastData, Repeat(1, 16048)));
  for (std::size_t made = 0; made < bytes; made += 16 * part.size()) {
    talk.Send(0, command);
    for (int i = 0; i < 16; ++i) {
      const Bytes& pdu = i == 15 ? last : part;
      for (std::size_t at = 0; at < pdu.size(); at += 1460) {
        talk.Send(0, pdu.Part(at, 1460));
        if (at / 1460 % 2 == 1) talk.Acknowledge(1);
      }
      TakePackets(talk, disorder);
    }
  }
  TakePackets(talk.Acknowledge(1));
}

// Exactly what a fetch of every packet, and of every segment with payload once
// more, costs without the module.
void DeliverAll() {
  static DicomPacketRecord record;
  const auto ask = [](WPARAM code, std::int32_t index) {
    std::int32_t count = -1;
    ::SendMessageA(host.window, DICOM_HOST_MESSAGE, DICOM_COUNT_PACKETS,
                   reinterpret_cast<LPARAM>(&count));
    record.index = index;
    record.buffer_size = DICOM_PACKET_RECORD_SIZE;
    ::SendMessageA(host.window, DICOM_HOST_MESSAGE, code,
                   reinterpret_cast<LPARAM>(&record));
  };
  const auto count = static_cast<std::int32_t>(host.packets.size());
  for (std::int32_t i = 0; i < count; ++i) {
    ask(DICOM_FETCH_NEXT_PACKET, i - 1);
    if (record.tcp_bytes > 20) ask(DICOM_FETCH_PACKET, i);
  }
}

std::vector<double> ListAll(std::uint32_t view) {
  std::array<PacketListRow, DICOM_ROWS_PER_CALL> rows;
  std::vector<double> calls;
  for (std::uint32_t code = DICOM_LIST_CALL_AGAIN;
       code == DICOM_LIST_CALL_AGAIN;) {
    calls.push_back(Timed([&] {
      std::int32_t first = 0;
      std::uint32_t count = DICOM_ROWS_PER_CALL, first_available, last;
      code = GetDicomPacketList(host.window, rows.data(), &first, &count,
                                &first_available, &last, view, 0) &
             0xFFFF;
    }));
  }
  return calls;
}

void MeasureLoad() {
  const double load = Best(20, [] {
    dicom::LoadModule();
    dicom::UnloadModule();
  });
  std::printf("load and free the DLL with its dictionaries: %.2f ms\n", load);
}

// Bytes in all heaps of the process.
std::size_t HeapBytes() {
  std::array<HANDLE, 32> heaps;
  const DWORD count = ::GetProcessHeaps(heaps.size(), heaps.data());
  std::size_t bytes = 0;
  for (DWORD i = 0; i < std::min<DWORD>(count, heaps.size()); ++i) {
    PROCESS_HEAP_ENTRY entry{};
    while (::HeapWalk(heaps[i], &entry)) {
      if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) bytes += entry.cbData;
    }
  }
  return bytes;
}

// Answers the ratio.
double MeasurePass(const char* name) {
  const double delivery = Best(3, &DeliverAll);
  const double list = Best(3, [] {
    RefreshDicomDecode(host.window);
    ListAll(0);
  });
  std::printf("list %s in %u packets: %.0f ms, their delivery %.0f ms: %.2f\n",
              name, static_cast<unsigned>(host.packets.size()), list, delivery,
              list / delivery);
  return list / delivery;
}

void MeasureMemory(std::size_t payload) {
  RefreshDicomDecode(host.window);
  const std::size_t before = HeapBytes();
  ListAll(0);
  const std::size_t listed = HeapBytes() - before;
  RefreshDicomDecode(host.window);
  std::printf(
      "the list takes %u KB of memory: %.2f per cent; a refresh leaves "
      "%d bytes of it\n",
      static_cast<unsigned>(listed >> 10),
      100.0 * static_cast<double>(listed) / static_cast<double>(payload),
      static_cast<int>(HeapBytes() - before));
}

void MeasureList(std::size_t megabytes) {
  MakeStorage(megabytes << 20, {});
  dicom::LoadModule();
  const double ordered = MeasurePass("as sent");
  MeasureMemory(megabytes << 20);
  std::vector<double> calls = ListAll(0);
  const auto half =
      calls.begin() + static_cast<std::ptrdiff_t>(calls.size() / 2);
  const auto slowest = [](auto first, auto last) {
    std::sort(first, last);
    return *(last - 1 - (last - first) / 1000);
  };
  std::printf("99.9 of 100 calls took at most %.2f ms, then %.2f ms\n",
              slowest(calls.begin(), half), slowest(half, calls.end()));
  MakeStorage(megabytes << 20, {.retransmitted = 3, .early = 2});
  RefreshDicomDecode(host.window);
  const double disturbed = MeasurePass("disturbed");
  std::printf("against as sent: %.2f\n", disturbed / ordered);
  dicom::UnloadModule();
}

struct Line {
  std::string text;
  int depth;
};

// The lines that are inserted into the tree while it stands.
class LineRecorder {
 public:
  LineRecorder()
      : tree_procedure_(reinterpret_cast<WNDPROC>(::SetWindowLongA(
            host.tree, GWL_WNDPROC, reinterpret_cast<LONG>(&Procedure)))) {
    current_ = this;
  }
  ~LineRecorder() {
    ::SetWindowLongA(host.tree, GWL_WNDPROC,
                     reinterpret_cast<LONG>(tree_procedure_));
  }
  LineRecorder(const LineRecorder&) = delete;
  LineRecorder& operator=(const LineRecorder&) = delete;

  const std::vector<Line>& Lines() const { return lines_; }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam,
                                    LPARAM lparam) {
    const LRESULT answer = ::CallWindowProcA(current_->tree_procedure_, window,
                                             message, wparam, lparam);
    if (message != TVM_INSERTITEMA) return answer;
    const auto& insertion = *reinterpret_cast<const TVINSERTSTRUCTA*>(lparam);
    const int depth = insertion.hParent == nullptr
                          ? 0
                          : current_->depths_[insertion.hParent] + 1;
    current_->depths_[reinterpret_cast<HTREEITEM>(answer)] = depth;
    current_->lines_.push_back({insertion.item.pszText, depth});
    return answer;
  }

  inline static LineRecorder* current_;
  WNDPROC tree_procedure_;
  std::vector<Line> lines_;
  std::unordered_map<HTREEITEM, int> depths_;
};

void InsertDirectly(const std::vector<Line>& lines) {
  std::vector<HTREEITEM> open(16);
  for (const Line& line : lines) {
    const auto depth = static_cast<std::size_t>(line.depth);
    TVINSERTSTRUCTA insertion{};
    insertion.hParent = depth == 0 ? nullptr : open[depth - 1];
    insertion.hInsertAfter = TVI_LAST;
    insertion.item.mask =
        TVIF_TEXT | TVIF_IMAGE | TVIF_PARAM | TVIF_SELECTEDIMAGE;
    insertion.item.pszText = const_cast<char*>(line.text.c_str());
    insertion.item.lParam = reinterpret_cast<LPARAM>(
        ::GlobalAlloc(GMEM_ZEROINIT, sizeof(DicomByteRangeRecord)));
    open[depth] = reinterpret_cast<HTREEITEM>(::SendMessageA(
        host.tree, TVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&insertion)));
  }
}

HTREEITEM Next(WPARAM relation, HTREEITEM item) {
  return reinterpret_cast<HTREEITEM>(::SendMessageA(
      host.tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

// Takes each item's block away and frees it, as the module has to.
void FreeBlocks(HTREEITEM first) {
  for (HTREEITEM item = first; item != nullptr; item = Next(TVGN_NEXT, item)) {
    TVITEMA data{};
    data.mask = TVIF_PARAM;
    data.hItem = item;
    ::SendMessageA(host.tree, TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&data));
    ::GlobalFree(reinterpret_cast<HGLOBAL>(data.lParam));
    data.lParam = 0;
    ::SendMessageA(host.tree, TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&data));
    FreeBlocks(Next(TVGN_CHILD, item));
  }
}

void ClearDirectly() {
  FreeBlocks(Next(TVGN_ROOT, nullptr));
  ::SendMessageA(host.tree, TVM_DELETEITEM, 0,
                 reinterpret_cast<LPARAM>(TVI_ROOT));
}

// Milliseconds of processor time, to compare what takes minutes on a machine
// that others use as well.
template <class Action>
double ProcessorTime(Action action) {
  const auto used = [] {
    FILETIME created, exited, kernel, user;
    ::GetProcessTimes(::GetCurrentProcess(), &created, &exited, &kernel, &user);
    return (user.dwLowDateTime + user.dwHighDateTime * 4294967296.0) / 10000;
  };
  const double before = used();
  action();
  return used() - before;
}

void MeasureDisplay(unsigned elements) {
  Conversation talk;
  talk.Open().Send(1,
                   AssociateAccept(AnsweredContext(1, 0, "1.2.840.10008.1.2")));
  talk.Send(0, PData(Pdv(1, kLastCommand, Command(0x0001, 7))));
  Bytes data;
  for (unsigned i = 0; i < elements; ++i) {
    data += ImplicitElement(0x0008, 0x0060, Text("CT"));
  }
  const Bytes pdu = PData(Pdv(1, kLastData, data));
  for (std::size_t at = 0; at < pdu.size(); at += 15000) {
    talk.Send(0, pdu.Part(at, 15000));
  }
  EmptyCapture(pdu.size() * 2);
  TakePackets(talk.Acknowledge(1));
  dicom::LoadModule();
  ListAll(1);
  const auto show = [] {
    DisplayDicomPacket(host.window, host.tree, 0x7FFFFFFF, nullptr, host.hex,
                       1);
  };
  const auto clear = [] { ClearDicomDisplay(0, host.tree, host.hex); };
  std::vector<Line> lines;
  {
    const LineRecorder recorder;
    show();
    lines = recorder.Lines();
  }
  const double cleared = ProcessorTime(clear);
  const double shown = ProcessorTime(show);
  clear();
  const double inserted = ProcessorTime([&] { InsertDirectly(lines); });
  const double freed = ProcessorTime(&ClearDirectly);
  std::printf(
      "show %u elements in %u lines and clear them: %.0f + %.0f ms, "
      "directly %.0f + %.0f ms: %.2f\n",
      elements, static_cast<unsigned>(lines.size()), shown, cleared, inserted,
      freed, (shown + cleared) / (inserted + freed));
  dicom::UnloadModule();
}

}  // namespace

int main(int count, char** arguments) {
  const int megabytes = count > 1 ? std::atoi(arguments[1]) : 100;
  const int elements = count > 2 ? std::atoi(arguments[2]) : 100000;
  OpenHost();
  MeasureLoad();
  MeasureList(static_cast<std::size_t>(megabytes));
  if (elements > 0) MeasureDisplay(static_cast<unsigned>(elements));
  return 0;
}
