// What the other tests build upon. Run over the stand-in and over Windows
// itself, these keep the stand-in honest.
#include <gtest/gtest.h>

#include "tests/recorders.h"
#include "tests/test_host.h"

namespace dicom::testing {
namespace {

HTREEITEM Insert(const TestHost& host, HTREEITEM parent, const char* text) {
  TVINSERTSTRUCTA insertion{};
  insertion.hParent = parent;
  insertion.hInsertAfter = parent == nullptr ? TVI_ROOT : TVI_LAST;
  insertion.item.mask = TVIF_TEXT;
  insertion.item.pszText = const_cast<char*>(text);
  return reinterpret_cast<HTREEITEM>(::SendMessageA(
      host.Tree(), TVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&insertion)));
}

LRESULT Send(const TestHost& host, UINT message, WPARAM wparam,
             HTREEITEM item) {
  return ::SendMessageA(host.Tree(), message, wparam,
                        reinterpret_cast<LPARAM>(item));
}

TEST(PlatformTest, TreeViewAddsItemsBehindTheirSiblings) {
  const TestHost host;
  const HTREEITEM b = Insert(host, nullptr, "b\xE9\x80");
  Insert(host, TVI_ROOT, "a");
  Insert(host, b, "b2");
  Insert(host, b, "b1");
  EXPECT_EQ(Insert(host, reinterpret_cast<HTREEITEM>(1000), "x"), nullptr);
  EXPECT_EQ(host.TreeText(), "0 [-] b\xE9\x80\n1 [-] b2\n1 [-] b1\n0 [-] a\n");
  EXPECT_EQ(host.TreeCount(), 4u);
  EXPECT_EQ(Send(host, TVM_DELETEITEM, 0, TVI_ROOT), 1);
  EXPECT_EQ(Send(host, TVM_DELETEITEM, 0, TVI_ROOT), 1);  // also when empty
  EXPECT_EQ(host.TreeText(), "");
}

TEST(PlatformTest, TreeViewExpandsOnlyItemsWithChildren) {
  const TestHost host;
  const HTREEITEM a = Insert(host, nullptr, "a");
  EXPECT_EQ(Send(host, TVM_EXPAND, TVE_EXPAND, a), 0);
  Insert(host, a, "b");
  EXPECT_EQ(Send(host, TVM_EXPAND, TVE_COLLAPSE, a), 0);
  EXPECT_EQ(Send(host, TVM_EXPAND, TVE_EXPAND, a), 1);
  EXPECT_EQ(Send(host, TVM_EXPAND, TVE_EXPAND, a), 1);
  EXPECT_EQ(host.TreeText(kExpansion), "0 [-] expanded a\n1 [-] b\n");
  EXPECT_EQ(Send(host, TVM_EXPAND, TVE_COLLAPSE, a), 1);
  EXPECT_EQ(host.TreeText(kExpansion), "0 [-] collapsed a\n1 [-] b\n");
  EXPECT_EQ(Send(host, TVM_EXPAND, TVE_EXPAND, nullptr), 0);
}

TEST(PlatformTest, DeadWindowsAnswerZero) {
  HWND dead;
  {
    const TestHost host;
    dead = host.Window();
    EXPECT_NE(::GetWindowLongA(dead, DICOM_DISPLAY_STATE_INDEX), 0);
    EXPECT_EQ(::GetWindowLongA(host.Tree(), DICOM_DISPLAY_STATE_INDEX), 0);
  }
  std::int32_t count = -1;
  EXPECT_EQ(::SendMessageA(dead, DICOM_HOST_MESSAGE, DICOM_COUNT_PACKETS,
                           reinterpret_cast<LPARAM>(&count)),
            0);
  EXPECT_EQ(count, -1);
  EXPECT_EQ(::GetWindowLongA(dead, DICOM_DISPLAY_STATE_INDEX), 0);
  EXPECT_EQ(::SetWindowTextA(dead, "text"), 0);
}

TEST(PlatformTest, PostedMessagesRunBeforeQuit) {
  TestHost host;
  std::string order;
  ::PostQuitMessage(7);
  host.Post([&] { order += "a"; });
  host.Post([&] { order += "b"; });
  MSG message{};
  while (::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) &&
         message.message != WM_QUIT) {
    ::TranslateMessage(&message);
    ::DispatchMessageA(&message);
  }
  EXPECT_EQ(order, "ab");
  EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
  EXPECT_EQ(message.wParam, 7u);
  EXPECT_FALSE(::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST(PlatformTest, BoxesAndPrintedLinesAreRecorded) {
  const TestHost host;
  MessageBoxRecorder recorder;
  int calls = 0;
  recorder.WhileBoxIsOpen([&] { ++calls; });
  EXPECT_EQ(::MessageBoxA(host.Window(), "Text!", " ", MB_OK), IDOK);
  EXPECT_EQ(recorder.Boxes(),
            (std::vector<ShownBox>{{host.Window(), "Text!", " "}}));
  EXPECT_EQ(calls, 1);

  PrinterRecorder printer;
  const HDC dc = printer.DeviceContext();
  ::TextOutA(dc, 0, 16, "    line \xE9", 10);
  ::EndPage(dc);
  ::StartPage(dc);
  ::TextOutA(dc, 0, -5, "", 0);
  EXPECT_EQ(printer.Printed(),
            "0,16     line \xE9\nend page\nstart page\n0,-5 \n");
}

TEST(PlatformTest, GlobalBlocksAreCountedAndFailOnDemand) {
  const std::size_t before = GlobalBlocks();
  const DWORD ticks = ::GetTickCount();
  FailGlobalAlloc(2);
  const HGLOBAL block = ::GlobalAlloc(GMEM_ZEROINIT, 12);
  EXPECT_EQ(::GlobalAlloc(GMEM_ZEROINIT, 12), nullptr);
  EXPECT_EQ(GlobalBlocks(), before + 1);
  void* const address = ::GlobalLock(block);
  EXPECT_EQ(::GlobalHandle(address), block);
  ::GlobalUnlock(block);
  EXPECT_EQ(::GlobalFree(block), nullptr);
  EXPECT_EQ(GlobalBlocks(), before);
  EXPECT_EQ(::GlobalAlloc(GMEM_ZEROINIT, 0xFFFFFFF0), nullptr);
  AdvanceTicks(100000);
  EXPECT_GE(::GetTickCount() - ticks, 100000u);
}

}  // namespace
}  // namespace dicom::testing
