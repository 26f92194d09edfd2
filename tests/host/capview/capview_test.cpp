// Drives the window as a person does: gives commands, and looks at the controls
// for what came of them. With the real controls and the real DLL; runs in the
// source folder, the DLLs stand where the build puts them.

#include <windows.h>
// After windows.h.
#include <commctrl.h>
#include <dlgs.h>
#include <shlobj.h>
#include <windowsx.h>

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
#include "host/module/tree_reader.h"
#include "host/rows/hex_layout.h"
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

constexpr int kFileName = cmb13;  // of the system's dialog
constexpr int kFolder = -1;       // its dialog for folders has no such control

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
    UpdateWindow(Control(hex_));
  }

  // What the person does.
  void Send(UINT message, WPARAM wide, LPARAM data) {
    SendMessageW(window_->Handle(), message, wide, data);
    Settle();
  }
  void Command(int id) { Send(WM_COMMAND, static_cast<WPARAM>(id), 0); }
  void Open(const fs::path& capture) {
    window_->Open({capture});
    Settle();
  }
  // The echo sample, answered with A700h.
  void OpenWithFailure() {
    std::string capture = Contents("samples/echo.pcap");
    const std::string success("\0\0\0\x09\2\0\0\0\0\0", 10);  // (0000,0900)
    capture.at(capture.find(success) + 9) = '\xA7';
    Write(folder_ / L"failing.pcap", capture);
    Open(folder_ / L"failing.pcap");
  }
  void Drop(const std::vector<fs::path>& files) {
    std::wstring names;
    for (const fs::path& file : files) names += file.wstring() + L'\0';
    const std::size_t bytes = sizeof(DROPFILES) + (names.size() + 1) * 2;
    const HGLOBAL block = GlobalAlloc(GHND, bytes);
    auto* drop = static_cast<DROPFILES*>(GlobalLock(block));
    drop->pFiles = sizeof *drop;
    drop->fWide = TRUE;
    std::copy(names.begin(), names.end(), reinterpret_cast<wchar_t*>(drop + 1));
    GlobalUnlock(block);
    Send(WM_DROPFILES, reinterpret_cast<WPARAM>(block), 0);
  }
  void Filter(const wchar_t* text) {
    SetDlgItemTextW(window_->Handle(), IDC_FILTER, text);
    Settle();
  }
  void SelectRow(int row) {
    ListView_SetItemState(Control(IDC_ROWS), row, LVIS_SELECTED | LVIS_FOCUSED,
                          LVIS_SELECTED | LVIS_FOCUSED);
    Settle();
  }
  void Click(std::uint32_t byte) {
    const POINT place = PlaceOf(byte).characters;
    const LPARAM point = MAKELPARAM(place.x + 1, place.y + 1);
    SendMessageW(Control(hex_), WM_LBUTTONDOWN, MK_LBUTTON, point);
    SendMessageW(Control(hex_), WM_LBUTTONUP, 0, point);
    Settle();
  }

  // The dialog that the command opens gets the text and OK.
  void Command(int id, int control, const std::wstring& text) {
    answer_ = {control, text};
    SetTimer(nullptr, 0, 50, OnDialogTimer);
    Command(id);
  }
  static void CALLBACK OnDialogTimer(HWND, UINT, UINT_PTR timer, DWORD) {
    const HWND dialog = FindWindowW(MAKEINTRESOURCEW(32770), nullptr);
    if (!IsWindowVisible(dialog)) return;
    if (answer_.first == kFolder) {
      SendMessageW(dialog, BFFM_SETSELECTIONW, TRUE,
                   reinterpret_cast<LPARAM>(answer_.second.c_str()));
      // Its tree may still be on its way to the folder that it begins with.
      if (SelectedFolder(dialog) != fs::path(answer_.second).filename()) return;
    } else {
      SetDlgItemTextW(dialog, answer_.first, answer_.second.c_str());
    }
    KillTimer(nullptr, timer);
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
  }
  void Find(const wchar_t* text) { Command(IDM_FIND, IDC_ASK_TEXT, text); }

  static std::wstring SelectedFolder(HWND dialog) {
    const HWND tree = FindWindowExW(dialog, nullptr, L"SysTreeView32", nullptr);
    wchar_t text[MAX_PATH] = L"";
    TVITEMW item{};
    item.mask = TVIF_TEXT;
    item.hItem = TreeView_GetSelection(tree);
    item.pszText = text;
    item.cchTextMax = MAX_PATH;
    if (item.hItem != nullptr) {
      SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
    return item.pszText;
  }

  // What the person sees.
  HWND Control(int id) { return GetDlgItem(window_->Handle(), id); }
  int RowCount() { return ListView_GetItemCount(Control(IDC_ROWS)); }
  int SelectedRow() {  // -1: none
    return ListView_GetNextItem(Control(IDC_ROWS), -1, LVNI_SELECTED);
  }
  // The cells of a row, one behind the other.
  std::string Row(int row) {
    std::wstring cells;
    for (int column = 0; column < kRowColumns; ++column) {
      wchar_t text[256] = L"";
      ListView_GetItemText(Control(IDC_ROWS), row, column, text, 256);
      cells += (column > 0 ? L"|" : L"") + std::wstring(text);
    }
    return Utf8FromWide(cells);
  }
  std::vector<TreeLine> Lines() { return ReadTree(Control(IDC_TREE)).lines; }
  std::string SelectedLine(int tree = IDC_TREE) {
    wchar_t text[256] = L"";
    TVITEMW item{};
    item.mask = TVIF_TEXT;
    item.hItem = TreeView_GetSelection(Control(tree));
    item.pszText = text;
    item.cchTextMax = 256;
    TreeView_GetItem(Control(tree), &item);
    return Utf8FromWide(text);
  }
  // A line above the rows.
  std::string Finding(int line) {
    wchar_t text[1024] = L"";
    ListBox_GetText(Control(IDC_FINDINGS), line, text);
    return Utf8FromWide(text);
  }
  // The sentence, the percentage, the rows, the bytes.
  std::string Status(int part = 0) {
    wchar_t text[1024] = L"";
    SendMessageW(Control(IDC_STATUS), SB_GETTEXTW, static_cast<WPARAM>(part),
                 reinterpret_cast<LPARAM>(text));
    return Utf8FromWide(text);
  }
  std::string Bytes() { return Status(3); }
  void ExpectStatus(const char* part) {
    EXPECT_PRED_FORMAT2(testing::IsSubstring, part, Status());
  }

  // Where a byte of the dump stands, asked of the control.
  struct BytePlace {
    POINT digits, characters;
  };
  BytePlace PlaceOf(std::uint32_t byte) {
    const std::uint32_t line = byte / kDumpBytesPerLine;
    const auto at = [&](std::uint32_t column) {
      const LRESULT first = SendMessageW(Control(hex_), EM_LINEINDEX, line, 0);
      const LRESULT place =
          SendMessageW(Control(hex_), EM_POSFROMCHAR,
                       static_cast<WPARAM>(first) + column, 0);
      return POINT{GET_X_LPARAM(place), GET_Y_LPARAM(place)};
    };
    const auto columns = HighlightInLine(line, byte, 1);
    return {at(columns->digits.first), at(columns->characters.first)};
  }
  // Of bytes from < to: # where both the digits and the character are marked on
  // the screen, . where neither is.
  std::string MarkedBytes(std::uint32_t from, std::uint32_t to) {
    const HDC device = GetDC(Control(hex_));
    const auto is_marked = [&](POINT place) {
      return GetPixel(device, place.x, place.y) == GetSysColor(COLOR_HIGHLIGHT);
    };
    std::string marked;
    for (std::uint32_t byte = from; byte < to; ++byte) {
      const auto [digits, characters] = PlaceOf(byte);
      const int count = is_marked(digits) + is_marked(characters);
      marked += ".?#"[count];
    }
    ReleaseDC(Control(hex_), device);
    return marked;
  }

  inline static std::pair<int, std::wstring> answer_;
  int hex_ = IDC_HEX;  // the dump that is in sight
  fs::path folder_;
  std::unique_ptr<MainWindow> window_;
};

TEST_F(CapviewTest, ShowsRowsTreeAndBytesOfASample) {
  Open("samples/store_explicit_le.pcap");
  EXPECT_EQ(RowCount(), 7);
  EXPECT_EQ(Row(1),
            "2||02:23:15.182077|0.000419|\u2190 192.0.2.2:60234|223|||"
            "A-ASSOCIATE-AC PDU||2 of 2 contexts accepted");

  Command(IDM_MESSAGE_VIEW);
  ASSERT_EQ(RowCount(), 2);
  SelectRow(1);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "C-SEND-RSP|Message Id: 1", Row(1));
  Find(L"8001H");
  EXPECT_EQ(SelectedLine(), "Value Field: 8001h - C-SEND-RSP");
  EXPECT_EQ(Bytes(), "bytes 54 to 55 (2)");
  EXPECT_EQ(MarkedBytes(48, 64), "......##........");
  Find(L"field: 1.2.840");  // over three lines of the dump
  EXPECT_EQ(MarkedBytes(16, 48), "....##########################..");
  Click(84);
  EXPECT_EQ(SelectedLine(), "Value Field: 0");
  EXPECT_EQ(Bytes(), "bytes 84 to 85 (2)");

  Command(IDM_JUMP);
  EXPECT_EQ(SelectedRow(), 0);
  Command(IDM_PDU_VIEW);  // the place is kept: the message's first PDU
  EXPECT_EQ(SelectedRow(), 2);
}

TEST_F(CapviewTest, ShowsADataSetWholeAndWhatWasNegotiated) {
  Open("samples/find_worklist.pcapng");
  Command(IDM_MESSAGE_VIEW);
  Command(IDM_DATA_SET_TAB);
  SelectRow(2);
  hex_ = IDC_DATA_HEX;
  // Both parts, 6 and 7 elements: nothing below the sequences was read.
  EXPECT_EQ(TreeView_GetCount(Control(IDC_DATA_TREE)), 2u + 6u + 7u);
  Find(L"protocol EXTRA");  // three levels down, byte 376 behind the 82 before
  EXPECT_EQ(SelectedLine(IDC_DATA_TREE),
            "(0008,0104) LO Code Meaning: Protocol extra");
  EXPECT_EQ(Bytes(), "bytes 458 to 479 (22)");
  EXPECT_EQ(MarkedBytes(448, 484), "..........######################....");
  Click(495);
  EXPECT_EQ(SelectedLine(IDC_DATA_TREE),
            "(0040,1001) SH Requested Procedure ID: RPID2");
  Command(IDM_COLLAPSE_ALL);
  Command(IDM_EXPAND_ALL);
  EXPECT_EQ(TreeView_GetCount(Control(IDC_DATA_TREE)), 2u + 6u + 28u);

  Command(IDM_CONTEXTS_TAB);
  EXPECT_FALSE(IsWindowVisible(Control(IDC_DATA_TREE)));
  wchar_t text[4096] = L"";
  GetWindowTextW(Control(IDC_CONTEXTS), text, 4096);
  EXPECT_PRED_FORMAT2(testing::IsSubstring,
                      "1   Modality Worklist Information Model - FIND",
                      Utf8FromWide(text));
}

TEST_F(CapviewTest, FilterKeepsMatchingRowsAndEscapeClearsIt) {
  Open("samples/find_worklist.pcapng");
  ASSERT_EQ(RowCount(), 15);
  const struct {
    const wchar_t* filter;
    const char* rows;
    const char* first;
  } kSteps[] = {{L"release", "2 of 15 PDUs", "A-RELEASE-RQ PDU|"},
                {L"release dir:<", "1 of 15 PDUs", "A-RELEASE-RP PDU|"},
                {L"no such text", "0 of 15 PDUs", ""}};
  for (const auto& [filter, rows, first] : kSteps) {
    Filter(filter);
    EXPECT_EQ(Status(2), rows);
    EXPECT_EQ(RowCount(), std::atoi(rows)) << rows;
    EXPECT_PRED_FORMAT2(testing::IsSubstring, first, Row(0));
  }
  Command(IDCANCEL);
  EXPECT_EQ(RowCount(), 15);
  Command(IDM_GO_TO_ROW, IDC_ASK_TEXT, L"13");
  EXPECT_EQ(SelectedRow(), 12);
  Filter(L"associate");
  EXPECT_EQ(SelectedRow(), -1);
  Command(IDCANCEL);
  EXPECT_EQ(SelectedRow(), 12);
}

TEST_F(CapviewTest, SavesDecodes) {
  Open("samples/echo.pcap");
  const fs::path file = folder_ / L"saved \u00E4.txt";
  SelectRow(4);
  Command(IDM_SAVE_ROW, kFileName, file.wstring());
  EXPECT_EQ(Contents(file),
            "DICOM - Upper Layer Protokoll: A-RELEASE-RQ PDU (05h)\r\n"
            "    PDU-Type: A-RELEASE-RQ (05h)\r\n"
            "    Reserved: 00h\r\n"
            "    PDU-Length: 00000004h, 4\r\n"
            "    Reserved: 00000000h\r\n");
  ExpectStatus("1 decode was saved");
  EXPECT_EQ(Lines().at(2).text, "Reserved: 00h");  // still shown
}

TEST_F(CapviewTest, SavesObjectsBesideWhatIsThere) {
  Open("samples/store_explicit_le.pcap");
  const fs::path taken = folder_ / "1.2.826.0.1.3680043.9.9999.101.1.1.dcm";
  Write(taken, "mine");
  Command(IDM_SAVE_OBJECTS, kFolder, folder_.wstring());
  ExpectStatus("1 data set was saved to");
  ExpectStatus("for diagnosis, not for clinical use");
  EXPECT_EQ(Contents(taken), "mine");
  const std::string saved =
      Contents(folder_ / "1.2.826.0.1.3680043.9.9999.101.1.1-2.dcm");
  EXPECT_EQ(saved.substr(128, 4), "DICM");
  // Ends as the data set does, whose length the message says.
  EXPECT_GT(saved.size(), 4716u + 132u);
  EXPECT_TRUE(fs::exists(folder_ / "manifest.csv"));
  Open("samples/echo.pcap");
  Command(IDM_SAVE_OBJECTS, kFolder, folder_.wstring());
  ExpectStatus("There is no object to be saved");
}

TEST_F(CapviewTest, FollowsAGrowingFileUntilItIsTurnedOff) {
  const std::string whole = Contents("samples/echo.pcap");
  const fs::path file = folder_ / L"growing.pcap";
  Write(file, whole.substr(0, 1700));
  Open(file);
  Command(IDM_FOLLOW);
  const int before = RowCount();
  ASSERT_LT(before, 6);
  ExpectStatus("Following");  // the last frame is cut
  Write(file, whole.substr(1700), true);
  Send(WM_TIMER, 2, 0);  // as twice a second
  EXPECT_EQ(RowCount(), 6);
  ExpectStatus("Following");
  Command(IDM_FOLLOW);
  EXPECT_EQ(Status(), "1 TCP connection, 1 with DICOM.");
  EXPECT_EQ(RowCount(), 6);
}

// What is wrong is one sentence, and what was shown stays.
TEST_F(CapviewTest, TheStatusLineNamesWhatIsWrong) {
  const std::string sample = Contents("samples/echo.pcap");
  const fs::path damaged = folder_ / L"damaged.pcap";
  Write(damaged, sample.substr(0, 1500));
  Open(damaged);
  ExpectStatus("breaks off");
  const int rows = RowCount();
  EXPECT_GT(rows, 1);
  Open("LICENSE");
  ExpectStatus("give the name of a pcap or pcapng file");
  EXPECT_EQ(RowCount(), rows);
  EXPECT_FALSE(Lines().empty());

  OpenWithFailure();
  ExpectStatus("1 message failed: row 2 of the messages");

  Start((folder_ / L"DicomDecode.dll").wstring());
  Open("samples/echo.pcap");
  ExpectStatus("put DicomDecode.dll beside this program");
}

TEST_F(CapviewTest, AFindingMarksItsRowsAndLeadsToItsLine) {
  OpenWithFailure();
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "3||", Row(2));
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "4|fault|", Row(3));
  Filter(L"release");  // would hide the row
  ListBox_SetCurSel(Control(IDC_FINDINGS), 0);
  SetFocus(Control(IDC_FINDINGS));
  Command(IDOK);
  ASSERT_EQ(RowCount(), 2);  // messages
  EXPECT_EQ(SelectedRow(), 1);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "2|fault|", Row(1));
  EXPECT_PRED_FORMAT2(testing::IsSubstring,
                      "|Message Id: 1 \u00B7 status A700h, a failure|A700h",
                      Row(1));
  // Behind the group length, the SOP class and three numbers.
  EXPECT_EQ(Bytes(), "bytes 76 to 77 (2)");
}

// In the sample the answer's second part waits for an acknowledgement for 95 %
// of the time.
TEST_F(CapviewTest, TheTimeBarTellsWhoseTimeItWasAndLeadsToTheRow) {
  Open("samples/store_explicit_le.pcap");
  Command(IDM_MESSAGE_VIEW);
  const HWND bar = Control(IDC_TIMES);
  ASSERT_TRUE(IsWindowVisible(bar));
  RECT area;
  GetClientRect(bar, &area);
  const auto click = [&](int x) {
    SendMessageW(bar, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, 15));
    Settle();
    return SelectedRow();
  };
  EXPECT_EQ(click(area.right / 2), 1);
  EXPECT_EQ(click(6), 0);
  SetFocus(bar);
  for (int i = 0; i < 9 && Status().find("held back") == std::string::npos;
       ++i) {
    SendMessageW(bar, WM_KEYDOWN, VK_RIGHT, 0);
  }
  ExpectStatus(" s of the acceptor 192.0.2.1:11112, from 0.00");
  Command(IDOK);
  EXPECT_EQ(SelectedRow(), 1);
  Command(IDM_TIME_BAR);
  EXPECT_FALSE(IsWindowVisible(bar));
}

// Of the answers the first came 4.7 ms behind its request, the fourth 43 ms
// behind the third; the others at once. Of three messages the first and last
// byte came with one frame, so that they have no throughput.
TEST_F(CapviewTest, MessagesAreListedByTheirTimes) {
  Open("samples/find_worklist.pcapng");
  const HWND list = Control(IDC_ROWS);
  const auto order = [this] {
    std::string rows;
    for (int row = 0; row < RowCount(); ++row) rows += Row(row).front();
    return rows;
  };
  Command(IDM_MESSAGE_VIEW);
  EXPECT_EQ(ListView_GetColumnWidth(list, 6), 0);  // there is no room for it
  SelectRow(2);
  Command(IDM_SORT_LATENCY);
  EXPECT_GT(ListView_GetColumnWidth(list, 6), 0);
  EXPECT_EQ(order(), "152346");
  EXPECT_EQ(SelectedRow(), 0);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "|0.042970||", Row(1));
  NMLISTVIEW head{};
  head.hdr = {list, IDC_ROWS, LVN_COLUMNCLICK};
  head.iSubItem = 7;
  const auto click = [&] {
    Send(WM_NOTIFY, IDC_ROWS, reinterpret_cast<LPARAM>(&head));
  };
  click();
  EXPECT_EQ(order(), "124356");
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "|1,538 kB/s|", Row(1));
  click();
  EXPECT_EQ(order(), "123456");
}

TEST_F(CapviewTest, FindingsComeWhileTheFileIsRead) {
  std::string capture = Contents("samples/reject_called_aet.pcap");
  const std::string healthy = Contents("samples/echo.pcap").substr(24);
  for (int i = 0; i < 20000; ++i) capture += healthy;
  Write(folder_ / L"long.pcap", capture);
  window_->Open({folder_ / L"long.pcap"});
  const HWND list = Control(IDC_FINDINGS);
  while (window_->Work() && ListBox_GetCount(list) == 0) {
  }
  ExpectStatus("Reading");
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "fault: The acceptor", Finding(0));
  EXPECT_PRED_FORMAT2(testing::IsSubstring,
                      "Compare the called AE title that the requestor",
                      Finding(0) + Finding(1) + Finding(2));
  Settle();
  EXPECT_TRUE(IsWindowVisible(list));
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "fault: The acceptor", Finding(0));
  Open("samples/echo.pcap");
  EXPECT_PRED_FORMAT2(testing::IsSubstring,
                      "No fault: 1 association and 2 messages", Finding(0));
  EXPECT_TRUE(IsWindowVisible(list));
}

TEST_F(CapviewTest, SeveralFilesAreOneCapture) {
  for (const char* const name : {"echo.pcap", "reject_called_aet.pcap"}) {
    fs::copy_file(fs::path("samples") / name, folder_ / name);
  }
  const auto title = [this] {
    wchar_t text[256] = L"";
    GetWindowTextW(window_->Handle(), text, 256);
    return Utf8FromWide(text);
  };
  Drop({folder_ / "reject_called_aet.pcap", folder_ / "echo.pcap"});
  EXPECT_EQ(title(), "echo.pcap and 1 more file - capview");  // began earlier
  EXPECT_EQ(ComboBox_GetCount(Control(IDC_CONNECTIONS)), 1 + 2);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, " reject_called_aet.pcap:6)",
                      Finding(0) + Finding(1));
  Command(IDM_FOLLOW);
  ExpectStatus("Only a capture of one file can be followed");
  Open(folder_ / "e*.pcap");
  EXPECT_EQ(title(), "echo.pcap - capview");
  Command(IDM_FIRST_RECENT + 1);
  EXPECT_EQ(ComboBox_GetCount(Control(IDC_CONNECTIONS)), 1 + 2);
}

TEST_F(CapviewTest, AModuleThatFailsIsLoadedAgain) {
  SetEnvironmentVariableA("FAULT", "raise@1 fail@9");
  Start(BuildFolder() + L"\\tests\\faulty\\faulty.dll");
  Open("samples/echo.pcap");
  const int rows = RowCount();
  ASSERT_GE(rows, 2);
  // The list ends where the module fails again and again; its message box was
  // answered and quoted.
  ExpectStatus("The module showed a message box");
  SelectRow(1);
  ExpectStatus(
      "Row 2 could not be decoded to its end (Out of "
      "Memory)");
  EXPECT_EQ(Lines().size(), 2u);  // as far as it came
  EXPECT_EQ(RowCount(), rows);
  SelectRow(0);
  EXPECT_EQ(Lines().size(), 5u);
  SetEnvironmentVariableA("FAULT", "");
  Command(IDM_RELOAD);
  EXPECT_GT(RowCount(), rows);
  EXPECT_EQ(SelectedRow(), 0);
}

TEST_F(CapviewTest, WhatIsAskedForInsideACallOfTheModuleWaitsForItsEnd) {
  Start(BuildFolder() + L"\\tests\\faulty\\faulty.dll");
  Open("samples/abort_scu.pcap");
  Open("samples/echo.pcap");
  SetEnvironmentVariableA("FAULT", "pump@2");
  PostMessageW(window_->Handle(), WM_COMMAND, IDM_FIRST_RECENT + 1, 0);
  Command(IDM_RELOAD);
  EXPECT_EQ(ComboBox_GetCount(Control(IDC_CONNECTIONS)), 3);
}

TEST_F(CapviewTest, EscapeEndsReadingAndKeepsWhatIsThere) {
  const std::string sample = Contents("samples/echo.pcap");
  std::string capture = sample;
  for (int i = 0; i < 4000; ++i) capture += sample.substr(24);
  const fs::path file = folder_ / L"long.pcap";
  Write(file, capture);
  window_->Open({file});
  for (int slice = 0; slice < 3; ++slice) window_->Work();
  Command(IDCANCEL);
  ExpectStatus("Stopped");
  EXPECT_EQ(RowCount(), 6);
  const int connections = ComboBox_GetCount(Control(IDC_CONNECTIONS));
  EXPECT_GT(connections, 0);
  EXPECT_LT(connections, 4001);
}

TEST_F(CapviewTest, RemembersItsSettings) {
  const auto copy = [this](int number) {
    const fs::path path = folder_ / (L"\u4E2D" + std::to_wstring(number));
    fs::copy_file("samples/echo.pcap", path);
    return path;
  };
  for (int i = 1; i <= 8; ++i) window_->Open({copy(i)});
  Drop({copy(9)});
  EXPECT_EQ(RowCount(), 6);
  for (const int id : {IDM_LARGER, IDM_SHOW_MESSAGE_DATA, IDM_FIRST_SECTION,
                       IDM_TALLER_LIST}) {
    Command(id);
  }
  const HWND list = Control(IDC_ROWS);
  const int width = 2 * ListView_GetColumnWidth(list, 10);
  ListView_SetColumnWidth(list, 10, width);  // as by dragging its edge
  std::array<int, kRowColumns> order{0, 5, 6, 1, 2, 3, 4, 8, 7, 10, 9};
  ListView_SetColumnOrderArray(list, kRowColumns, order.data());
  SendMessageW(window_->Handle(), WM_CLOSE, 0, 0);

  const std::wstring file = (folder_ / L"settings" / L"capview.ini").wstring();
  const Settings read = ReadSettings(file);
  const Settings usual;
  EXPECT_EQ(read.sizes.font_points, usual.sizes.font_points + 1);
  EXPECT_GT(read.sizes.shares.list, usual.sizes.shares.list);
  EXPECT_FALSE(read.switches.show_message_data);
  EXPECT_EQ(read.switches.expand_mask, usual.switches.expand_mask & ~2u);
  EXPECT_EQ(read.columns.order, order);
  ASSERT_EQ(read.recent_files.size(), 8u);
  EXPECT_EQ(read.recent_files[0], (folder_ / L"\u4E2D9").wstring());
  EXPECT_EQ(read.place.right - read.place.left, 1200);

  Start(BuildFolder() + L"\\bin\\DicomDecode.dll");
  std::array<int, kRowColumns> shown{};
  ListView_GetColumnOrderArray(Control(IDC_ROWS), kRowColumns, shown.data());
  EXPECT_EQ(shown, order);
  EXPECT_NEAR(ListView_GetColumnWidth(Control(IDC_ROWS), 10), width, 2);
  Command(IDM_FIRST_RECENT + 7);
  EXPECT_EQ(RowCount(), 6);
}

}  // namespace
}  // namespace host
