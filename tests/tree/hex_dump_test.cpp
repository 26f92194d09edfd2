#include "tree/hex_dump.h"

#include <gtest/gtest.h>

#include "tests/recorders.h"
#include "tests/test_host.h"

namespace dicom::testing {
namespace {

class HexDumpTest : public ::testing::Test {
 protected:
  HexDumpTest() { host_.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, 0x100u); }
  ~HexDumpTest() override { ClearTree(host_.Tree()); }

  std::string Dump(const Bytes& bytes) {
    ShowHexDump(host_.Hex(), bytes);
    return host_.HexText();
  }

  void AddSection(std::uint32_t offset, const Bytes& bytes) {
    AddHexDumpSection({host_.Window(), host_.Tree(), host_.Images()}, bytes,
                      offset, "Data");
  }

  TestHost host_;
};

TEST_F(HexDumpTest, HexDumpHasRowsOfSixteenBytes) {
  EXPECT_EQ(Dump({}), "");
  EXPECT_EQ(Dump({0x00, 0x1F, 0x20, 0x41, 0x7E, 0x7F, 0x80, 0xE9, 0xFF, 'b',
                  'c', 'd', 'e', 'f', 'g', 0x0D, 0xAB}),
            "0000  00 1F 20 41 7E 7F 80 E9  FF 62 63 64 65 66 67 0D    "
            ".. A~\x7F\x80\xE9\xFF"
            "bcdefg.\r\n"
            "0010  AB                                                 "
            " \xAB               \r\n");
  // Offsets grow beyond four digits.
  const std::string dump = Dump(Repeat('x', 0x10001));
  EXPECT_EQ(dump.size(), 0x1001u * 76);
  EXPECT_EQ(dump.substr(0xFFF * 76, 9), "FFF0  78 ");
  EXPECT_EQ(dump.substr(0x1000 * 76, 9), "10000 78 ");
}

TEST_F(HexDumpTest, HexDumpWithoutMemoryIsEmpty) {
  const std::size_t before = GlobalBlocks();
  EXPECT_NE(Dump(Text("text")), "");
  FailGlobalAlloc(1);
  EXPECT_EQ(Dump(Text("text")), "");
  const std::uint8_t byte = 0;  // not read: the text would not fit in 4 GB
  ShowHexDump(host_.Hex(), {&byte, 0x40000000});
  EXPECT_EQ(host_.HexText(), "");
  EXPECT_EQ(GlobalBlocks(), before);
}

TEST_F(HexDumpTest, HexSectionRowsNameTheirBytesOfTheHexWindow) {
  AddSection(12, Repeat('0', 20));
  EXPECT_EQ(host_.TreeText(kSections | kImages | kExpansion),
            "0 [12+20] section=8 image=106 collapsed Data\n"
            "1 [12+16] section=8 image=113 "
            "0000  30 30 30 30 30 30 30 30  30 30 30 30 30 30 30 30    "
            "0000000000000000\n"
            "1 [28+4] section=8 image=113 "
            "0010  30 30 30 30                                        "
            " 0000            \n");
}

TEST_F(HexDumpTest, LastFullRowOfAHexSectionHasNoBytes) {
  host_.SetState(DICOM_STATE_SECTION_EXPAND_MASK, 0x100u);
  AddSection(12, Repeat(0, 32));
  const std::string blanks =
      "  00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00"
      "    ................\n";
  EXPECT_EQ(host_.TreeText(kExpansion),
            "0 [12+32] expanded Data\n"
            "1 [12+16] 0000" +
                blanks + "1 [44+0] 0010" + blanks);
}

TEST_F(HexDumpTest, HexSectionsMayBeLeftOut) {
  AddSection(0, {});
  EXPECT_EQ(host_.TreeText(), "");
  AddSection(0, Text("x"));
  EXPECT_EQ(host_.TreeCount(), 2u);
  host_.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, 0u);
  AddSection(0, Text("x"));
  host_.DropState();
  AddSection(0, Text("x"));
  EXPECT_EQ(host_.TreeCount(), 2u);
}

}  // namespace
}  // namespace dicom::testing
