#include "dimse/command_set_decoder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/decode_test.h"

namespace dicom::testing {
namespace {

TEST(CommandNameTest, NamesKeepTheirOddSpellingAndCompareAllSixteenBits) {
  const struct {
    std::uint16_t field;
    const char* name;
  } cases[] = {{0x0001, "C-SEND-RQ"},         {0x8001, "C-SEND-RSP"},
               {0x0100, "C-EVENT-REPORT-RQ"}, {0x8100, "C-EVENT_REPORT-RSP"},
               {0x0FFF, "C-CANCEL-RQ"},       {0x8150, "N-DELETE-RSP"}};
  for (const auto& c : cases) EXPECT_STREQ(CommandName(c.field), c.name);
  for (int field : {0, 2, 0x8000, 0x8101, 0x8FFF, 0xFFFF}) {
    EXPECT_STREQ(CommandName(static_cast<std::uint16_t>(field)),
                 "Unknown Type");
  }
}

class CommandSetDecoderTest : public DecodeTest {
 protected:
  std::string Decode(const Bytes& command_set,
                     const std::string& caption_suffix = "") {
    return TreeOf([&](DecodeTreeWriter& writer) {
      Run(CommandSetDecoder(
          {ViewOf(command_set), command_set.Length(), 0, caption_suffix, 0},
          dictionary_.Get(), writer));
    });
  }

  // Without the section line.
  std::string DecodeElements(const Bytes& command_set) {
    const std::string text = Decode(command_set);
    return text.substr(text.find('\n') + 1);
  }
};

TEST_F(CommandSetDecoderTest, EchoRequestShowsFiveElements) {
  const Bytes echo =
      CommandSet(ImplicitElement(0, 0x0002, Uid("1.2.840.10008.1.1")) +
                 ImplicitElement(0, 0x0100, Little16(0x0030)) +
                 ImplicitElement(0, 0x0110, Little16(7)) +
                 ImplicitElement(0, 0x0800, Little16(0x0101)));
  EXPECT_EQ(
      Decode(echo, "C-ECHO-RQ"),
      "0 [0+68] DICOM - Command Set: C-ECHO-RQ\n"
      "1 [0+12] (0000,0000) - Command Group Length\n"
      "2 [0+4] Value Type: Command Group Length\n"
      "2 [4+4] Value Length: 00000004h, 4\n"
      "2 [8+4] Value Field: 56\n" +
          ElementLines(12, "(0000,0002)", "Affected SOP Class UID", 18,
                       ": 1.2.840.10008.1.1") +
          "3 [20+18] UID description: Verification SOP Class\n" +
          ElementLines(38, "(0000,0100)", "Command Field", 2,
                       ": 0030h - C-ECHO-RQ") +
          ElementLines(48, "(0000,0110)", "Message ID", 2, ": 7") +
          ElementLines(58, "(0000,0800)", "Command Data Set Type", 2, ": 257"));
}

TEST_F(CommandSetDecoderTest, EmptySetIsTheSectionLineWithItsTrailingBlank) {
  EXPECT_EQ(Decode({}), "0 [0+0] DICOM - Command Set: \n");
}

TEST_F(CommandSetDecoderTest, CommandFieldIsTwoBytesWhateverItsLength) {
  EXPECT_EQ(DecodeElements(ImplicitElement(0, 0x0100, Little32(0x00018100))),
            ElementLines(0, "(0000,0100)", "Command Field", 4,
                         ": 8100h - C-EVENT_REPORT-RSP"));
  // The next element's group is the two bytes of an empty value.
  const Bytes empty = ImplicitElement(0, 0x0100, {}) +
                      ImplicitElement(0x0030, 0x0000, Little16(1));
  EXPECT_TRUE(DecodeElements(empty).starts_with(ElementLines(
      0, "(0000,0100)", "Command Field", 0, ": 0030h - C-ECHO-RQ")));
}

TEST_F(CommandSetDecoderTest, UnknownTagsAndUidsAreShownAsSuch) {
  EXPECT_EQ(
      DecodeElements(ImplicitElement(0x1009, 0xABCD, Text("x")) +
                     ImplicitElement(0, 0x0002, Text("1.2 ")) +
                     ImplicitElement(0, 0x0110, Little16(1))),
      ElementLines(0, "(1009,ABCD)", "Unknown Tag", 1, ":  Unknown Type") +
          ElementLines(9, "(0000,0002)", "Affected SOP Class UID", 4,
                       ": 1.2 ") +
          "3 [17+4] UID description: - Undefined UID\n" +
          ElementLines(21, "(0000,0110)", "Message ID", 2, ": 1"));
}

// FFFFFFF8h must not wrap: not to an element line of length 0 (ranges are
// clamped to 13808), not to the same element again.
TEST_F(CommandSetDecoderTest, LengthPastTheEndEndsTheLoopAfterItsLines) {
  const Bytes wrapping =
      ImplicitElement(0x0008, 0x0001, {}).Patched(4, Little32(0xFFFFFFF8));
  EXPECT_EQ(DecodeElements(wrapping + Repeat(0, 20)),
            "1 [0+13808] (0008,0001) - Unknown Tag\n"
            "2 [0+4] Value Type: Unknown Tag\n"
            "2 [4+4] Value Length: FFFFFFF8h, -8\n"
            "2 [8+13800] Value Field:  Unknown Type\n");
}

TEST_F(CommandSetDecoderTest, ValueThatIsReadPastTheEndThrowsAtTheValue) {
  const Bytes uid = ImplicitElement(0, 0x0002, Text("1.2"));
  EXPECT_EQ(DecodeElements(uid.Patched(4, Little32(4))),
            "1 [0+12] (0000,0002) - Affected SOP Class UID\n"
            "2 [0+4] Value Type: Affected SOP Class UID\n"
            "2 [4+4] Value Length: 00000004h, 4\n" +
                ThrewAt(8, "Out of Range"));
}

TEST_F(CommandSetDecoderTest, CutHeaderThrowsAtTheElementBeforeItsLines) {
  const Bytes first = ImplicitElement(0, 0x0110, Little16(1));
  const std::string lines = DecodeElements(first);
  for (std::uint32_t cut = 1; cut < 8; ++cut) {
    SCOPED_TRACE(cut);
    EXPECT_EQ(DecodeElements(first + Repeat(0, cut)),
              lines + ThrewAt(10, "Out of Range"));
  }
}

}  // namespace
}  // namespace dicom::testing
