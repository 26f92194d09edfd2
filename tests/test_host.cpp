#include "tests/test_host.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <utility>

namespace dicom::testing {
namespace {

constexpr char kClass[] = "DicomTestHost";
constexpr UINT kRunPosted = WM_APP;

HWND CreateHostWindow(WNDPROC procedure) {
  WNDCLASSA host_class{};
  host_class.lpfnWndProc = procedure;
  host_class.cbWndExtra = DICOM_DISPLAY_STATE_INDEX + 4;
  host_class.hInstance = ::GetModuleHandleA(nullptr);
  host_class.lpszClassName = kClass;
  ::RegisterClassA(&host_class);  // fails from the second host on
  return ::CreateWindowExA(0, kClass, "Host", WS_OVERLAPPED, 0, 0, 640, 480,
                           nullptr, nullptr, host_class.hInstance, nullptr);
}

HWND CreateChild(HWND parent, const char* class_name, DWORD style) {
  return ::CreateWindowExA(0, class_name, "", WS_CHILD | style, 0, 0, 320, 200,
                           parent, nullptr, ::GetModuleHandleA(nullptr),
                           nullptr);
}

}  // namespace

TestHost::TestHost() : window_(CreateHostWindow(&WindowProcedure)) {
  ::InitCommonControls();
  tree_ = CreateChild(window_, WC_TREEVIEWA, TVS_HASBUTTONS | TVS_HASLINES);
  hex_ = CreateChild(window_, "EDIT", ES_MULTILINE | ES_AUTOHSCROLL);
  ::SetWindowLongA(window_, GWL_USERDATA, reinterpret_cast<LONG>(this));
  ::SetWindowLongA(window_, DICOM_DISPLAY_STATE_INDEX,
                   reinterpret_cast<LONG>(state_.data()));
  for (std::uint32_t i = 0; i < images_.size(); ++i) images_[i] = 100 + i;
}

TestHost::~TestHost() {
  ::SetWindowLongA(window_, GWL_USERDATA, 0);
  ::DestroyWindow(window_);
  if (!saved_path_.empty()) StopOutput();
}

void TestHost::DropState() {
  ::SetWindowLongA(window_, DICOM_DISPLAY_STATE_INDEX, 0);
}

LRESULT CALLBACK TestHost::WindowProcedure(HWND window, UINT message,
                                           WPARAM wparam, LPARAM lparam) {
  auto* const host =
      reinterpret_cast<TestHost*>(::GetWindowLongA(window, GWL_USERDATA));
  if (host != nullptr && message == DICOM_HOST_MESSAGE) {
    return host->Answer(wparam, lparam);
  }
  if (host != nullptr && message == kRunPosted && !host->posted_.empty()) {
    const auto action = std::move(host->posted_.front());
    host->posted_.pop_front();
    action();
    return 0;
  }
  return ::DefWindowProcA(window, message, wparam, lparam);
}

// 0 is success.
LRESULT TestHost::Answer(WPARAM code, LPARAM lparam) {
  auto* const record = reinterpret_cast<DicomPacketRecord*>(lparam);
  const bool counts = code == DICOM_COUNT_PACKETS;
  const std::int32_t index = counts ? 0 : record->index;
  requests_ += (requests_.empty() ? "" : " ") + std::to_string(code) +
               (counts ? "" : ":" + std::to_string(index));
  if (before_answer) before_answer(code, index);
  const auto instead = [](const std::map<std::int32_t, std::int32_t>& others,
                          std::int32_t asked) {
    const auto other = others.find(asked);
    return other == others.end() ? asked : other->second;
  };
  switch (code) {
    case DICOM_COUNT_PACKETS:
      if (refuse_count) return 1;
      if (write_count) {
        write_count(reinterpret_cast<std::int32_t*>(lparam));
      } else {
        *reinterpret_cast<std::int32_t*>(lparam) =
            static_cast<std::int32_t>(packets.size());
      }
      return 0;
    case DICOM_FETCH_PACKET:
      return !Deliver(index, instead(delivered_instead, index), record);
    case DICOM_FETCH_NEXT_PACKET:
      return refuse_next ||
             !Deliver(index + 1, instead(next_instead, index + 1), record);
  }
  return 1;
}

bool TestHost::Deliver(std::int32_t asked, std::int32_t index,
                       DicomPacketRecord* record) {
  if (record->buffer_size != DICOM_PACKET_RECORD_SIZE || index < 0 ||
      static_cast<std::size_t>(index) >= packets.size() ||
      refused.count(asked) != 0) {
    return false;
  }
  const CapturedPacket& packet = packets[static_cast<std::size_t>(index)];
  const auto size =
      std::min<std::size_t>(packet.tcp_bytes.size(), DICOM_PACKET_BYTES);
  std::copy_n(packet.tcp_bytes.begin(), size, record->bytes);
  const auto claimed = claimed_bytes.find(index);
  record->tcp_bytes = claimed == claimed_bytes.end()
                          ? static_cast<std::uint32_t>(size)
                          : claimed->second;
  record->index = index;
  record->direction = packet.direction;
  return true;
}

std::string TestHost::TakeRequests() { return std::exchange(requests_, {}); }

void TestHost::Post(std::function<void()> action) {
  posted_.push_back(std::move(action));
  ::PostMessageA(window_, kRunPosted, 0, 0);
}

void TestHost::StartPrinting(HDC dc, std::int32_t line_height,
                             std::int32_t lines_per_page) {
  SetState(DICOM_STATE_PRINTER_DC, dc);
  SetState(DICOM_STATE_LINE_HEIGHT, line_height);
  SetState(DICOM_STATE_LINES_PER_PAGE, lines_per_page);
  SetState(DICOM_STATE_CURRENT_LINE, std::int32_t{1});
  SetState(DICOM_STATE_OUTPUT_MODE, '7');
}

void TestHost::StartSaving() {
  saved_path_ = "decode_tests_saved.txt";
  SetState(DICOM_STATE_FILE_HANDLE, ::_lcreat(saved_path_.c_str(), 0));
  SetState(DICOM_STATE_OUTPUT_MODE, '8');
}

std::string TestHost::StopOutput() {
  SetState(DICOM_STATE_OUTPUT_MODE, '\0');
  if (saved_path_.empty()) return "";
  ::_lclose(State<HFILE>(DICOM_STATE_FILE_HANDLE));
  std::ifstream file(saved_path_, std::ios::binary);
  std::string saved{std::istreambuf_iterator<char>(file), {}};
  file.close();
  std::remove(saved_path_.c_str());
  saved_path_.clear();
  return saved;
}

HTREEITEM TestHost::NextItem(WPARAM relation, HTREEITEM item) const {
  return reinterpret_cast<HTREEITEM>(::SendMessageA(
      tree_, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

std::string TestHost::TreeText(unsigned columns) const {
  std::string lines;
  std::vector<HTREEITEM> parents;
  HTREEITEM item = NextItem(TVGN_ROOT, nullptr);
  while (item != nullptr) {
    lines += ItemText(item, static_cast<unsigned>(parents.size()), columns);
    HTREEITEM next = NextItem(TVGN_CHILD, item);
    if (next != nullptr) {
      parents.push_back(item);
    } else {
      next = NextItem(TVGN_NEXT, item);
    }
    while (next == nullptr && !parents.empty()) {
      next = NextItem(TVGN_NEXT, parents.back());
      parents.pop_back();
    }
    item = next;
  }
  return lines;
}

std::string TestHost::ItemText(HTREEITEM handle, unsigned depth,
                               unsigned columns) const {
  static std::vector<char> text(70000);  // more than any text of the module
  TVITEMA item{};
  item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE |
              TVIF_STATE | TVIF_CHILDREN;
  item.hItem = handle;
  item.stateMask = TVIS_EXPANDED;
  item.pszText = text.data();
  item.cchTextMax = static_cast<int>(text.size());
  ::SendMessageA(tree_, TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item));

  const auto* const range =
      reinterpret_cast<const DicomByteRangeRecord*>(item.lParam);
  std::string line = std::to_string(depth);
  line += range == nullptr ? " [-]"
                           : " [" + std::to_string(range->offset) + "+" +
                                 std::to_string(range->length) + "]";
  if ((columns & kSections) && range != nullptr) {
    line += " section=" + std::to_string(range->section);
  }
  if (columns & kImages) {
    line += " image=" + std::to_string(item.iImage);
    if (item.iSelectedImage != item.iImage) {
      line += "/" + std::to_string(item.iSelectedImage);
    }
  }
  if ((columns & kExpansion) && item.cChildren != 0) {
    line += item.state & TVIS_EXPANDED ? " expanded" : " collapsed";
  }
  return line + " " + item.pszText + "\n";
}

std::uint32_t TestHost::TreeCount() const {
  return static_cast<std::uint32_t>(::SendMessageA(tree_, TVM_GETCOUNT, 0, 0));
}

std::string TestHost::HexText() const {
  std::string text(static_cast<std::size_t>(::GetWindowTextLengthA(hex_)) + 1,
                   '\0');
  const int length =
      ::GetWindowTextA(hex_, text.data(), static_cast<int>(text.size()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

}  // namespace dicom::testing
