#include "dimse/command_set_decoder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/decode_test.h"

namespace dicom::testing {
namespace {

class CommandSetDecoderTest : public DecodeTest {
 protected:
  std::string Decode(const Bytes& command_set,
                     const std::string& caption_suffix = "") {
    return TreeOf([&](DecodeTreeWriter& writer) {
      CommandSetDecoder(ViewOf(command_set), dictionary_.Get(), writer,
                        caption_suffix, position_);
    });
  }

  // Without the section line.
  std::string DecodeElements(const Bytes& command_set) {
    const std::string text = Decode(command_set);
    return text.substr(text.find('\n') + 1);
  }

  // The Command Field's value line.
  std::string CommandField(const Bytes& value) {
    const std::string text = Decode(ImplicitElement(0, 0x0100, value));
    return text.substr(text.rfind("2 ["));
  }

  std::uint32_t position_ = 99;
};

TEST_F(CommandSetDecoderTest, EchoRequestShowsFiveElements) {
  const Bytes echo =
      CommandSet(ImplicitElement(0, 0x0002, Uid("1.2.840.10008.1.1")) +
                 ImplicitElement(0, 0x0100, Little16(0x0030)) +
                 ImplicitElement(0, 0x0110, Little16(7)) +
                 ImplicitElement(0, 0x0800, Little16(0x0101)));
  EXPECT_EQ(Decode(echo, "C-ECHO-RQ"),
            "0 [0+68] DICOM - Command Set: C-ECHO-RQ\n"
            "1 [0+12] (0000,0000) - Command Group Length\n"
            "2 [0+4] Value Type: Command Group Length\n"
            "2 [4+4] Value Length: 00000004h, 4\n"
            "2 [8+4] Value Field: 56\n"
            "1 [12+26] (0000,0002) - Affected SOP Class UID\n"
            "2 [12+4] Value Type: Affected SOP Class UID\n"
            "2 [16+4] Value Length: 00000012h, 18\n"
            "2 [20+18] Value Field: 1.2.840.10008.1.1\n"
            "3 [20+18] UID description: Verification SOP Class\n"
            "1 [38+10] (0000,0100) - Command Field\n"
            "2 [38+4] Value Type: Command Field\n"
            "2 [42+4] Value Length: 00000002h, 2\n"
            "2 [46+2] Value Field: 0030h - C-ECHO-RQ\n"
            "1 [48+10] (0000,0110) - Message ID\n"
            "2 [48+4] Value Type: Message ID\n"
            "2 [52+4] Value Length: 00000002h, 2\n"
            "2 [56+2] Value Field: 7\n"
            "1 [58+10] (0000,0800) - Command Data Set Type\n"
            "2 [58+4] Value Type: Command Data Set Type\n"
            "2 [62+4] Value Length: 00000002h, 2\n"
            "2 [66+2] Value Field: 257\n");
}

TEST_F(CommandSetDecoderTest, EmptySetIsTheSectionLineWithItsTrailingBlank) {
  EXPECT_EQ(Decode({}), "0 [0+0] DICOM - Command Set: \n");
  EXPECT_EQ(position_, 0u);
}

TEST_F(CommandSetDecoderTest, CommandFieldIsTwoBytesWhateverItsLength) {
  EXPECT_EQ(CommandField(Little16(0x8100)),
            "2 [8+2] Value Field: 8100h - C-EVENT_REPORT-RSP\n");
  EXPECT_EQ(CommandField(Little32(0x00010001)),
            "2 [8+4] Value Field: 0001h - C-SEND-RQ\n");
  EXPECT_EQ(CommandField(Little16(0x0002)),
            "2 [8+2] Value Field: 0002h - Unknown Type\n");
  // The next element's group is the two bytes of an empty value.
  const Bytes empty = ImplicitElement(0, 0x0100, {}) +
                      ImplicitElement(0x0030, 0x0000, Little16(1));
  EXPECT_NE(Decode(empty).find("2 [8+0] Value Field: 0030h - C-ECHO-RQ\n"),
            std::string::npos);
}

TEST_F(CommandSetDecoderTest, UnknownTagsAndUidsAreShownAsSuch) {
  EXPECT_EQ(DecodeElements(ImplicitElement(0x1009, 0xABCD, Text("x")) +
                           ImplicitElement(0, 0x0002, Text("1.2 ")) +
                           ImplicitElement(0, 0x0110, Little16(1))),
            "1 [0+9] (1009,ABCD) - Unknown Tag\n"
            "2 [0+4] Value Type: Unknown Tag\n"
            "2 [4+4] Value Length: 00000001h, 1\n"
            "2 [8+1] Value Field:  Unknown Type\n"
            "1 [9+12] (0000,0002) - Affected SOP Class UID\n"
            "2 [9+4] Value Type: Affected SOP Class UID\n"
            "2 [13+4] Value Length: 00000004h, 4\n"
            "2 [17+4] Value Field: 1.2 \n"
            "3 [17+4] UID description: - Undefined UID\n"
            "1 [21+10] (0000,0110) - Message ID\n"
            "2 [21+4] Value Type: Message ID\n"
            "2 [25+4] Value Length: 00000002h, 2\n"
            "2 [29+2] Value Field: 1\n");
}

// FFFFFFF8h must not wrap: not to an element line of length 0 (ranges are
// clamped to 13808), not to the same element again.
TEST_F(CommandSetDecoderTest, LengthPastTheEndEndsTheLoopAfterItsLines) {
  const Bytes wrapping =
      ImplicitElement(0x0008, 0x0001, {}).Patched(4, Little32(0xFFFFFFF8));
  EXPECT_EQ(Decode(wrapping + Repeat(0, 20)),
            "0 [0+28] DICOM - Command Set: \n"
            "1 [0+13808] (0008,0001) - Unknown Tag\n"
            "2 [0+4] Value Type: Unknown Tag\n"
            "2 [4+4] Value Length: FFFFFFF8h, -8\n"
            "2 [8+13800] Value Field:  Unknown Type\n");
}

TEST_F(CommandSetDecoderTest, ValueThatIsReadPastTheEndThrowsAtTheValue) {
  const Bytes uid = ImplicitElement(0, 0x0002, Text("1.2"));
  EXPECT_EQ(Decode(uid.Patched(4, Little32(4))),
            "0 [0+11] DICOM - Command Set: \n"
            "1 [0+12] (0000,0002) - Affected SOP Class UID\n"
            "2 [0+4] Value Type: Affected SOP Class UID\n"
            "2 [4+4] Value Length: 00000004h, 4\n"
            "threw Out of Range");
  EXPECT_EQ(position_, 8u);
}

TEST_F(CommandSetDecoderTest, CutHeaderThrowsAtTheElementBeforeItsLines) {
  const Bytes first = ImplicitElement(0, 0x0110, Little16(1));
  const std::string lines = DecodeElements(first);
  for (std::uint32_t cut = 1; cut < 8; ++cut) {
    SCOPED_TRACE(cut);
    EXPECT_EQ(DecodeElements(first + Repeat(0, cut)),
              lines + "threw Out of Range");
    EXPECT_EQ(position_, 10u);
  }
}

}  // namespace
}  // namespace dicom::testing
