#include "tree/tree_output.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/recorders.h"
#include "tests/test_host.h"

namespace dicom {
namespace {

using testing::Bytes;
using testing::GlobalBlocks;
using testing::kExpansion;
using testing::kImages;
using testing::kSections;
using testing::PrinterRecorder;
using testing::Repeat;
using testing::TestHost;
using testing::Text;

class TreeOutputTest : public ::testing::Test {
 protected:
  ~TreeOutputTest() override { ClearTree(host_.Tree()); }

  HTREEITEM Insert(HTREEITEM parent, const char* text) {
    return InsertTreeLine(host_.Window(), parent, text, TVI_LAST, 5,
                          host_.Tree(), MakeByteRange(1, 2, 3));
  }

  std::string Dump(const Bytes& bytes) {
    EXPECT_EQ(ShowHexDump(host_.Hex(), bytes.data(), bytes.Length()), 1u);
    return host_.HexText();
  }

  std::uint32_t AddSection(std::uint32_t offset, const Bytes& bytes,
                           std::uint32_t optional = 0) {
    return AddHexDumpSection(host_.Window(), host_.Tree(), bytes.data(), offset,
                             static_cast<std::int32_t>(bytes.size()), "Data",
                             optional, host_.Images());
  }

  TestHost host_;
};

TEST_F(TreeOutputTest, RecordsEndAtTheHighlightLimit) {
  struct Case {
    std::uint32_t offset, length, expected_offset, expected_length;
  };
  for (const Case& c : {Case{0, 13807, 0, 13807}, Case{0, 13808, 0, 13808},
                        Case{0, 13809, 0, 13808}, Case{13800, 20, 13800, 8},
                        Case{13807, 0, 13807, 0}, Case{13807, 2, 13807, 1},
                        Case{13808, 5, 0, 0}, Case{0xFFFFFFFF, 5, 0, 0},
                        Case{100, 0xFFFFFFFF, 100, 13708}}) {
    SCOPED_TRACE(std::to_string(c.offset) + "+" + std::to_string(c.length));
    const auto record = MakeByteRange(3, c.offset, c.length);
    EXPECT_EQ(record->section, 3u);
    EXPECT_EQ(record->offset, c.expected_offset);
    EXPECT_EQ(record->length, c.expected_length);
  }
}

TEST_F(TreeOutputTest, ClearingFreesEveryRecordAtAnyDepthAndWidth) {
  const std::size_t before = GlobalBlocks();
  HTREEITEM parent = nullptr;
  for (int depth = 0; depth < 300; ++depth) parent = Insert(parent, "deep");
  for (int i = 0; i < 5000; ++i) Insert(i % 2 ? parent : nullptr, "wide");
  EXPECT_EQ(GlobalBlocks(), before + 5300);
  EXPECT_EQ(ClearTree(host_.Tree()), 1);
  EXPECT_EQ(host_.TreeCount(), 0u);
  EXPECT_EQ(GlobalBlocks(), before);
  EXPECT_EQ(ClearTree(host_.Tree()), 1);

  // The tree view does not know this parent: no item takes the record over.
  EXPECT_EQ(Insert(reinterpret_cast<HTREEITEM>(1001), "x"), nullptr);
  EXPECT_EQ(GlobalBlocks(), before);
}

TEST_F(TreeOutputTest, HexDumpHasRowsOfSixteenBytes) {
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

TEST_F(TreeOutputTest, HexDumpWithoutMemoryIsEmpty) {
  const std::size_t before = GlobalBlocks();
  EXPECT_NE(Dump(Text("text")), "");
  testing::FailGlobalAlloc(1);
  EXPECT_EQ(Dump(Text("text")), "");
  const std::uint8_t byte = 0;  // not read: the text would not fit in 4 GB
  EXPECT_EQ(ShowHexDump(host_.Hex(), &byte, 0x40000000), 1u);
  EXPECT_EQ(host_.HexText(), "");
  EXPECT_EQ(GlobalBlocks(), before);
}

TEST_F(TreeOutputTest, HexSectionRowsNameTheirBytesOfTheHexWindow) {
  EXPECT_EQ(AddSection(12, Repeat('0', 20)), 1u);
  EXPECT_EQ(host_.TreeText(kSections | kImages | kExpansion),
            "0 [12+20] section=8 image=106 collapsed Data\n"
            "1 [12+16] section=8 image=113 "
            "0000  30 30 30 30 30 30 30 30  30 30 30 30 30 30 30 30    "
            "0000000000000000\n"
            "1 [28+4] section=8 image=113 "
            "0010  30 30 30 30                                        "
            " 0000            \n");
}

TEST_F(TreeOutputTest, LastFullRowOfAHexSectionHasNoBytes) {
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

TEST_F(TreeOutputTest, HexSectionRangesEndAtTheHighlightLimit) {
  AddSection(13780, Repeat(0, 50));
  std::string ranges;
  std::istringstream lines(host_.TreeText());
  for (std::string line; std::getline(lines, line);) {
    ranges += line.substr(0, line.find(']')) + "]";
  }
  EXPECT_EQ(ranges, "0 [13780+28]1 [13780+16]1 [13796+12]1 [0+0]1 [0+0]");
}

TEST_F(TreeOutputTest, HexSectionsMayBeLeftOut) {
  host_.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, 0u);
  EXPECT_EQ(AddSection(0, {}, 0), 0u);
  EXPECT_EQ(AddHexDumpSection(host_.Window(), host_.Tree(), nullptr, 0, -1,
                              "Data", 0, nullptr),
            0u);
  EXPECT_EQ(AddSection(0, Text("x"), 1), 1u);
  EXPECT_EQ(host_.TreeText(), "");
  EXPECT_EQ(AddSection(0, Text("x"), 0), 1u);
  EXPECT_EQ(host_.TreeCount(), 2u);
  host_.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, 0x100u);
  EXPECT_EQ(AddSection(0, Text("x"), 1), 1u);
  EXPECT_EQ(host_.TreeCount(), 4u);
  host_.DropState();
  EXPECT_EQ(AddSection(0, Text("x"), 1), 1u);
  EXPECT_EQ(host_.TreeCount(), 4u);
}

TEST_F(TreeOutputTest, PrintingTurnsPages) {
  PrinterRecorder printer;
  host_.StartPrinting(printer.DeviceContext(), 16, 3);
  const HTREEITEM marker = Insert(nullptr, "one");
  EXPECT_EQ(marker, reinterpret_cast<HTREEITEM>(1000));
  Insert(marker, "two");
  EXPECT_EQ(host_.State<std::int32_t>(DICOM_STATE_CURRENT_LINE), 3);
  Insert(marker, "three \xE9");
  EXPECT_EQ(host_.State<std::int32_t>(DICOM_STATE_CURRENT_LINE), 1);
  EXPECT_EQ(AddSection(0, Text("x")), 1u);
  EXPECT_EQ(ExpandTreeLine(host_.Window(), host_.Tree(), marker, TVE_EXPAND),
            1);
  host_.StopOutput();
  EXPECT_EQ(printer.Printed(),
            "0,16 one\n0,32     two\n0,48     three \xE9\n"
            "end page\nstart page\n0,16 Data\n"
            "0,32     0000  78" +
                std::string(50, ' ') + "x" + std::string(15, ' ') + "\n");
  EXPECT_EQ(host_.TreeText(), "");
}

TEST_F(TreeOutputTest, LongLinesArePrintedAndSavedWholeAndTheirRecordsKept) {
  for (std::size_t length : {252u, 253u, 65534u}) {
    SCOPED_TRACE(length);
    const std::string text(length, 'x');
    const std::size_t before = GlobalBlocks();
    host_.StartSaving();
    Insert(Insert(nullptr, text.c_str()), text.c_str());
    EXPECT_EQ(host_.StopOutput(), text + "\r\n    " + text + "\r\n");
    PrinterRecorder printer;
    host_.StartPrinting(printer.DeviceContext(), 16, 100);
    Insert(Insert(nullptr, text.c_str()), text.c_str());
    host_.StopOutput();
    EXPECT_EQ(printer.Printed(), "0,16 " + text + "\n0,32     " + text + "\n");
    EXPECT_EQ(GlobalBlocks(), before + 4);
  }
}

}  // namespace
}  // namespace dicom
