#include "dimse/message_decoder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/decode_test.h"

namespace dicom::testing {
namespace {

class MessageDecoderTest : public DecodeTest {
 protected:
  std::string Decode(const MessageParts& message) {
    return TreeOf([&](DecodeTreeWriter& writer) {
      MessageDecoder(dictionary_.Get(), contexts_, writer)
          .DecodeMessage(message);
    });
  }

  std::string Decode(const Bytes& command, const Bytes& data_set,
                     std::uint8_t context_id = kImplicit) {
    const Bytes bytes = command + data_set;
    return Decode({ViewOf(bytes), command.Length(), data_set.Length(),
                   "C-SEND-RQ", context_id});
  }

  const Bytes command_ = ImplicitElement(0, 0x0110, Little16(1));
  const std::string command_lines_ =
      "0 [0+10] DICOM - Command Set: C-SEND-RQ\n"
      "1 [0+10] (0000,0110) - Message ID\n"
      "2 [0+4] Value Type: Message ID\n"
      "2 [4+4] Value Length: 00000002h, 2\n"
      "2 [8+2] Value Field: 1\n";
};

TEST_F(MessageDecoderTest, DataSetFollowsAtItsPlaceInTheMessage) {
  EXPECT_EQ(Decode(command_, {}), command_lines_);
  EXPECT_EQ(Decode(command_, ImplicitElement(0x0028, 0x0010, Little16(2))),
            command_lines_ +
                "0 [10+10] DICOM - Data Set\n"
                "1 [10+10] (0028,0010) - Rows\n"
                "2 [10+4] Value Type: Rows\n"
                "2 [14+4] Value Length: 00000002h, 2\n"
                "2 [18+2] Value Field: 2\n");
}

TEST_F(MessageDecoderTest, FailingCommandSetEndsInALineAndTheDataSetFollows) {
  EXPECT_EQ(Decode(command_ + Bytes{1, 2, 3}, Text("x")),
            "0 [0+13] DICOM - Command Set: C-SEND-RQ\n" +
                command_lines_.substr(command_lines_.find("1 [")) +
                "0 [10+1] ERROR - Could not decode further at Position: Ah, "
                "10\n"
                "0 [13+1] DICOM - Data Set\n"
                "0 [13+1] ERROR - Could not decode further at Position: Dh, "
                "13\n");
}

TEST_F(MessageDecoderTest, FailingDataSetEndsInALineWithTheMessagesPosition) {
  const Bytes name =
      ImplicitElement(0x0010, 0x0010, {}).Patched(4, Little32(1));
  EXPECT_EQ(Decode(command_, name),
            command_lines_ +
                "0 [10+8] DICOM - Data Set\n"
                "1 [10+9] (0010,0010) - Patient's Name\n"
                "2 [10+4] Value Type: Patient's Name\n"
                "2 [14+4] Value Length: 00000001h, 1\n"
                "0 [18+1] ERROR - Could not decode further at Position: 12h, "
                "18\n");
}

TEST_F(MessageDecoderTest, UnknownContextIsALineAtTheDataSet) {
  EXPECT_EQ(Decode(command_, Text("data"), kNotAccepted),
            command_lines_ +
                "0 [10+1] ERROR - Could not decode further at Position: Ah, "
                "10\n");
}

// The record may claim more than the host still delivers.
TEST_F(MessageDecoderTest, LengthsBeyondTheBytesAreCutToThem) {
  EXPECT_EQ(Decode({ViewOf(command_), 0x80000000, 0xFFFFFFFF, "C-SEND-RQ",
                    kImplicit}),
            command_lines_ + "0 [0+0] DICOM - Data Set\n");
  EXPECT_EQ(Decode({ViewOf(command_), 10, 99, "C-SEND-RQ", kExplicit}),
            command_lines_ + "0 [10+0] DICOM - Data Set\n");
}

}  // namespace
}  // namespace dicom::testing
