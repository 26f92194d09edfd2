#include "tracking/pdu_reassembler.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "errors/errors.h"
#include "tests/bytes.h"

namespace dicom::testing {
namespace {

// Two byte streams: each Send() is one packet with a 20-byte TCP header.
class PduReassemblerTest : public ::testing::Test, protected PacketSource {
 protected:
  void Send(const Bytes& payload, std::uint8_t direction = 0) {
    SendPacket(TcpSegmentBytes({}, payload), direction);
  }

  void SendPacket(const Bytes& packet, std::uint8_t direction = 0) {
    packets_.push_back(packet);
    TcpSegment segment;
    segment.Parse(packet.data(), packet.Length(),
                  static_cast<std::uint32_t>(packets_.size() - 1), direction);
    reassembler_.ProcessSegment(segment, *this);
  }

  ByteArrayView PacketBytes(std::uint32_t number) override {
    ++fetches_;
    if (number == refused_) throw UnableToGetPacketFromTapvane();
    return {packets_[number].data(), packets_[number].Length()};
  }

  // "number name packet:offset+length ...", with "<" for direction 1.
  std::string Pdus() const {
    std::string text;
    for (const PduRecord& pdu : reassembler_.Pdus()) {
      text += std::to_string(pdu.pdu_number) + (pdu.direction ? "<" : " ") +
              pdu.summary_text;
      EXPECT_EQ(AppendSpans(pdu.spans, text), pdu.total_length);
    }
    return text;
  }

  // "number c<context> command+data name/id spans".
  std::string Messages() const {
    std::string text;
    for (const DimseMessageRecord& message : reassembler_.Messages()) {
      text += std::to_string(message.message_number) +
              (message.direction ? "<c" : " c") +
              std::to_string(message.presentation_context_id) + " " +
              std::to_string(message.command_length) + "+" +
              std::to_string(message.data_length) + " " + message.first_text +
              "/" + SecondText(message);
      AppendSpans(message.spans, text);
    }
    return text;
  }

  static std::uint32_t AppendSpans(const SpanList& spans, std::string& text) {
    std::uint32_t total = 0;
    for (std::size_t i = 0; i < spans.size(); ++i) {
      text += " " + std::to_string(spans[i].packet_number) + ":" +
              std::to_string(spans[i].offset) + "+" +
              std::to_string(spans[i].length);
      total += spans[i].length;
    }
    text += "\n";
    return total;
  }

  PduReassembler reassembler_;
  std::deque<Bytes> packets_;
  std::uint32_t refused_ = 0xFFFFFFFF;
  int fetches_ = 0;
};

const Bytes kEcho = Command(0x0030, 7);  // 32 bytes
const Bytes kEchoData = PData(Pdv(1, kLastCommand, kEcho));

TEST_F(PduReassemblerTest, PduOverThreeSegmentsIsOneRecordWithThreeSpans) {
  Send(ReleaseRequest().First(6));
  Send(ReleaseRequest().Part(6, 1));
  Send(ReleaseReply(), 1);
  EXPECT_EQ(Pdus(), "2<A-RELEASE-RP PDU 2:20+10\n");
  Send(ReleaseRequest().From(7));
  EXPECT_EQ(Pdus(),
            "2<A-RELEASE-RP PDU 2:20+10\n"
            "1 A-RELEASE-RQ PDU 0:20+6 1:20+1 3:20+3\n");
}

TEST_F(PduReassemblerTest, EveryTypeHasItsNameAndIsCutByItsLength) {
  Bytes stream;
  for (std::uint8_t type : Bytes{0, 1, 2, 3, 5, 6, 7, 8, 255}) {
    stream += Pdu(type, Repeat(0, type));
  }
  Send(stream);
  EXPECT_EQ(Pdus(),
            "1 unkown PDU 0:20+6\n"
            "2 A-ASSOCIATE-RQ PDU 0:26+7\n"
            "3 A-ASSOCIATE-AC PDU 0:33+8\n"
            "4 A-ASSOCIATE-RJ PDU 0:41+9\n"
            "5 A-RELEASE-RQ PDU 0:50+11\n"
            "6 A-RELEASE-RP PDU 0:61+12\n"
            "7 A-ABORT PDU 0:73+13\n"
            "8 unkown PDU 0:86+14\n"
            "9 unkown PDU 0:100+261\n");
}

TEST_F(PduReassemblerTest, OnePduCutAnywhereBehindItsHeaderIsOneRecord) {
  for (std::size_t cut = 6; cut < kEchoData.size(); ++cut) {
    SCOPED_TRACE(cut);
    reassembler_ = PduReassembler();
    if (cut > 6 && cut < 12) {  // inside the PDV header
      EXPECT_THROW(Send(kEchoData.First(cut)), OutOfRange);
      continue;
    }
    Send(kEchoData.First(cut));
    Send(kEchoData.From(cut));
    ASSERT_EQ(reassembler_.Pdus().size(), 1u);
    EXPECT_EQ(reassembler_.Pdus()[0].total_length, kEchoData.size());
    ASSERT_EQ(reassembler_.Messages().size(), 1u);
    EXPECT_EQ(reassembler_.Messages()[0].command_length, kEcho.size());
    EXPECT_STREQ(reassembler_.Messages()[0].first_text, "C-ECHO-RQ");
  }
}

TEST_F(PduReassemblerTest, MessageIsListedWithItsCommandAndReplacedByItsData) {
  Send(PData(Pdv(3, kLastCommand, Command(0x0001, 0xFFFF))));
  EXPECT_EQ(Messages(), "1 c3 32+0 C-SEND-RQ/Message Id: 65535 0:32+32\n");
  Send(PData(Pdv(3, kData, Repeat(1, 8))));
  Send(PData(Pdv(9, kLastData, Repeat(2, 4))));
  EXPECT_EQ(Messages(),
            "1 c3 32+12 C-SEND-RQ/Message Id: 65535 0:32+32 1:32+8 2:32+4\n");
  Send(PData(Pdv(5, kLastCommand, Command(0x8001, 1))), 1);
  EXPECT_EQ(Messages(),
            "1 c3 32+12 C-SEND-RQ/Message Id: 65535 0:32+32 1:32+8 2:32+4\n"
            "2<c5 32+0 C-SEND-RSP/Message Id: 1 3:32+32\n");
}

TEST_F(PduReassemblerTest, SecondPDataOfASegmentIsFedFromItsByte12) {
  // The second PDU's bytes from 12 on look like a command PDV of their own.
  const Bytes hidden = Pdv(7, kLastCommand, kEcho);
  Send(kEchoData + PData(Pdv(1, kLastCommand, hidden)));
  EXPECT_EQ(Messages(),
            "1 c1 32+0 C-ECHO-RQ/Message Id: 7 0:32+32\n"
            "2 c7 32+0 C-ECHO-RQ/Message Id: 7 0:82+32\n");
}

TEST_F(PduReassemblerTest, PDataBehindAContinuedPduIsSkippedByItsHeaders) {
  Send(ReleaseRequest().First(8));
  Send(ReleaseRequest().From(8) + kEchoData +
       PData(Pdv(1, kLastCommand, Pdv(7, kLastCommand, kEcho))));
  EXPECT_EQ(Messages(),
            "1 c1 32+0 C-ECHO-RQ/Message Id: 7 1:34+32\n"
            "2 c7 32+0 C-ECHO-RQ/Message Id: 7 1:84+32\n");
}

TEST_F(PduReassemblerTest, SkipBeyondAPduFeedsNothing) {
  const Bytes small = PData(Pdv(1, kLastCommand, {}));
  Send(kEchoData + small + small + small);
  EXPECT_EQ(Pdus(),
            "1 P-DATA-TF PDU 0:20+44\n"
            "2 P-DATA-TF PDU 0:64+12\n"
            "3 P-DATA-TF PDU 0:76+12\n"
            "4 P-DATA-TF PDU 0:88+12\n");
  EXPECT_EQ(Messages(), "1 c1 32+0 C-ECHO-RQ/Message Id: 7 0:32+32\n");
}

TEST_F(PduReassemblerTest, PDataFlagsAreOneForEachDirectionOfAllWindows) {
  Send(kEchoData.First(20));
  Send(kEchoData.First(20), 1);
  PduReassembler other;
  std::swap(reassembler_, other);
  Send(ReleaseRequest());  // clears that of direction 0
  std::swap(reassembler_, other);
  Send(kEchoData.From(20));
  Send(kEchoData.From(20), 1);
  EXPECT_EQ(Messages(), "2<c1 32+0 C-ECHO-RQ/Message Id: 7 1:32+8 4:20+24\n");
}

TEST_F(PduReassemblerTest, OnlyAfterAContinuedPduIsAReleaseFed) {
  const Bytes release = Pdu(5, Pdv(1, kLastCommand, kEcho));
  Send(kEchoData + release);
  EXPECT_EQ(reassembler_.Messages().size(), 1u);

  Send(kEchoData.First(12), 1);
  // Fed from the release's own first byte, since only P-DATA-TF adds to skip:
  // a data PDV of 0500 0000h bytes, so the message swallows it.
  Send(kEchoData.From(12) + release, 1);
  EXPECT_EQ(reassembler_.Messages().size(), 2u);
  EXPECT_EQ(Pdus(),
            "1 P-DATA-TF PDU 0:20+44\n"
            "2 A-RELEASE-RQ PDU 0:64+44\n"
            "3<P-DATA-TF PDU 1:20+12 2:20+32\n"
            "4<A-RELEASE-RQ PDU 2:52+44\n");
  reassembler_.Flush();
  EXPECT_EQ(Messages().substr(Messages().find("\n2") + 1),
            "2<c1 32+0 C-ECHO-RQ/Message Id: 7 2:20+32\n"
            "2<c1 32+38 C-ECHO-RQ/Message Id: 7 2:20+32 2:58+38\n");
}

TEST_F(PduReassemblerTest, ValuesThatEndInsideAChunkAreListedAsCommands) {
  // Data of context 1, then a command of context 3: its context ID and length
  // are read from the chunk's first header, and it is listed in direction 1.
  const Bytes data = Pdv(1, kLastData, Repeat(0xAA, 32));
  Send(PData(data + Pdv(3, kLastCommand, kEcho)));
  EXPECT_EQ(Messages(),
            "0 c0 32+0 / 0:32+32\n"
            "1<c1 32+0 C-ECHO-RQ/Message Id: 7 0:70+32\n");
}

TEST_F(PduReassemblerTest, CommandInsideAChunkHasTheLengthOfTheFirstPdv) {
  Send(PData(Pdv(1, kLastData, Repeat(0xAA, 8)) + Pdv(3, kLastCommand, kEcho)));
  EXPECT_EQ(Messages(),
            "0 c0 8+0 / 0:32+8\n"
            "1<c1 8+0 / 0:46+8\n");
}

TEST_F(PduReassemblerTest, CommandInTwoPdvsIsOneMessage) {
  Send(PData(Pdv(1, kCommand, kEcho.First(20))));
  Send(PData(Pdv(1, kLastCommand, kEcho.From(20))));
  EXPECT_EQ(Messages(), "1 c1 32+0 C-ECHO-RQ/Message Id: 7 0:32+20 1:32+12\n");
  // In one chunk it is listed twice, and its data replaces the newer entry.
  reassembler_ = PduReassembler();
  Send(PData(Pdv(1, kCommand, kEcho.First(16)) +
             Pdv(1, kLastCommand, kEcho.From(16))));
  Send(PData(Pdv(1, kLastData, {9, 9})));
  EXPECT_EQ(Messages(),
            "1 c1 16+0 / 2:32+16\n"
            "1 c1 32+2 C-ECHO-RQ/Message Id: 7 2:32+16 2:54+16 3:32+2\n");
}

TEST_F(PduReassemblerTest, DataCompletesItsOwnDirectionsMessage) {
  Send(PData(Pdv(1, kLastCommand, Command(1, 1))));
  Send(PData(Pdv(5, kLastCommand, Command(0x8001, 1))), 1);
  Send(PData(Pdv(1, kData, Repeat(1, 8))));
  Send(PData(Pdv(5, kLastData, Repeat(2, 4))), 1);
  Send(PData(Pdv(1, kLastData, Repeat(1, 2))));
  EXPECT_EQ(Messages(),
            "1 c1 32+10 C-SEND-RQ/Message Id: 1 0:32+32 2:32+8 4:32+2\n"
            "2<c5 32+4 C-SEND-RSP/Message Id: 1 1:32+32 3:32+4\n");
}

TEST_F(PduReassemblerTest, SixBytesLeftAreAHeader) {
  Send(PData(Pdv(1, kLastCommand, kEcho) + Pdv(1, kData, {})));
  Send(kEchoData);  // goes on with the message, whose last fragment is to come
  EXPECT_EQ(Messages(),
            "1 c1 32+0 C-ECHO-RQ/Message Id: 7 0:32+32\n"
            "1 c1 64+0 C-ECHO-RQ/Message Id: 7 0:32+32 1:32+32\n");
}

TEST_F(PduReassemblerTest, LaterMessageIdOfGroupZeroDecides) {
  const Bytes request = ImplicitElement(0, 0x0110, Little16(7));
  const Bytes response = ImplicitElement(0, 0x0120, Little16(9));
  const Bytes name = ImplicitElement(0, 0x0100, Little16(1));
  const Bytes others = ImplicitElement(8, 0x0110, Little16(3)) +
                       ImplicitElement(8, 0x0120, Little16(4)) +
                       ImplicitElement(8, 0x0100, Little16(2));
  for (const Bytes& set : {request + response + name, response + request + name,
                           name + request + others}) {
    Send(PData(Pdv(1, kLastCommand, set)));
  }
  std::string texts;
  for (const DimseMessageRecord& message : reassembler_.Messages()) {
    texts += message.first_text + SecondText(message) + "\n";
  }
  EXPECT_EQ(texts,
            "C-SEND-RQMessage Id: 9\n"
            "C-SEND-RQMessage Id: 7\n"
            "C-SEND-RQMessage Id: 7\n");
}

TEST_F(PduReassemblerTest, ShortRestsAndEmptyLastValuesNeverCompleteAMessage) {
  Send(PData(Pdv(1, kLastCommand, {})));  // empty value at the chunk's end
  EXPECT_EQ(Messages(), "");
  Send(PData(Pdv(1, kLastCommand, kEcho) + Repeat(9, 5)));  // 5 bytes are lost
  Send(PData(Pdv(3, kLastCommand, kEcho)));
  EXPECT_EQ(Messages(),
            "2 c1 32+0 C-ECHO-RQ/Message Id: 7 1:32+32\n"
            "3 c3 32+0 C-ECHO-RQ/Message Id: 7 2:32+32\n");
}

TEST_F(PduReassemblerTest, ItemLengthBelowTwoSwallowsTheDirection) {
  const Bytes pdv = Pdv(1, kLastCommand, kEcho).Patched(0, Big32(1));
  Send(PData(pdv));
  Send(kEchoData);
  EXPECT_EQ(Messages(), "");
  reassembler_.Flush();
  EXPECT_EQ(Messages(), "1 c1 70+0 / 0:32+32 1:26+38\n");
}

TEST_F(PduReassemblerTest, DataBeforeTheEndOfACommandIsNeverListed) {
  Send(PData(Pdv(1, kLastData, Repeat(1, 4))));
  reassembler_.Flush();
  EXPECT_EQ(Messages(), "");
  // Nor does it take the place of another message.
  reassembler_ = PduReassembler();
  Send(kEchoData);
  Send(PData(Pdv(3, kCommand, kEcho.First(8))));
  Send(PData(Pdv(3, kLastData, Repeat(1, 4))));
  EXPECT_EQ(Messages(), "1 c1 32+0 C-ECHO-RQ/Message Id: 7 1:32+32\n");
}

TEST_F(PduReassemblerTest, CommandInTinyPdvsIsReadOnceForManyRows) {
  Bytes pdvs;
  for (std::uint8_t byte : kEcho) pdvs += Pdv(1, kData, {byte});
  Send(PData(Pdv(1, kCommand, {}) + pdvs));
  const auto& messages = reassembler_.Messages();
  ASSERT_EQ(messages.size(), 32u);  // the first value was empty
  // Behind 12 bytes of group length and 8 of its own header, the Command
  // Field has its 16 bits with the 22nd byte.
  EXPECT_STREQ(messages[21].first_text, "");
  EXPECT_STREQ(messages[22].first_text, "C-ECHO-RQ");
  EXPECT_EQ(messages[31].command_length, 31u);
  EXPECT_LE(fetches_, 32);
}

TEST_F(PduReassemblerTest, FlushListsWhatIsIncompleteAndRepeatsMessages) {
  Send(kEchoData);
  Send(PData(Pdv(1, kLastData, Repeat(1, 8))).First(16));
  Send(ReleaseReply().First(8), 1);
  reassembler_.Flush();
  EXPECT_EQ(Pdus(),
            "1 P-DATA-TF PDU 0:20+44\n"
            "3<A-RELEASE-RP PDU 2:20+8\n"
            "2 P-DATA-TF PDU 1:20+16\n");
  // The other side had no message: its number 0 stands for position 0, which is
  // overwritten. Number 1 is not below the count of 1, so it is listed again.
  EXPECT_EQ(Messages(),
            "0 c0 0+0 /\n"
            "1 c1 32+4 C-ECHO-RQ/Message Id: 7 0:32+32 1:32+4\n");
  reassembler_.Flush();
  Send(ReleaseRequest());
  EXPECT_EQ(reassembler_.Pdus().size(), 3u);
  EXPECT_EQ(reassembler_.Messages().size(), 2u);
}

TEST_F(PduReassemblerTest, FlushOverwritesTheEntryBehindTheMessagesOwn) {
  Send(kEchoData);     // 1, zero side
  Send(kEchoData, 1);  // 2, other side
  Send(PData(Pdv(1, kLastData, Repeat(1, 4))).First(14));
  reassembler_.Flush();
  EXPECT_EQ(Messages(),
            "1 c1 32+0 C-ECHO-RQ/Message Id: 7 0:32+32\n"
            "1 c1 32+2 C-ECHO-RQ/Message Id: 7 0:32+32 2:32+2\n"
            "2<c1 32+0 C-ECHO-RQ/Message Id: 7 1:32+32\n");
}

// Error paths.

TEST_F(PduReassemblerTest, HeaderCutByASegmentsEndThrowsAndIsLost) {
  EXPECT_THROW(Send(ReleaseRequest().First(5)), OutOfRange);
  Send(ReleaseRequest());
  EXPECT_THROW(Send(ReleaseRequest() + ReleaseRequest().First(1)), OutOfRange);
  reassembler_.Flush();
  EXPECT_EQ(Pdus(),
            "2 A-RELEASE-RQ PDU 1:20+10\n"
            "3 A-RELEASE-RQ PDU 2:20+10\n");
}

TEST_F(PduReassemblerTest, ContinuedPduIsListedEvenWhenTheNextHeaderIsCut) {
  Send(ReleaseRequest().First(8));
  EXPECT_THROW(Send(ReleaseRequest().From(8) + Bytes{5}), OutOfRange);
  EXPECT_EQ(Pdus(), "1 A-RELEASE-RQ PDU 0:20+8 1:20+2\n");
  // Two bytes still count as missing, and the record begun has no name.
  Send({0, 0});
  EXPECT_EQ(Pdus(),
            "1 A-RELEASE-RQ PDU 0:20+8 1:20+2\n"
            "0  2:20+2\n");
}

TEST_F(PduReassemblerTest, WrappingPduLengthIsUnexpectedOnBothPaths) {
  for (std::uint32_t length : {0xFFFFFFFAu, 0xFFFFFFFDu, 0xFFFFFFFFu}) {
    SCOPED_TRACE(length);
    reassembler_ = PduReassembler();
    const Bytes bad = Bytes{1, 0} + Big32(length) + Repeat(0, 50);
    EXPECT_THROW(Send(bad), Unexpected);
    Send(ReleaseRequest().First(8));
    EXPECT_THROW(Send(ReleaseRequest().From(8) + bad), Unexpected);
    Send(ReleaseRequest());  // a header is next again
    reassembler_.Flush();
    EXPECT_EQ(reassembler_.Pdus().size(), 2u);
  }
  reassembler_ = PduReassembler();
  Send(Bytes{1, 0} + Big32(0xFFFFFFF9) + Repeat(0, 50));
  EXPECT_EQ(Pdus(), "");  // the longest that there is goes on
}

TEST_F(PduReassemblerTest, FailedFeedComesBeforeTheListingOnlyOfAWholePdu) {
  const Bytes cut = Pdu(4, {0, 0, 0});  // less than a PDV header
  EXPECT_THROW(Send(cut + ReleaseRequest()), OutOfRange);
  EXPECT_EQ(Pdus(), "");
  Send(cut.First(6), 1);
  EXPECT_THROW(Send(cut.From(6) + ReleaseRequest(), 1), OutOfRange);
  EXPECT_EQ(Pdus(), "2<P-DATA-TF PDU 1:20+6 2:20+3\n");
}

// What was missing counts as there; then there is no byte for a header.
TEST_F(PduReassemblerTest, HeaderLengthBeyondThePacketFeedsNoByte) {
  const Bytes packet = TcpSegmentBytes({.header_words = 15}).First(20);
  EXPECT_THROW(SendPacket(packet), OutOfRange);
  Send(kEchoData.First(20));
  EXPECT_THROW(SendPacket(packet), OutOfRange);
  EXPECT_EQ(Pdus(), "2 P-DATA-TF PDU 1:20+20 2:60+24\n");
  EXPECT_EQ(Messages(), "1 c1 32+0 / 1:32+8 2:60+24\n");
}

TEST_F(PduReassemblerTest, RefusedPacketOfASummaryLeavesTheMessageUnlisted) {
  Send(kEchoData.First(20));
  refused_ = 0;
  EXPECT_THROW(Send(kEchoData.From(20)), UnableToGetPacketFromTapvane);
  EXPECT_EQ(Messages(), "");
}

}  // namespace
}  // namespace dicom::testing
