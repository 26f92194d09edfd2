#include "dimse/message_decoder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/decode_test.h"

namespace dicom::testing {
namespace {

class MessageDecoderTest : public DecodeTest {
 protected:
  std::string Decode(const Bytes& bytes, std::uint32_t command_length,
                     std::uint32_t data_length,
                     std::uint8_t context_id = kImplicit) {
    return TreeOf([&](DecodeTreeWriter& writer) {
      MessageDecoder(dictionary_.Get(), contexts_, writer)
          .DecodeMessage({ViewOf(bytes), command_length, data_length,
                          "C-SEND-RQ", context_id});
    });
  }

  const Bytes command_ = ImplicitElement(0, 0x0110, Little16(1));
  const std::string element_lines_ =
      ElementLines(0, "(0000,0110)", "Message ID", 2, ": 1");
  const std::string command_lines_ =
      "0 [0+10] DICOM - Command Set: C-SEND-RQ\n" + element_lines_;
};

TEST_F(MessageDecoderTest, DataSetFollowsAtItsPlaceInTheMessage) {
  EXPECT_EQ(Decode(command_, 10, 0), command_lines_);
  const Bytes rows = ImplicitElement(0x0028, 0x0010, Little16(2));
  EXPECT_EQ(Decode(command_ + rows, 10, 10),
            command_lines_ + "0 [10+10] DICOM - Data Set\n" +
                ElementLines(10, "(0028,0010)", "Rows", 2, ": 2"));
}

// What fails ends in a line, with the position in the message.
TEST_F(MessageDecoderTest, FailuresAreLinesAndTheDataSetFollowsACommandSets) {
  const std::string error = "] ERROR - Could not decode further at Position: ";
  EXPECT_EQ(Decode(command_ + Bytes{1, 2, 3} + Text("x"), 13, 1),
            "0 [0+13] DICOM - Command Set: C-SEND-RQ\n" + element_lines_ +
                "0 [10+1" + error + "Ah, 10\n0 [13+1] DICOM - Data Set\n" +
                "0 [13+1" + error + "Dh, 13\n");
  const Bytes name =
      ImplicitElement(0x0010, 0x0010, {}).Patched(4, Little32(1));
  EXPECT_EQ(Decode(command_ + name, 10, 8),
            command_lines_ +
                "0 [10+8] DICOM - Data Set\n"
                "1 [10+9] (0010,0010) - Patient's Name\n"
                "2 [10+4] Value Type: Patient's Name\n"
                "2 [14+4] Value Length: 00000001h, 1\n"
                "0 [18+1" +
                error + "12h, 18\n");
  EXPECT_EQ(Decode(command_ + name, 10, 8, kNotAccepted),
            command_lines_ + "0 [10+1" + error + "Ah, 10\n");
}

// The record may claim more than the host still delivers.
TEST_F(MessageDecoderTest, LengthsBeyondTheBytesAreCutToThem) {
  EXPECT_EQ(Decode(command_, 0x80000000, 0xFFFFFFFF),
            command_lines_ + "0 [0+0] DICOM - Data Set\n");
  EXPECT_EQ(Decode(command_, 10, 99, kExplicit),
            command_lines_ + "0 [10+0] DICOM - Data Set\n");
}

}  // namespace
}  // namespace dicom::testing
