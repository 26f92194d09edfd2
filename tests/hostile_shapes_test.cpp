// Captures that are built to hurt. Each is listed and shown as a host does it:
// every call ends, what it reads and shows stays in proportion to the capture,
// and all memory of the lines comes back.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "dimse/message_decoder.h"
#include "plugin/exports.h"
#include "tests/bytes.h"
#include "tests/recorders.h"
#include "tests/test_dictionary.h"
#include "tests/test_host.h"
#include "upper_layer/upper_layer_decoder.h"

namespace dicom::testing {
namespace {

constexpr std::uint32_t kLengths[] = {
    0,          1,          2,          3,          4,          5,
    0x7FFF,     0xFFFC,     0xFFFF,     0x10000,    0x7FFFFFFF, 0x80000000,
    0xFFFFFFF0, 0xFFFFFFF4, 0xFFFFFFF8, 0xFFFFFFF9, 0xFFFFFFFA, 0xFFFFFFFB,
    0xFFFFFFFD, 0xFFFFFFFE, 0xFFFFFFFF};

constexpr std::string_view kVrs[] = {
    "AE", "AS", "AT", "CS", "DA", "DS", "DT", "FL", "FD", "IS",
    "LO", "LT", "OB", "OW", "PN", "SH", "SL", "SQ", "SS", "ST",
    "TM", "UI", "UL", "US", "UT", "VS", "UN", "OF", "  "};

// Elements 0008,0001 and on have the VRs above.
std::string DictionaryOfAllVrs() {
  std::string lines = "FFFE,E000;Item;XX\n";
  for (std::size_t i = 0; i < std::size(kVrs); ++i) {
    char tag[16];
    std::snprintf(tag, sizeof(tag), "0008,%04X", static_cast<unsigned>(i + 1));
    lines += std::string(tag) + ";Name;" + std::string(kVrs[i]) + "\n";
  }
  return lines;
}

class CaptureShapeTest : public ::testing::Test {
 protected:
  CaptureShapeTest() {
    WriteFileBytes(kDataDicPath, "0008,0016;SOP Class UID;UI\n");
    WriteFileBytes(kUidDicPath, "1.2;A UID\n");
    EXPECT_TRUE(LoadModule());
  }
  ~CaptureShapeTest() override { UnloadModule(); }

  std::uint32_t List(std::uint32_t view, std::uint32_t live) {
    std::array<PacketListRow, DICOM_ROWS_PER_CALL> rows;
    std::int32_t first = 0;
    std::uint32_t count = DICOM_ROWS_PER_CALL;
    std::uint32_t first_available = 0;
    return GetDicomPacketList(host_.Window(), rows.data(), &first, &count,
                              &first_available, &last_, view, live) &
           0xFFFF;
  }

  void Show(std::int32_t row, std::uint32_t view) {
    EXPECT_EQ(RaisedText([&] {
                DisplayDicomPacket(host_.Window(), host_.Tree(), row,
                                   host_.Images(), host_.Hex(), view);
              }),
              "");
    EXPECT_LE(host_.TreeCount(), 8 * CaptureBytes() + 64);
  }

  std::size_t CaptureBytes() const {
    std::size_t bytes = 0;
    for (const CapturedPacket& packet : host_.packets) {
      bytes += packet.tcp_bytes.size();
    }
    return bytes;
  }

  // A live pass, then a whole one, then the first and the last row of each
  // view.
  void ReadAndShow() {
    MessageBoxRecorder recorder;
    host_.TakeRequests();
    RefreshDicomDecode(host_.Window());
    List(0, 1);
    std::size_t calls = 0;
    while (List(0, 0) == DICOM_LIST_CALL_AGAIN) {
      ASSERT_LE(++calls, host_.packets.size());
    }
    // A few messages to the host for each packet, and a few bytes for PDVs.
    EXPECT_LE(host_.TakeRequests().size(), 60 * CaptureBytes() + 2000);
    for (std::uint32_t view : {0u, 1u}) {
      Show(0, view);
      Show(0x7FFFFFFF, view);
    }
    ClearDicomDisplay(0, host_.Tree(), host_.Hex());
    EXPECT_EQ(GlobalBlocks(), blocks_before_);
  }

  // The bytes in segments of `size` bytes, each acknowledged.
  void ReadAndShow(const Bytes& stream, std::size_t size = 1448) {
    Conversation talk(0xFFFFFF80);  // these numbers wrap soon
    talk.Open();
    for (std::size_t at = 0; at < stream.size(); at += size) {
      talk.Send(0, stream.Part(at, size)).Acknowledge(1);
    }
    host_.packets = talk.Packets();
    ReadAndShow();
  }

  const std::size_t blocks_before_ = GlobalBlocks();
  TestHost host_;
  std::uint32_t last_ = 0;
};

TEST_F(CaptureShapeTest, AnyPduAndPdvLength) {
  const Bytes rest = Repeat(0x04, 5000);
  for (std::uint32_t length : kLengths) {
    SCOPED_TRACE(length);
    const Bytes pdu =
        Pdu(4, Pdv(1, kLastCommand, Command(1, 1))).Patched(2, Big32(length));
    ReadAndShow(pdu + rest);
    ReadAndShow(ReleaseRequest() + pdu + rest, 10);
    ReadAndShow(ReleaseRequest() + pdu + rest);
    const Bytes pdv =
        PData(Pdv(1, kCommand, {1, 2, 3}) + Pdv(1, kLastData, {4}))
            .Patched(6, Big32(length));
    ReadAndShow(pdv + pdv + rest);
    ReadAndShow(PData(Pdv(3, kLastData, Repeat(7, 40))) + pdv + pdv, 60);
  }
}

TEST_F(CaptureShapeTest, OtherProtocolsAndOddTurns) {
  const Bytes data = PData(Pdv(1, kLastData, Repeat(1, 40)));
  const Bytes streams[] = {
      Text("GET / HTTP/1.1\r\nHost: x\r\n\r\n"),
      Bytes{0x16, 3, 1, 2, 0, 1, 0, 1, 0xFC, 3, 3} + Repeat(9, 500),
      Text("SSH-2.0-x\r\n") + Repeat(3, 900),
      data,                                  // no command before it
      Abort(2, 1) + data + ReleaseReply(),   // and more behind an abort
      ReleaseReply() + data + Abort(0, 0),   // or a release
      Pdu(4, {}) + Pdu(1, {}) + Pdu(9, {}),  // nothing in them
      PData(Pdv(1, kLastCommand, {})) + data};
  for (const Bytes& stream : streams) {
    SCOPED_TRACE(stream.size());
    ReadAndShow(stream);
    ReadAndShow(stream, 10);
    ReadAndShow(stream, 1);
  }
}

TEST_F(CaptureShapeTest, AnyDataOffsetAndAnyPacketLength) {
  for (std::uint8_t words = 0; words < 16; ++words) {
    for (std::size_t size : {0u, 1u, 13u, 14u, 19u, 20u, 23u, 40u, 59u, 60u}) {
      SCOPED_TRACE(words * 100 + static_cast<int>(size));
      Conversation talk;
      talk.Open().Send(0, Repeat(4, 40)).Send(1, Repeat(4, 40));
      host_.packets = talk.Packets();
      for (std::size_t i = 3; i < 5; ++i) {
        Bytes& bytes = host_.packets[i].tcp_bytes;
        bytes[12] = static_cast<std::uint8_t>(words << 4);
        bytes.resize(size);
      }
      ReadAndShow();
    }
  }
  host_.claimed_bytes[3] = 0xFFFFFFFF;
  ReadAndShow();
}

class DecoderShapeTest : public ::testing::Test {
 protected:
  ~DecoderShapeTest() override {
    ClearDicomDisplay(0, host_.Tree(), host_.Hex());
  }

  void ExpectInProportion(std::size_t bytes) {
    EXPECT_LE(host_.TreeCount(), 8 * bytes + 64);
    ClearDicomDisplay(0, host_.Tree(), host_.Hex());
    EXPECT_EQ(GlobalBlocks(), blocks_before_);
  }

  void DecodePdu(const Bytes& pdu) {
    {
      DecodeTreeWriter writer(host_.Window(), host_.Tree(), 0, nullptr);
      UpperLayerDecoder(pdu.data(), pdu.Length(), writer, dictionary_.Get())
          .DecodePdu();
    }
    ExpectInProportion(pdu.size());
  }

  // As a command set and as a data set in each transfer syntax.
  void DecodeMessage(const Bytes& bytes) {
    PresentationContextTable contexts;
    contexts.AddPresentationContext(0, "1.2.840.10008.1.2");
    contexts.AddPresentationContext(1, "1.2.840.10008.1.2.1");
    contexts.AddPresentationContext(2, "1.2.840.10008.1.2.2");
    for (std::uint8_t context = 0; context < 4; ++context) {
      {
        DecodeTreeWriter writer(host_.Window(), host_.Tree(), 0, nullptr);
        MessageDecoder(dictionary_.Get(), contexts, writer)
            .DecodeMessage({{bytes.data(), bytes.Length()},
                            context == 3 ? bytes.Length() : 0,
                            context == 3 ? 0 : bytes.Length(),
                            "",
                            context});
      }
      ExpectInProportion(bytes.size());
    }
  }

  const std::size_t blocks_before_ = GlobalBlocks();
  static void ReadAccept(const Bytes& pdu) {
    PresentationContextTable contexts;
    contexts.AddAcceptedContexts({pdu.data(), pdu.Length()});
  }

  TestHost host_;
  TestDictionary dictionary_{"1.2;A UID\n", DictionaryOfAllVrs()};
};

TEST_F(DecoderShapeTest, AnyValueLengthOfAnyVr) {
  const Bytes rest = Repeat('1', 40);
  for (std::size_t i = 0; i < std::size(kVrs); ++i) {
    SCOPED_TRACE(kVrs[i]);
    const auto element = static_cast<std::uint16_t>(i + 1);
    const Bytes tag = Little16(8) + Little16(element);
    for (std::uint32_t length : kLengths) {
      SCOPED_TRACE(length);
      DecodeMessage(tag + Little32(length) + rest);
      const Bytes short_form =
          tag + Text(kVrs[i]) + Little16(length & 0xFFFF) + rest;
      DecodeMessage(short_form);
      const Bytes long_form =
          tag + Text(kVrs[i]) + Bytes{0, 0} + Little32(length) + rest;
      DecodeMessage(long_form);
      DecodeMessage(Little16(0xFFFE) + Little16(0xE000) + Little32(length) +
                    rest);
      DecodeMessage(tag + Text("SQ") + Bytes{0, 0} + Little32(0xFFFFFFFF) +
                    Little16(0xFFFE) + Little16(0xE000) + Little32(length) +
                    rest);
    }
  }
}

TEST_F(DecoderShapeTest, UndefinedLengthsInARowAndDeep) {
  const Bytes sequence = Little16(8) + Little16(18) + Text("SQ") + Bytes{0, 0} +
                         Little32(0xFFFFFFFF);
  const Bytes item = Little16(0xFFFE) + Little16(0xE000);
  const Bytes end = Little16(0xFFFE) + Little16(0xE0DD) + Little32(0);
  Bytes row, deep, items;
  for (int i = 0; i < 1100; ++i) {
    row += sequence + item + Little32(0) + end;
    deep += sequence + item + Little32(0xFFFFFFFF);
    items += item + Little32(8) + end;
  }
  DecodeMessage(row);
  DecodeMessage(deep);
  DecodeMessage(sequence + items);
}

TEST_F(DecoderShapeTest, AnyItemWithAnyLength) {
  const Bytes rest = Item(0x40, Text("1.2.840.10008.1.2"));
  for (int type : {0x10, 0x20, 0x21, 0x30, 0x40, 0x50, 0x51, 0x52, 0x53, 0x54,
                   0x55, 0x56, 0x00, 0x99}) {
    SCOPED_TRACE(type);
    const Bytes item =
        Item(static_cast<std::uint8_t>(type), Bytes{1, 0, 0, 0} + rest);
    const std::uint32_t exact = item.Length() - 4;
    for (std::uint32_t length : {0u, 1u, 2u, 3u, 4u, exact - 1, exact + 1,
                                 exact + 30, 0x7FFFu, 0xFFFCu, 0xFFFFu}) {
      SCOPED_TRACE(length);
      const Bytes wrong = item.Patched(2, Big16(length));
      for (const Bytes& items :
           {wrong, wrong + rest, Item(0x50, wrong), Item(0x50, wrong) + rest}) {
        DecodePdu(AssociateRequest(items));
        DecodePdu(AssociateAccept(items));
        ReadAccept(AssociateAccept(items));
      }
      ReadAccept(AssociateAccept(wrong + Repeat(0, 70000)));
    }
  }
}

// 16-bit offsets wrap: an item that ends where the first one begins, with as
// many sub-items before it as there is room for, must not be walked again and
// again.
TEST_F(DecoderShapeTest, AcceptThatLeadsBackToItsFirstItem) {
  constexpr std::uint32_t kFirst = 74;
  constexpr std::uint32_t kCover = 65000;
  const Bytes rejected = Item(0x21, Bytes{1, 0, 3, 0} + Repeat(0, kCover));
  const std::uint32_t back = 0x10000 + kFirst - (kFirst + kCover + 8) - 4;
  ReadAccept(AssociateAccept(rejected + Item(0x99, Repeat(0, back))));
}

}  // namespace
}  // namespace dicom::testing
