// Drives the window as a person does, with its real controls and the real DLL.
// Runs in the source folder; the DLLs stand where the build puts them.

#include <windows.h>
// After windows.h.
#include <commctrl.h>
#include <shlobj.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "gtest/gtest.h"
#include "host/capview/main_window.h"
#include "host/capview/resource.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

namespace fs = std::filesystem;

std::wstring BuildFolder() {
  wchar_t path[1024];
  GetModuleFileNameW(nullptr, path, 1024);
  return fs::path(path).parent_path().parent_path().wstring();
}

std::string Contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void Write(const fs::path& path, const std::string& bytes,
           bool append = false) {
  std::ofstream(path,
                std::ios::binary | (append ? std::ios::app : std::ios::trunc))
      << bytes;
}

class CapviewTest : public testing::Test {
 protected:
  CapviewTest() {
    INITCOMMONCONTROLSEX controls{sizeof controls, ICC_WIN95_CLASSES};
    InitCommonControlsEx(&controls);
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    folder_ = fs::path(folder) / L"capview \u00FC\u4E2D";
    fs::create_directories(folder_);
    SetEnvironmentVariableA("FAULT", "");
    Start(BuildFolder() + L"\\bin\\DicomDecode.dll");
  }
  ~CapviewTest() override {
    window_.reset();
    fs::remove_all(folder_);
  }

  void Start(const std::wstring& module) {
    window_ = std::make_unique<MainWindow>(
        module, (folder_ / L"settings" / L"capview.ini").wstring());
    SetWindowPos(window_->Handle(), nullptr, 0, 0, 1200, 780, SWP_NOZORDER);
    window_->Show(SW_SHOWNORMAL);
    Settle();
  }

  // Until nothing is left to be done.
  void Settle() {
    MSG message;
    do {
      while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
      }
    } while (window_->Work());
    UpdateWindow(window_->Hex().Handle());
  }

  void Open(const fs::path& capture) {
    window_->Open(capture.wstring());
    Settle();
  }
  void Drop(const fs::path& file) {
    const std::wstring name = file.wstring();
    const std::size_t bytes = sizeof(DROPFILES) + (name.size() + 2) * 2;
    const HGLOBAL block = GlobalAlloc(GHND, bytes);
    auto* drop = static_cast<DROPFILES*>(GlobalLock(block));
    drop->pFiles = sizeof *drop;
    drop->fWide = TRUE;
    std::copy(name.begin(), name.end(), reinterpret_cast<wchar_t*>(drop + 1));
    GlobalUnlock(block);
    SendMessageW(window_->Handle(), WM_DROPFILES,
                 reinterpret_cast<WPARAM>(block), 0);
    Settle();
  }
  void Command(int id) {
    SendMessageW(window_->Handle(), WM_COMMAND, static_cast<WPARAM>(id), 0);
    Settle();
  }
  void Filter(const wchar_t* text) {
    SetDlgItemTextW(window_->Handle(), IDC_FILTER, text);
    Settle();
  }
  void SelectRow(int row) {
    ListView_SetItemState(window_->Rows().Handle(), row,
                          LVIS_SELECTED | LVIS_FOCUSED,
                          LVIS_SELECTED | LVIS_FOCUSED);
    Settle();
  }

  int RowCount() { return ListView_GetItemCount(window_->Rows().Handle()); }
  std::string Cell(int row, RowColumn column) {
    wchar_t text[256] = L"";
    LVITEMW item{};
    item.iSubItem = static_cast<int>(column);
    item.pszText = text;
    item.cchTextMax = 256;
    SendMessageW(window_->Rows().Handle(), LVM_GETITEMTEXTW,
                 static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    return Utf8FromWide(text);
  }
  std::size_t Line(const std::string& text) {
    const auto& lines = window_->Tree().Lines();
    std::size_t i = 0;
    while (i < lines.size() && lines[i].text != text) ++i;
    EXPECT_LT(i, lines.size()) << text;
    return i;
  }
  std::string SelectedLine() {
    const auto line = window_->Tree().SelectedLine();
    return line ? window_->Tree().Lines()[*line].text : "";
  }
  std::string Status() { return window_->Status().Text(); }
  bool StatusHas(const char* text) {
    return Status().find(text) != std::string::npos;
  }

  // Whether the cell's ground is that of a highlight, read from the screen.
  bool IsMarked(const RECT& cell) {
    const HDC device = GetDC(window_->Hex().Handle());
    const COLORREF color = GetPixel(device, cell.left, cell.top);
    ReleaseDC(window_->Hex().Handle(), device);
    return color == GetSysColor(COLOR_HIGHLIGHT);
  }
  std::string MarkedBytes(std::uint32_t from, std::uint32_t to) {
    std::string marked;
    for (std::uint32_t byte = from; byte < to; ++byte) {
      const bool digits = IsMarked(window_->Hex().DigitsRect(byte));
      const bool character = IsMarked(window_->Hex().CharacterRect(byte));
      marked += digits && character ? '#' : digits || character ? '?' : '.';
    }
    return marked;
  }

  fs::path folder_;
  std::unique_ptr<MainWindow> window_;
};

TEST_F(CapviewTest, ShowsRowsTreeAndBytesOfASample) {
  Open("samples/store_explicit_le.pcap");
  EXPECT_EQ(RowCount(), 7);
  EXPECT_EQ(Cell(0, RowColumn::kSummary), "A-ASSOCIATE-RQ PDU");
  EXPECT_EQ(Cell(0, RowColumn::kTime), "02:23:15.181658");
  EXPECT_EQ(Cell(1, RowColumn::kSince), "0.000419");
  EXPECT_EQ(window_->Connections().Text(0),
            "1  192.0.2.2:60234 --> 192.0.2.1:11112  STORESCU --> STORESCP  "
            "7 PDUs, 2 messages, 5,553 bytes  0.045 s");

  Command(IDM_MESSAGE_VIEW);
  ASSERT_EQ(RowCount(), 2);
  SelectRow(1);
  EXPECT_EQ(Cell(1, RowColumn::kSummary), "C-SEND-RSP");
  EXPECT_EQ(Cell(1, RowColumn::kDetail), "Message Id: 1");
  window_->Tree().SelectLine(Line("Value Field: 8001h - C-SEND-RSP"));
  Settle();
  EXPECT_EQ(window_->Status().Bytes(), "bytes 54 to 55 (2)");
  EXPECT_EQ(MarkedBytes(48, 64), "......##........");

  // A range over three lines of the dump.
  window_->Tree().SelectLine(Line("Value Field: 1.2.840.10008.5.1.4.1.1.7"));
  Settle();
  EXPECT_EQ(MarkedBytes(16, 48), "....##########################..");

  const RECT cell = window_->Hex().CharacterRect(84);
  const LPARAM point = MAKELPARAM(cell.left + 1, cell.top + 1);
  SendMessageW(window_->Hex().Handle(), WM_LBUTTONDOWN, MK_LBUTTON, point);
  SendMessageW(window_->Hex().Handle(), WM_LBUTTONUP, 0, point);
  Settle();
  EXPECT_EQ(SelectedLine(), "Value Field: 0");
  EXPECT_EQ(window_->Status().Bytes(), "bytes 84 to 85 (2)");

  Command(IDM_JUMP);
  EXPECT_EQ(window_->Rows().Selected(), 0u);
  Command(IDM_PDU_VIEW);  // the place is kept: the message's first PDU
  EXPECT_EQ(window_->Rows().Selected(), 2u);
}

TEST_F(CapviewTest, TellsWhichMessageFailed) {
  std::string capture = Contents("samples/echo.pcap");
  const std::string success("\0\0\0\x09\2\0\0\0\0\0", 10);  // (0000,0900)
  const std::size_t status = capture.find(success);
  ASSERT_NE(status, capture.npos);
  capture[status + 9] = '\xA7';
  const fs::path file = folder_ / L"failing.pcap";
  Write(file, capture);
  Open(file);
  EXPECT_TRUE(StatusHas("1 message failed: row 2 of the messages")) << Status();
  Command(IDM_MESSAGE_VIEW);
  EXPECT_EQ(Cell(1, RowColumn::kDetail),
            "Message Id: 1 \u00B7 status A700h, a failure");
}

TEST_F(CapviewTest, FilterKeepsMatchingRowsAndEscapeClearsIt) {
  Open("samples/find_worklist.pcapng");
  ASSERT_EQ(RowCount(), 15);
  Filter(L"release");
  EXPECT_EQ(RowCount(), 2);
  EXPECT_EQ(Cell(0, RowColumn::kNumber), "14");
  EXPECT_EQ(window_->Status().Rows(), "2 of 15 PDUs");
  Filter(L"release dir:<");
  EXPECT_EQ(RowCount(), 1);
  EXPECT_EQ(Cell(0, RowColumn::kSummary), "A-RELEASE-RP PDU");
  Filter(L"no such text");
  EXPECT_EQ(RowCount(), 0);
  Command(IDCANCEL);
  EXPECT_EQ(RowCount(), 15);
  SelectRow(12);
  Filter(L"associate");
  EXPECT_FALSE(window_->Rows().Selected());
  Command(IDCANCEL);
  EXPECT_EQ(window_->Rows().Selected(), 12u);
}

TEST_F(CapviewTest, SavesDecodes) {
  Open("samples/echo.pcap");
  const fs::path file = folder_ / L"saved \u00E4.txt";
  window_->SaveDecode({ListKind::kPdus, 4, 5}, file.wstring());
  Settle();
  EXPECT_EQ(Contents(file),
            "DICOM - Upper Layer Protokoll: A-RELEASE-RQ PDU (05h)\r\n"
            "    PDU-Type: A-RELEASE-RQ (05h)\r\n"
            "    Reserved: 00h\r\n"
            "    PDU-Length: 00000004h, 4\r\n"
            "    Reserved: 00000000h\r\n");
  EXPECT_TRUE(StatusHas("1 decode was saved")) << Status();
  EXPECT_EQ(Line("Calling AE title: ECHOSCU         "), 7u);  // still shown
}

TEST_F(CapviewTest, FollowsAGrowingFileUntilItIsTurnedOff) {
  const std::string whole = Contents("samples/echo.pcap");
  const fs::path file = folder_ / L"growing.pcap";
  Write(file, whole.substr(0, 1700));
  Open(file);
  Command(IDM_FOLLOW);
  const int before = RowCount();
  ASSERT_LT(before, 6);
  EXPECT_TRUE(StatusHas("Following")) << Status();  // the last frame is cut
  Write(file, whole.substr(1700), true);
  SendMessageW(window_->Handle(), WM_TIMER, 2, 0);  // as twice a second
  Settle();
  EXPECT_EQ(RowCount(), 6);
  EXPECT_TRUE(StatusHas("Following")) << Status();
  Command(IDM_FOLLOW);
  EXPECT_FALSE(StatusHas("Following")) << Status();
  EXPECT_EQ(RowCount(), 6);
}

TEST_F(CapviewTest, DamagedAndForeignFilesLeaveOneSentence) {
  const fs::path damaged = folder_ / L"damaged.pcap";
  Write(damaged, Contents("samples/echo.pcap").substr(0, 1500));
  Open(damaged);
  EXPECT_TRUE(StatusHas("breaks off")) << Status();
  const int rows = RowCount();
  EXPECT_GT(rows, 1);
  Open("LICENSE");
  EXPECT_TRUE(StatusHas("give the name of a pcap or pcapng file")) << Status();
  EXPECT_EQ(RowCount(), rows);
  EXPECT_FALSE(window_->Tree().Lines().empty());
}

TEST_F(CapviewTest, AModuleThatFailsIsLoadedAgain) {
  SetEnvironmentVariableA("FAULT", "raise@1 fail@9");
  Start(BuildFolder() + L"\\tests\\faulty\\faulty.dll");
  Open("samples/echo.pcap");
  const int rows = RowCount();
  ASSERT_GE(rows, 2);
  // The list ends where the module fails again and again; its message box was
  // answered and quoted.
  EXPECT_TRUE(StatusHas("The module showed a message box")) << Status();
  SelectRow(1);
  EXPECT_TRUE(
      StatusHas("Row 2 could not be decoded to its end (Out of "
                "Memory)"))
      << Status();
  EXPECT_EQ(window_->Tree().Lines().size(), 2u);  // as far as it came
  EXPECT_EQ(RowCount(), rows);
  SelectRow(0);
  EXPECT_EQ(window_->Tree().Lines().size(), 5u);
  SetEnvironmentVariableA("FAULT", "");
  Command(IDM_RELOAD);
  EXPECT_GT(RowCount(), rows);
  EXPECT_EQ(window_->Rows().Selected(), 0u);
}

TEST_F(CapviewTest, EscapeEndsReadingAndKeepsWhatIsThere) {
  const std::string sample = Contents("samples/echo.pcap");
  std::string capture = sample;
  for (int i = 0; i < 4000; ++i) capture += sample.substr(24);
  const fs::path file = folder_ / L"long.pcap";
  Write(file, capture);
  window_->Open(file.wstring());
  for (int slice = 0; slice < 3; ++slice) window_->Work();
  Command(IDCANCEL);
  EXPECT_TRUE(StatusHas("Stopped")) << Status();
  EXPECT_EQ(RowCount(), 6);
  const std::size_t connections = window_->Connections().Connections().size();
  EXPECT_GT(connections, 0u);
  EXPECT_LT(connections, 4001u);
}

TEST_F(CapviewTest, WithoutAModuleTheWindowSaysSo) {
  Start((folder_ / L"DicomDecode.dll").wstring());
  Open("samples/echo.pcap");
  EXPECT_TRUE(StatusHas("put DicomDecode.dll beside this program")) << Status();
}

TEST_F(CapviewTest, RemembersItsSettings) {
  const auto copy = [this](int number) {
    const fs::path path = folder_ / (L"\u4E2D" + std::to_wstring(number));
    fs::copy_file("samples/echo.pcap", path);
    return path;
  };
  for (int i = 1; i <= 8; ++i) window_->Open(copy(i).wstring());
  Drop(copy(9));
  EXPECT_EQ(RowCount(), 6);
  Command(IDM_LARGER);
  Command(IDM_SHOW_MESSAGE_DATA);
  Command(IDM_FIRST_SECTION);
  Command(IDM_TALLER_LIST);
  const HWND list = window_->Rows().Handle();
  const int width = 2 * ListView_GetColumnWidth(list, 6);
  ListView_SetColumnWidth(list, 6, width);  // as by dragging its edge
  std::array<int, kRowColumns> order{0, 5, 6, 1, 2, 3, 4};
  SendMessageW(list, LVM_SETCOLUMNORDERARRAY, kRowColumns,
               reinterpret_cast<LPARAM>(order.data()));
  SendMessageW(window_->Handle(), WM_CLOSE, 0, 0);

  const std::wstring file = (folder_ / L"settings" / L"capview.ini").wstring();
  const Settings read = ReadSettings(file);
  EXPECT_EQ(read.font_points, Settings().font_points + 1);
  EXPECT_FALSE(read.show_message_data);
  EXPECT_EQ(read.expand_mask, Settings().expand_mask & ~2u);
  EXPECT_GT(read.list_share, Settings().list_share);
  EXPECT_EQ(read.columns.order, order);
  ASSERT_EQ(read.recent_files.size(), 8u);
  EXPECT_EQ(read.recent_files[0], (folder_ / L"\u4E2D9").wstring());
  EXPECT_EQ(read.place.right - read.place.left, 1200);

  Start(BuildFolder() + L"\\bin\\DicomDecode.dll");
  EXPECT_EQ(window_->Rows().GetColumns().order, order);
  EXPECT_NEAR(ListView_GetColumnWidth(window_->Rows().Handle(), 6), width, 2);
  Command(IDM_FIRST_RECENT + 7);
  EXPECT_EQ(RowCount(), 6);
}

}  // namespace
}  // namespace host
