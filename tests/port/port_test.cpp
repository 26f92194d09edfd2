// What the module asks of the system in situations that its own tests do not
// bring about. Like those, these run over the stand-in and over Windows itself
// and keep the stand-in honest.
#include <gtest/gtest.h>

#include <bit>
#include <random>

#include "dimse/dicom_dictionary.h"
#include "dimse/value_format.h"
#include "tests/test_host.h"
#include "tree/tree_lines.h"

namespace dicom::testing {
namespace {

TEST(PlatformTest, TreeViewExpandsOnlyItemsWithChildren) {
  const TestHost host;
  const auto insert = [&](HTREEITEM parent, const char* text) {
    return InsertTreeLine({host.Window(), host.Tree(), nullptr}, parent, text,
                          0, nullptr);
  };
  const auto expand = [&](HTREEITEM item, UINT code) {
    return ::SendMessageA(host.Tree(), TVM_EXPAND, code,
                          reinterpret_cast<LPARAM>(item));
  };
  const HTREEITEM a = insert(nullptr, "a");
  EXPECT_EQ(expand(a, TVE_EXPAND), 0);
  insert(a, "b");
  EXPECT_EQ(expand(a, TVE_COLLAPSE), 0);
  EXPECT_EQ(expand(a, TVE_EXPAND), 1);
  EXPECT_EQ(expand(a, TVE_EXPAND), 1);
  EXPECT_EQ(host.TreeText(kExpansion), "0 [-] expanded a\n1 [-] b\n");
  EXPECT_EQ(expand(a, TVE_COLLAPSE), 1);
  EXPECT_EQ(host.TreeText(kExpansion), "0 [-] collapsed a\n1 [-] b\n");
  EXPECT_EQ(expand(nullptr, TVE_EXPAND), 0);
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

#ifdef _WIN32
// The form of a double is that of Windows' own runtime.
TEST(PlatformTest, DoublesEqualTheRuntimes) {
  using Print = int(__cdecl*)(char*, const char*, ...);
  const auto print = reinterpret_cast<Print>(reinterpret_cast<void*>(
      ::GetProcAddress(::LoadLibraryA("msvcrt.dll"), "sprintf")));
  ASSERT_NE(print, nullptr);
  std::mt19937_64 random(7);
  for (int i = 0; i < 3000; ++i) {
    const std::uint64_t bits = random();
    // Every other number is a tie at six decimals or close to one.
    const double near_tie = static_cast<double>(bits % 20000000) / 2;
    const double value = i % 2 == 0 ? std::bit_cast<double>(bits) : near_tie;
    char text[100];
    print(text, "%e", value);
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&value);
    EXPECT_EQ(ValueText({bytes, 8}, 0, 8, kLittleEndian, VrCodeOf("FD")), text)
        << i;
  }
}
#endif

}  // namespace
}  // namespace dicom::testing
