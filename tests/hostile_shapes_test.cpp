// Captures and messages that are built to hurt.
#include <string>
#include <vector>

#include "dimse/message_decoder.h"
#include "tests/shape_test.h"
#include "upper_layer/upper_layer_decoder.h"

namespace dicom::testing {
namespace {

constexpr std::uint32_t kLengths[] = {
    0,          1,          2,          3,          4,          5,
    0x7FFF,     0xFFFC,     0xFFFF,     0x10000,    0x7FFFFFFF, 0x80000000,
    0xFFFFFFF0, 0xFFFFFFF1, 0xFFFFFFF2, 0xFFFFFFF3, 0xFFFFFFF4, 0xFFFFFFF5,
    0xFFFFFFF6, 0xFFFFFFF7, 0xFFFFFFF8, 0xFFFFFFF9, 0xFFFFFFFA, 0xFFFFFFFB,
    0xFFFFFFFC, 0xFFFFFFFD, 0xFFFFFFFE, 0xFFFFFFFF};

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

TEST_F(CaptureShapeTest, AnyPduAndPdvLength) {
  const Bytes rest = Repeat(0x04, 1000);
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
      ReadOddPackets(words, size);
    }
  }
  host_.claimed_bytes[3] = 0xFFFFFFFF;
  ReadAndShow();
}

TEST_F(CaptureShapeTest, SecondHandshakeAnywhere) {
  Conversation first, second(70000, 90000);
  for (Conversation* talk : {&first, &second}) {
    talk->Open().Send(0, Pdu(1, Repeat(1, 90))).Send(1, Pdu(2, Repeat(2, 90)));
    talk->Send(0, PData(Pdv(1, kLastCommand, Command(1, 1)))).Close();
  }
  const auto& packets = first.Packets();
  for (std::size_t at = 0; at <= packets.size(); ++at) {
    SCOPED_TRACE(at);
    const auto middle = packets.begin() + static_cast<std::ptrdiff_t>(at);
    for (const auto& inserted : {first.Packets(), second.Packets()}) {
      host_.packets.assign(packets.begin(), middle);
      host_.packets.insert(host_.packets.end(), inserted.begin(),
                           inserted.end());
      host_.packets.insert(host_.packets.end(), middle, packets.end());
      ReadAndShow();
    }
  }
}

TEST_F(CaptureShapeTest, CommandSetWithoutAnElementOrCut) {
  const Bytes elements[] = {ImplicitElement(0, 0, Little32(80)),
                            ImplicitElement(0, 2, Uid("1.2.840.10008.1.1")),
                            ImplicitElement(0, 0x100, Little16(1)),
                            ImplicitElement(0, 0x110, Little16(1)),
                            ImplicitElement(0, 0x700, Little16(0)),
                            ImplicitElement(0, 0x800, Little16(1)),
                            ImplicitElement(0, 0x1000, Uid("1.2"))};
  const Bytes data = PData(Pdv(1, kLastData, Repeat(8, 40)));
  Bytes whole;
  for (const Bytes& left_out : elements) {
    Bytes set;
    for (const Bytes& element : elements) {
      if (&element != &left_out) set += element;
    }
    ReadAndShow(PData(Pdv(1, kLastCommand, set)) + data);
    whole += left_out;
  }
  for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
    SCOPED_TRACE(cut);
    ReadAndShow(PData(Pdv(1, kLastCommand, whole.First(cut))) + data);
  }
}

TEST_F(CaptureShapeTest, MinimalPdusWithoutNumber) {
  const std::size_t count = RunsWhole() ? 10'000'000 : 50'000;
  const Bytes pdu = Pdu(7, {});
  constexpr std::size_t kPdusOfAPacket = 2659;
  Bytes stream;
  stream.reserve(count * pdu.size());
  for (std::size_t i = 0; i < count; ++i) stream += pdu;
  ReadAndShow(stream, kPdusOfAPacket * pdu.size());
  List(0, 0);
  EXPECT_EQ(last_, count - 1);
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
      const CostLimit limit(pdu.size());
      DecodeTreeWriter writer({host_.Window(), host_.Tree(), nullptr}, 0);
      UpperLayerDecoder({pdu.data(), pdu.Length()}, dictionary_.Get(), writer)
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
        const CostLimit limit(bytes.size());
        DecodeTreeWriter writer({host_.Window(), host_.Tree(), nullptr}, 0);
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
  // The beginning of one of undefined length.
  static Bytes Sequence() {
    return Little16(8) + Little16(18) + Text("SQ") + Bytes{0, 0} +
           Little32(0xFFFFFFFF);
  }

  static void ReadAccept(const Bytes& pdu) {
    PresentationContextTable contexts;
    contexts.AddAcceptedContexts({pdu.data(), pdu.Length()});
  }

  TestHost host_;
  TestDictionary dictionary_{"1.2;A UID\n", DictionaryOfAllVrs()};
};

TEST_F(DecoderShapeTest, AnyValueLengthOfAnyVr) {
  const Bytes rest = Repeat('1', 40);
  const Bytes item = Little16(0xFFFE) + Little16(0xE000);
  for (std::uint32_t length : kLengths) {
    SCOPED_TRACE(length);
    DecodeMessage(item + Little32(length) + rest);
    DecodeMessage(Sequence() + item + Little32(length) + rest);
    for (std::size_t i = 0; i < std::size(kVrs); ++i) {
      SCOPED_TRACE(kVrs[i]);
      const auto element = static_cast<std::uint16_t>(i + 1);
      const Bytes tag = Little16(8) + Little16(element);
      const Bytes explicit_tag = tag + Text(kVrs[i]);
      DecodeMessage(tag + Little32(length) + rest);
      DecodeMessage(explicit_tag + Little16(length & 0xFFFF) + rest);
      const Bytes long_form = explicit_tag + Bytes{0, 0} + Little32(length);
      DecodeMessage(long_form + rest);
      DecodeMessage(Sequence() + item + Little32(0xFFFFFFFF) + long_form +
                    rest);
      if (length != 0xFFFFFFFF) continue;
      Bytes ten;
      for (int n = 0; n < 10; ++n) ten += long_form;
      DecodeMessage(ten);
    }
  }
}

TEST_F(DecoderShapeTest, UndefinedLengthsInARowAndDeep) {
  const Bytes sequence = Sequence();
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
    for (std::uint32_t length :
         {0u, 1u, 2u, 3u, 4u, exact - 1, exact + 1, exact + rest.Length() + 1,
          0x7FFFu, 0xFFFCu, 0xFFFFu}) {
      SCOPED_TRACE(length);
      const Bytes wrong = item.Patched(2, Big16(length));
      for (const Bytes& items :
           {wrong, wrong + rest, Item(0x50, wrong), Item(0x50, wrong) + rest}) {
        DecodePdu(AssociateRequest(items));
        DecodePdu(AssociateAccept(items));
        ReadAccept(AssociateAccept(items));
      }
      const Bytes filler = Item(0x99, Repeat(0, 65400));
      for (const Bytes& items :
           {wrong + filler, Item(0x50, wrong) + filler, filler + wrong,
            filler + Item(0x50, wrong) + filler}) {
        ReadAccept(AssociateAccept(items));
      }
    }
  }
}

// An item or sub-item of length FFFCh ends where it begins, by 16-bit offsets.
TEST_F(DecoderShapeTest, AcceptWhoseItemsLeadNowhere) {
  const Bytes filler = Item(0x99, Repeat(0, 65400));
  for (int type : {0x10, 0x21, 0x40, 0x50, 0x51, 0x54, 0x56, 0x99}) {
    SCOPED_TRACE(type);
    const Bytes item = Item(static_cast<std::uint8_t>(type), Repeat(0, 8))
                           .Patched(2, Big16(0xFFFC));
    for (const Bytes& items :
         {item, Item(0x50, item), item + filler, Item(0x50, item) + filler,
          filler + item + filler, filler + Item(0x50, item) + filler}) {
      DecodePdu(AssociateRequest(items));
      DecodePdu(AssociateAccept(items));
      ReadAccept(AssociateAccept(items));
    }
  }
}

TEST_F(DecoderShapeTest, NegotiationWhoseUidIsLongerThanItsItem) {
  const Bytes uid = Text("1.2.840.10008.1.1");
  for (int type : {0x54, 0x56}) {
    const std::uint32_t exact = uid.Length();
    for (std::uint32_t length : {0u, exact - 1, exact + 1, exact + 2, exact + 3,
                                 exact + 30, 0x7FFFu, 0xFFFCu, 0xFFFFu}) {
      SCOPED_TRACE(type * 100000 + static_cast<int>(length));
      const Bytes item = Item(static_cast<std::uint8_t>(type),
                              Big16(length) + uid + Bytes{1, 1});
      for (const Bytes& items : {Item(0x50, item), Item(0x50, item + item),
                                 Item(0x50, item) + Item(0x40, uid), item}) {
        DecodePdu(AssociateRequest(items));
        DecodePdu(AssociateAccept(items));
        ReadAccept(AssociateAccept(items));
      }
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
