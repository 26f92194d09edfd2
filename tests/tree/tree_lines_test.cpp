#include "tree/tree_lines.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/recorders.h"
#include "tests/test_host.h"
#include "tree/decode_tree_writer.h"
#include "tree/hex_dump.h"

namespace dicom::testing {
namespace {

// The messages that change the tree, while it lives: one at a time.
class TreeMessages {
 public:
  explicit TreeMessages(HWND tree)
      : tree_(tree), procedure_(Replace(&NoteAndPassOn)) {
    current_ = this;
  }
  TreeMessages(const TreeMessages&) = delete;
  TreeMessages& operator=(const TreeMessages&) = delete;
  ~TreeMessages() { Replace(procedure_); }

  std::string Take() { return std::exchange(text_, ""); }

 private:
  WNDPROC Replace(WNDPROC procedure) const {
    return reinterpret_cast<WNDPROC>(::SetWindowLongA(
        tree_, GWL_WNDPROC, reinterpret_cast<LONG>(procedure)));
  }

  static LRESULT CALLBACK NoteAndPassOn(HWND window, UINT message,
                                        WPARAM wparam, LPARAM lparam) {
    current_->text_ += Note(message, wparam, lparam);
    return ::CallWindowProcA(current_->procedure_, window, message, wparam,
                             lparam);
  }

  static std::string Note(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == TVM_EXPAND) return "expand " + std::to_string(wparam) + "\n";
    if (message == TVM_DELETEITEM) {
      return lparam == reinterpret_cast<LPARAM>(TVI_ROOT) ? "delete all\n"
                                                          : "delete one\n";
    }
    if (message == TVM_SETITEMA) {
      const auto& item = *reinterpret_cast<const TVITEMA*>(lparam);
      return "set " + std::to_string(item.mask) + " " +
             std::to_string(item.lParam) + "\n";
    }
    if (message != TVM_INSERTITEMA) return "";
    const auto& in = *reinterpret_cast<const TVINSERTSTRUCTA*>(lparam);
    return (in.hInsertAfter == TVI_ROOT   ? "root "
            : in.hInsertAfter == TVI_LAST ? "last "
                                          : "? ") +
           std::string(in.hParent == nullptr ? "without " : "with ") +
           std::to_string(in.item.iImage) + " " +
           std::string(in.item.pszText).substr(0, 8) + "\n";
  }

  static inline TreeMessages* current_;
  HWND tree_;
  WNDPROC procedure_;
  std::string text_;
};

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

// Whether a line has a parent, what it is inserted after, its image; what is
// expanded (2) or collapsed (1), and when.
TEST_F(TreeLinesTest, LinesAreTheseMessages) {
  TreeMessages messages(host_.Tree());
  const auto show = [&](const std::uint32_t* images) {
    const LineTarget target = {host_.Window(), host_.Tree(), images};
    DecodeTreeWriter writer(target, 1u << 2);
    writer.AddLine("one", LevelStep::kSection, 0, 1);
    writer.AddLine("open", LevelStep::kOpen, 0, 1);
    writer.AddLine("two", LevelStep::kSection, 0, 1);
    writer.AddLine("line", LevelStep::kLine, 0, 1);
    AddHexDumpSection(target, Text("x"), 0, "data");
  };
  host_.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, 1u);
  // The output mode is a character, not a number.
  host_.SetState(DICOM_STATE_OUTPUT_MODE, '\7');
  show(host_.Images());
  EXPECT_EQ(messages.Take(),
            "root without 101 one\nlast with 108 open\nexpand 1\n"
            "root without 102 two\nlast with 109 line\n"
            "root without 106 data\nlast with 113 0000  78\nexpand 1\n"
            "expand 2\n");
  ClearTree(host_.Tree());
  std::string freed;
  for (int item = 0; item < 6; ++item) freed += "set 4 0\n";
  EXPECT_EQ(messages.Take(), freed + "delete all\n");
  FailGlobalAlloc(1);  // a line without a record, which nothing frees
  show(nullptr);
  EXPECT_EQ(messages.Take(),
            "root without 0 one\nlast with 0 open\nexpand 1\n"
            "root without 0 two\nlast with 0 line\n"
            "root without 0 data\nlast with 0 0000  78\nexpand 1\n"
            "expand 2\n");
  ClearTree(host_.Tree());
  EXPECT_EQ(messages.Take(),
            freed.substr(freed.find("\n") + 1) + "delete all\n");
  host_.StartSaving();
  show(host_.Images());
  EXPECT_NE(host_.StopOutput(), "");
  PrinterRecorder printer;
  host_.StartPrinting(printer.DeviceContext(), 16, 3);
  show(host_.Images());
  host_.StopOutput();
  EXPECT_EQ(messages.Take(), "");
}

TEST_F(TreeLinesTest, ClearingFreesEveryRecordAtAnyDepthAndWidth) {
  const std::size_t before = GlobalBlocks();
#ifdef _WIN32
  constexpr int kDepth = 300;  // the control's own limit
#else
  constexpr int kDepth = 60'000;  // more than any stack holds
#endif
  HTREEITEM parent = nullptr;
  for (int depth = 0; depth < kDepth; ++depth) parent = Insert(parent, "deep");
  for (int i = 0; i < 5000; ++i) Insert(i % 2 ? parent : nullptr, "wide");
  EXPECT_EQ(GlobalBlocks(), before + kDepth + 5000);
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
