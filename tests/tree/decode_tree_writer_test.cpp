#include "tree/decode_tree_writer.h"

#include <gtest/gtest.h>

#include <optional>

#include "errors/errors.h"
#include "tests/recorders.h"
#include "tests/test_host.h"

namespace dicom {
namespace {

using testing::kExpansion;
using testing::kImages;
using testing::kSections;
using testing::TestHost;

class DecodeTreeWriterTest : public ::testing::Test {
 protected:
  ~DecodeTreeWriterTest() override { Clear(); }

  void Clear() {
    writer_.reset();
    ClearTree(host_.Tree());
  }

  void Begin(std::uint32_t expand_mask = 0) {
    Clear();
    writer_.emplace(target_, expand_mask);
  }

  // An open section with `depth` levels; nothing at all for depth 0.
  void Descend(int depth) {
    if (depth > 0) Add("section", LevelStep::kSection);
    for (int level = 1; level < depth; ++level) Add("open", LevelStep::kOpen);
  }

  void Add(const std::string& text, LevelStep step, std::uint32_t offset = 0,
           std::uint32_t length = 0) {
    writer_->AddLine(text, step, offset, length);
  }

  // The tree depth at which the line appears, as a digit; '-' when the writer
  // refuses it.
  char DepthOf(const std::string& text, LevelStep step) {
    try {
      writer_->AddLine(text, step, 0, 0);
    } catch (const WrongTreeDepth&) {
      return '-';
    }
    const std::string tree = host_.TreeText();
    const auto line = tree.rfind('\n', tree.find("] " + text + "\n"));
    return tree[line == std::string::npos ? 0 : line + 1];
  }

  TestHost host_;
  const LineTarget target_{host_.Window(), host_.Tree(), host_.Images()};
  std::optional<DecodeTreeWriter> writer_;
};

TEST_F(DecodeTreeWriterTest, EachStepIsAdmittedAndMovesByItsRule) {
  // For each depth from 0 to 7: where the step's line appears, and where a
  // plain line behind it does.
  constexpr const char* kOutcomes[] = {
      "01 01 01 01 01 01 01 01",  // section
      "-- 11 22 33 44 55 66 77",  // line
      "-- 12 23 34 45 56 67 -7",  // open
      "-- 1- 21 32 43 54 65 76",  // last line
      "-- -1 2- 31 42 53 64 75",  // last line of two
      "-- 11 11 11 11 11 11 11",  // line at level 1
      "-- -1 22 22 22 22 22 22",  // line at level 2
      "-- 12 12 12 12 12 12 -7",  // open at level 1
      "-- -1 23 23 23 23 23 -7",  // open at level 2
      "-- -1 -2 -3 -4 -5 -6 -7",  // no step
  };
  for (std::uint32_t step = 0; step < std::size(kOutcomes); ++step) {
    SCOPED_TRACE(step);
    std::string outcomes;
    for (int depth = 0; depth <= 7; ++depth) {
      Begin();
      Descend(depth);
      if (depth > 0) outcomes += ' ';
      outcomes += DepthOf("the line", static_cast<LevelStep>(step));
      outcomes += DepthOf("the next", LevelStep::kLine);
    }
    EXPECT_EQ(outcomes, kOutcomes[step]);
  }
  Begin();
  Descend(3);
  EXPECT_EQ(DepthOf("x", static_cast<LevelStep>(0xFFFFFFFF)), '-');
}

TEST_F(DecodeTreeWriterTest, LinesCarryTheirSectionRangeAndImage) {
  Begin();
  Add(std::string("one\0hidden", 10), LevelStep::kSection, 0, 20000);
  Add("a", LevelStep::kOpen, 13800, 20);
  Add("b", LevelStep::kLastLine, 13808, 1);
  Add("two", LevelStep::kSection, 7, 9);
  Add("", LevelStep::kLineAtLevel1, 1, 2);
  EXPECT_EQ(host_.TreeText(kSections | kImages),
            "0 [0+13808] section=1 image=101 one\n"
            "1 [13800+8] section=1 image=108 a\n"
            "2 [0+0] section=1 image=108 b\n"
            "0 [7+9] section=2 image=102 two\n"
            "1 [1+2] section=2 image=109 \n");

  for (int section = 3; section <= 14; ++section) {
    Add("section", LevelStep::kSection);
  }
  Add("last", LevelStep::kLine);
  const std::string tree = host_.TreeText(kImages);  // the table has 14 entries
  EXPECT_NE(tree.find("image=112 section\n0 [0+0] image=113 section\n"
                      "0 [0+0] image=113 section\n1 [0+0] image=113 last\n"),
            std::string::npos);
}

TEST_F(DecodeTreeWriterTest, FinishingExpandsTheDeepestOpenItemByTheMask) {
  Begin(1u << 2);
  for (const char* section : {"one", "two", "three"}) {
    Add(section, LevelStep::kSection);
    Add("open", LevelStep::kOpen);
    Add("leaf", LevelStep::kLine);
  }
  // The third section is still open; nothing is expanded above an open item.
  EXPECT_EQ(host_.TreeText(kExpansion),
            "0 [0+0] collapsed one\n1 [0+0] collapsed open\n2 [0+0] leaf\n"
            "0 [0+0] collapsed two\n1 [0+0] expanded open\n2 [0+0] leaf\n"
            "0 [0+0] collapsed three\n1 [0+0] collapsed open\n2 [0+0] leaf\n");

  Begin(1u << 1);
  Add("one", LevelStep::kSection);
  Add("leaf", LevelStep::kLine);
  writer_->FinishTree();
  const std::string finished = "0 [0+0] expanded one\n1 [0+0] leaf\n";
  EXPECT_EQ(host_.TreeText(kExpansion), finished);
  EXPECT_THROW(writer_->AddLine("x", LevelStep::kLine, 0, 0), WrongTreeDepth);
  ExpandTreeLine(target_,
                 reinterpret_cast<HTREEITEM>(
                     ::SendMessageA(host_.Tree(), TVM_GETNEXTITEM, 0, 0)),
                 false);
  writer_.reset();  // has nothing left to finish
  EXPECT_EQ(host_.TreeText(kExpansion),
            "0 [0+0] collapsed one\n1 [0+0] leaf\n");
}

TEST_F(DecodeTreeWriterTest, SectionsBehindTheMaskAreCollapsed) {
  Begin(0xFFFFFFFF);
  for (int section = 1; section <= 33; ++section) {
    Add("section", LevelStep::kSection);
    Add("leaf", LevelStep::kLine);
  }
  writer_->FinishTree();
  std::string expected;
  for (int section = 1; section <= 33; ++section) {
    expected += section < 32 ? "0 [0+0] expanded section\n1 [0+0] leaf\n"
                             : "0 [0+0] collapsed section\n1 [0+0] leaf\n";
  }
  EXPECT_EQ(host_.TreeText(kExpansion), expected);
}

TEST_F(DecodeTreeWriterTest, SavedDecodeIndentsEveryLowerLineOnce) {
  host_.StartSaving();
  Begin(~0u);
  Add("one", LevelStep::kSection);
  Add("two", LevelStep::kOpen);
  Add("three", LevelStep::kLine);
  Add("four", LevelStep::kSection);
  writer_->FinishTree();
  Add("five", LevelStep::kSection);
  EXPECT_EQ(host_.TreeText(), "");
  EXPECT_EQ(host_.StopOutput(),
            "one\r\n    two\r\n    three\r\nfour\r\nfive\r\n");
  // The host saves no longer: the section's other lines go to the tree.
  Add("six", LevelStep::kOpen);
  Add("seven", LevelStep::kLine);
  Add("eight", LevelStep::kLineAtLevel1);
  EXPECT_EQ(host_.TreeText(), "0 [0+0] six\n1 [0+0] seven\n0 [0+0] eight\n");
}

}  // namespace
}  // namespace dicom
