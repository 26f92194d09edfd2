#include "tree/tree_lines.h"

#include <gtest/gtest.h>

#include "tests/recorders.h"
#include "tests/test_host.h"
#include "tree/hex_dump.h"

namespace dicom::testing {
namespace {

class TreeLinesTest : public ::testing::Test {
 protected:
  ~TreeLinesTest() override { ClearTree(host_.Tree()); }

  HTREEITEM Insert(HTREEITEM parent, const char* text) {
    return InsertTreeLine(target_, parent, text, 5, MakeByteRange(1, 2, 3));
  }

  TestHost host_;
  const LineTarget target_{host_.Window(), host_.Tree(), host_.Images()};
};

TEST_F(TreeLinesTest, RecordsEndAtTheHighlightLimit) {
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

TEST_F(TreeLinesTest, ClearingFreesEveryRecordAtAnyDepthAndWidth) {
  const std::size_t before = GlobalBlocks();
  HTREEITEM parent = nullptr;
  for (int depth = 0; depth < 300; ++depth) parent = Insert(parent, "deep");
  for (int i = 0; i < 5000; ++i) Insert(i % 2 ? parent : nullptr, "wide");
  EXPECT_EQ(GlobalBlocks(), before + 5300);
  ClearTree(host_.Tree());
  EXPECT_EQ(host_.TreeCount(), 0u);
  EXPECT_EQ(GlobalBlocks(), before);
  ClearTree(host_.Tree());

  // The tree view does not know this parent: no item takes the record over.
  EXPECT_EQ(Insert(reinterpret_cast<HTREEITEM>(1001), "x"), nullptr);
  EXPECT_EQ(GlobalBlocks(), before);
}

TEST_F(TreeLinesTest, PrintingTurnsPages) {
  PrinterRecorder printer;
  host_.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, 1u);
  host_.StartPrinting(printer.DeviceContext(), 16, 3);
  const HTREEITEM marker = Insert(nullptr, "one");
  EXPECT_EQ(marker, reinterpret_cast<HTREEITEM>(1000));
  Insert(marker, "two");
  EXPECT_EQ(host_.State<std::int32_t>(DICOM_STATE_CURRENT_LINE), 3);
  Insert(marker, "three \xE9");
  EXPECT_EQ(host_.State<std::int32_t>(DICOM_STATE_CURRENT_LINE), 1);
  AddHexDumpSection(target_, Text("x"), 0, "Data");
  ExpandTreeLine(target_, marker, true);
  host_.StopOutput();
  EXPECT_EQ(printer.Printed(),
            "0,16 one\n0,32     two\n0,48     three \xE9\n"
            "end page\nstart page\n0,16 Data\n"
            "0,32     0000  78" +
                std::string(50, ' ') + "x" + std::string(15, ' ') + "\n");
  EXPECT_EQ(host_.TreeText(), "");
}

TEST_F(TreeLinesTest, LongLinesArePrintedAndSavedWholeAndTheirRecordsKept) {
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
}  // namespace dicom::testing
