#include "upper_layer/upper_layer_decoder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/decode_test.h"

namespace dicom::testing {
namespace {

// A role selection sub-item.
Bytes Role(std::string_view uid, std::uint8_t scu, std::uint8_t scp) {
  return Item(0x54, Big16(Text(uid).Length()) + Text(uid) + Bytes{scu, scp});
}

// An accepted context whose length field says `length`.
Bytes MissizedContext(const Bytes& sub_item, std::uint32_t length) {
  return Item(0x21, Bytes{1, 0, 0, 0} + sub_item).Patched(2, Big16(length));
}

Bytes WholeRequest() {
  const Bytes context = Bytes{1, 0x0A, 0x0B, 0x0C} +  // ID, reserved
                        Item(0x30, Text("1.4")) + Item(0x40, Text("1.2")) +
                        Item(0x40, Uid("1.5"));
  const Bytes user_information =
      Item(0x51, Big32(0x80000000)) + Item(0x52, Text("1.6")) +
      Item(0x53, Big16(0xFFFF) + Big16(1)) + Role("1.7", 0, 1) +
      Item(0x55, Text("NAME")) +
      Item(0x56, Big16(3) + Text("1.8") + Bytes{1, 2, 3});
  return AssociateRequest(Item(0x10, Uid("1.2.3")) + Item(0x20, context) +
                          Item(0x50, user_information));
}

// The 10-byte PDUs, by the last three of the four bytes behind the length.
Bytes Fixed(std::uint8_t type, std::uint8_t byte7, std::uint8_t byte8,
            std::uint8_t byte9) {
  return Pdu(type, {0, byte7, byte8, byte9});
}

// The lines of a PDU's type, reserved byte and length.
std::string PduStart(std::uint32_t bytes, const std::string& name,
                     const std::string& type, const std::string& length_field) {
  return TreeLine(0, 0, bytes,
                  "DICOM - Upper Layer Protokoll: " + name + " PDU " + type) +
         "1 [0+1] PDU-Type: " + name + " " + type +
         "\n1 [1+1] Reserved: 00h\n1 [2+4] PDU-Length: " + length_field + "\n";
}

// What an association shows before its items.
std::string AssociateStart(bool request, std::uint32_t pdu_bytes,
                           const std::string& length_field) {
  return PduStart(pdu_bytes, request ? "A-ASSOCIATE-RQ" : "A-ASSOCIATE-AC",
                  request ? "(01h)" : "(02h)", length_field) +
         "1 [6+2] Protokoll Version: Version 1\n"
         "1 [8+2] Reserved: 0000h\n"
         "1 [10+16] " +
         (request ? "Called AE title: " : "Reserved: ") +
         "CALLED          \n"
         "1 [26+16] " +
         (request ? "Calling AE title: " : "Reserved: ") +
         "CALLING         \n"
         "1 [42+32] Reserved : (32 Bytes)\n";
}

// The lines of an item's type, reserved byte and size.
std::string Header(int depth, std::uint32_t offset, const std::string& type,
                   const std::string& size) {
  return TreeLine(depth, offset, 1, "Item Type: " + type) +
         TreeLine(depth, offset + 1, 1, "Reserved: 00h") +
         TreeLine(depth, offset + 2, 2, "Item size: " + size);
}

// An item's own line and these.
std::string ItemLines(int depth, std::uint32_t offset, const std::string& type,
                      std::uint32_t size, const std::string& text,
                      const std::string& error = "") {
  return TreeLine(depth, offset, size + 4, text) +
         Header(depth + 1, offset, type, HexLength(4, size) + error);
}

std::string UidLines(int depth, std::uint32_t offset, std::uint32_t size,
                     const std::string& text,
                     const std::string& description = "- Undefined UID") {
  return TreeLine(depth, offset, size, text) +
         TreeLine(depth + 1, offset, size, "UID description: " + description);
}

std::string PositionLine(std::uint32_t offset) {
  char text[80];
  std::snprintf(text, sizeof(text),
                "ERROR - Could not decode further at Position: %Xh, %u",
                static_cast<unsigned>(offset), static_cast<unsigned>(offset));
  return TreeLine(0, offset, 1, text);
}

bool EndsInPositionLine(const std::string& text) {
  const std::size_t last_line = text.rfind('\n', text.size() - 2) + 1;
  return text.find("] ERROR - Could not decode further at Position: ",
                   last_line) != std::string::npos;
}

class UpperLayerDecoderTest : public DecodeTest {
 protected:
  std::string Decode(const Bytes& pdu) {
    host_.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, std::uint32_t{1});
    return TreeOf([&](DecodeTreeWriter& writer) {
      UpperLayerDecoder(ViewOf(pdu), uids_.Get(), writer).DecodePdu();
    });
  }

  // The lines from the first that begins with `start` on.
  std::string DecodeFrom(const std::string& start, const Bytes& pdu) {
    const std::string text = Decode(pdu);
    const std::size_t found = text.find("\n" + start);
    return found == std::string::npos ? text : text.substr(found + 1);
  }

  // The text of the last line over the bytes `range`.
  std::string Line(const std::string& range, const Bytes& pdu) {
    const std::string text = Decode(pdu);
    const std::size_t found = text.rfind("[" + range + "] ");
    if (found == std::string::npos) return text;
    const std::size_t begin = found + range.size() + 3;
    return text.substr(begin, text.find('\n', begin) - begin);
  }

  // What that line shows behind `caption`, for the values from 0 up to `last`
  // that `make` puts into a PDU, each ended by "|".
  template <typename Make>
  std::string Texts(const std::string& range, const std::string& caption,
                    int last, Make make) {
    std::string texts;
    for (int value = 0; value <= last; ++value) {
      const std::string line =
          Line(range, make(static_cast<std::uint8_t>(value)));
      EXPECT_TRUE(line.starts_with(caption)) << line;
      texts += line.substr(caption.size()) + "|";
    }
    return texts;
  }

  TestDictionary uids_{"1.2;Second\n1.2.3;Application\n1.4;Abstract\n"};
};

TEST_F(UpperLayerDecoderTest, RequestShowsEveryItemAndSubItem) {
  EXPECT_EQ(
      Decode(WholeRequest()),
      AssociateStart(true, 172, "000000A6h, 166") +
          "1 [74+10] Application Context Item: 1.2.3\n"
          "2 [74+1] Item Type: 10h\n"
          "2 [75+1] Reserved: 00h\n"
          "2 [76+2] Item size: 0006h, 6\n"
          "2 [78+6] Application context name: 1.2.3\n"
          "3 [78+6] UID description: Application\n" +
          ItemLines(1, 84, "20h", 26, "Presentation Context Item: 01h") +
          "2 [88+1] Presentation Context ID: 01h\n"
          "2 [89+3] Reserved: 0Ah 0Bh 0Ch\n" +
          ItemLines(2, 92, "30h", 3, "Abstract Syntax Sub Item: 1.4") +
          UidLines(3, 96, 3, "Abstract Syntax name: 1.4", "Abstract") +
          ItemLines(2, 99, "40h", 3, "Transfer syntax Item: 1.2") +
          UidLines(3, 103, 3, "Transfer syntax name: 1.2", "Second") +
          ItemLines(2, 106, "40h", 4, "Transfer syntax Item: 1.5") +
          UidLines(3, 110, 4, "Transfer syntax name: 1.5") +
          ItemLines(1, 114, "50h", 54, "User Info Item") +
          ItemLines(2, 118, "51h", 4, "Maximum Length Sub Item") +
          "3 [122+4] Maximum length received: 2147483648\n" +
          ItemLines(2, 126, "52h", 3, "Implementation Class UID Sub Item") +
          UidLines(3, 130, 3, "Implementation Class UID: 1.6") +
          ItemLines(2, 133, "53h", 4,
                    "Asynchronous Operation Window Sub Item") +
          "3 [137+2] Maximum number operations invoked: 65535\n"
          "3 [139+2] Maximum number operations performed: 1\n" +
          ItemLines(2, 141, "54h", 7,
                    "Asynchronous Operation Window Sub Item") +
          "3 [145+2] UID size: 0003h, 3\n" +
          UidLines(3, 147, 3, "SOP class UID: 1.7") +
          "3 [150+1] SCU role: 0 - non support of the SCU role\n"
          "3 [151+1] SCP role: 1 - support of SCP role\n" +
          ItemLines(2, 152, "55h", 4, "Implementation Version Name Sub Item") +
          "3 [156+4] Implementation version name: NAME\n" +
          ItemLines(2, 160, "56h", 8,
                    "SOP Class Extended Negotiation Sub Item") +
          "3 [164+2] SOP class UID size: 0003h, 3\n" +
          UidLines(3, 166, 3, "SOP class UID: 1.8") +
          "3 [169+3] Service class application information: (as specified in "
          "the Service Class Specification)\n");
}

TEST_F(UpperLayerDecoderTest, AcceptDiffersWhereItsFormSaysSo) {
  EXPECT_EQ(
      Decode(AssociateAccept(AnsweredContext(1, 4, "") +
                             Item(0x10, Text("1.2.3")) +
                             Item(0x50, Role("1.7", 0, 1) + Item(0x55, {})))),
      AssociateStart(false, 114, "0000006Ch, 108") +
          ItemLines(1, 74, "21h", 8, "Presentation Context Item: 01h") +
          "2 [78+1] Presentation Context ID: 01h\n"
          "2 [79+1] Reserved: 00h\n"
          "2 [80+1] Result/Reason: 4 - transfer syntaxes not supported "
          "(provider rejection)\n"
          "2 [81+1] Reserved: 00h\n" +
          ItemLines(2, 82, "40h", 0, "Transfer syntax Item: ") +
          // Nothing has closed the empty syntax: the next item opens in it.
          ItemLines(3, 86, "10h", 5, "Application Context Item: 1.2.3") +
          UidLines(4, 90, 5, "Application context name: 1.2.3", "Application") +
          ItemLines(1, 95, "50h", 15, "User Info Item") +
          ItemLines(2, 99, "54h", 7, "Asynchronous Operation Window Sub Item") +
          "3 [103+2] UID size: 0003h, 3\n" +
          UidLines(3, 105, 3, "SOP class UID: 1.7") +
          "3 [108+1] SCU role: 0 - rejected SCU role\n"
          "3 [109+1] SCP role: 1 - accepted SCP role\n" +
          ItemLines(2, 110, "55h", 0, "Implementation Version Name Sub Item") +
          "3 [114+0] Implementation version name: \n");
}

TEST_F(UpperLayerDecoderTest, UnknownItemReturnsToLevel1InARequestOnly) {
  // The item before leaves level 2 open. Each form's context item is unknown to
  // the other.
  EXPECT_EQ(DecodeFrom("1 [82", AssociateRequest(
                                    Item(0x20, Bytes(4)) + Item(0x21, {}) +
                                    Item(0x60, {}).Patched(2, Big16(0xFFFF)))),
            "1 [82+4] Unknown Item Type: 21h\n"
            "2 [83+1] Reserved: 00h\n"
            "2 [84+2] Item size: 0000h, 0\n"
            "1 [86+13722] Unknown Item Type: 60h\n"  // to the highlight limit
            "2 [87+1] Reserved: 00h\n"
            "2 [88+2] Item size: FFFFh, 65535\n");
  EXPECT_EQ(DecodeFrom("2 [78", AssociateAccept(Item(0x50, {}) +
                                                Item(0x20, Text("xyz")) +
                                                Item(0x60, {}))),
            "2 [78+7] Unknown Item Type: 20h\n"
            "3 [79+1] Reserved: 00h\n"
            "3 [80+2] Item size: 0003h, 3\n"
            "2 [85+4] Unknown Item Type: 60h\n"
            "3 [86+1] Reserved: 00h\n"
            "3 [87+2] Item size: 0000h, 0\n");
}

TEST_F(UpperLayerDecoderTest, UnknownSubItemIsSkippedByItsLength) {
  const std::string skipped =
      ItemLines(2, 82, "57h", 2, "Unknown Sub Item Type: 57h");
  const Bytes unknown = Item(0x57, Text("ab"));
  EXPECT_EQ(DecodeFrom("2 [82", AssociateRequest(
                                    Item(0x20, Bytes(4) + unknown + unknown))),
            skipped + ItemLines(2, 88, "57h", 2, "Unknown Sub Item Type: 57h"));
  EXPECT_EQ(DecodeFrom("2 [82", AssociateAccept(
                                    Item(0x21, Bytes{1, 0, 0, 0} + unknown))),
            skipped);
  EXPECT_EQ(Line("78+6", AssociateRequest(Item(0x50, unknown))),
            "Unknown Sub Item Type: 57h");
}

TEST_F(UpperLayerDecoderTest, OnlyBitZeroOfTheVersionCounts) {
  for (std::uint32_t version : {0x0000u, 0x0002u, 0xFFFEu}) {
    SCOPED_TRACE(version);
    EXPECT_EQ(DecodeFrom("1 [6+2]", WholeRequest().Patched(6, Big16(version))),
              "1 [6+2] Protokoll Version: Version 1 not supported!\n"
              "0 [8+0] ERROR - UL Protokoll Version not supported!\n");
  }
  EXPECT_EQ(Decode(AssociateRequest({}).Patched(6, Big16(0xFFFF))),
            AssociateStart(true, 74, "00000044h, 68"));
}

TEST_F(UpperLayerDecoderTest, TitleEndsAtItsZeroByteOrItsField) {
  const Bytes pdu = AssociateRequest({}).Patched(
      10, Text("SIXTEEN-LETTERS!") + Text("NAME") + Bytes{0} + Text("x"));
  EXPECT_EQ(Line("10+16", pdu), "Called AE title: SIXTEEN-LETTERS!");
  EXPECT_EQ(Line("26+16", pdu), "Calling AE title: NAME");
}

TEST_F(UpperLayerDecoderTest, SyntaxBesideTheContextSizeResynchronises) {
  const Bytes syntax = Item(0x40, Text("1.2")), next = Item(0x60, {});
  const std::string next_lines =
      "1 [95+4] Unknown Item Type: 60h\n"
      "2 [96+1] Reserved: 00h\n"
      "2 [97+2] Item size: 0000h, 0\n";
  const struct {
    std::uint32_t error_offset;
    Bytes items;
    std::string next_lines;
  } cases[] = {
      // The last field of the syntax, its name, begins at 86: 86 + 13 - 4 is
      // 95.
      {89, MissizedContext(syntax, 13) + Bytes(6) + next, next_lines},
      // Without a name, and in an unknown sub-item, that is the size at 84.
      {86, MissizedContext(Item(0x40, {}), 15) + Bytes(9) + next, next_lines},
      {88, MissizedContext(Item(0x57, Bytes(2)), 15) + Bytes(7) + next,
       next_lines},
      // It may reach the end of the buffer but not pass it.
      {89, MissizedContext(syntax, 7), ""},
      {89, MissizedContext(syntax, 8), PositionLine(89)}};
  for (const auto& c : cases) {
    EXPECT_EQ(DecodeFrom("0 [", AssociateAccept(c.items)),
              TreeLine(0, c.error_offset, 1,
                       "ERROR in item size (either this item or in the sub "
                       "item(s)") +
                  c.next_lines);
  }
}

TEST_F(UpperLayerDecoderTest, EmptyUidEndsTheDecodeAtItsField) {
  const struct {
    Bytes item;
    std::uint32_t offset;
  } cases[] = {{Item(0x10, {}), 74},
               {Item(0x20, Bytes(4) + Item(0x30, {})), 82},
               {Item(0x50, Item(0x52, {})), 82},
               {Item(0x50, Role("", 0, 0)), 84},
               {Item(0x50, Item(0x56, Big16(0))), 84}};
  for (const auto& c : cases) {
    const std::string text = Decode(AssociateRequest(c.item + Bytes(8)));
    EXPECT_TRUE(text.ends_with(PositionLine(c.offset))) << text;
  }
}

TEST_F(UpperLayerDecoderTest, LengthsOtherThanFourAreMarked) {
  // A maximum length of 2 bytes is read as 4 and skipped as 2; a window is
  // always 4 bytes.
  const Bytes short_length = Item(0x51, Big16(0x1234));
  const Bytes long_window = Item(0x53, {0, 2, 0, 3}).Patched(2, Big16(6));
  const std::string error = " ERROR - The length should be 4!";
  EXPECT_EQ(DecodeFrom("2 [78", AssociateRequest(
                                    Item(0x50, short_length + long_window))),
            ItemLines(2, 78, "51h", 2, "Maximum Length Sub Item", error) +
                "3 [82+2] Maximum length received: 305419008\n" +  // 12345300h
                ItemLines(2, 84, "53h", 6,
                          "Asynchronous Operation Window Sub Item", error) +
                "3 [88+2] Maximum number operations invoked: 2\n"
                "3 [90+2] Maximum number operations performed: 3\n");
}

TEST_F(UpperLayerDecoderTest, UidLongerThanItsSubItemReturnsToTheSubItemsEnd) {
  // The UID of 6 bytes takes in the next sub-item's first bytes.
  const Bytes negotiation = Item(0x56, Big16(6) + Text("1.2"));
  EXPECT_EQ(
      DecodeFrom("3 [84", AssociateRequest(
                              Item(0x50, negotiation + Item(0x55, Text("N"))))),
      UidLines(3, 84, 6, "SOP class UID: 1.2U") +
          "3 [90+13718] Service class application information: (as specified "
          "in the Service Class Specification)\n" +
          ItemLines(2, 87, "55h", 1, "Implementation Version Name Sub Item") +
          "3 [91+1] Implementation version name: N\n");
}

TEST_F(UpperLayerDecoderTest, EnumeratedBytesOfItems) {
  EXPECT_EQ(Texts("80+1", "Result/Reason: ", 5,
                  [](std::uint8_t result) {
                    return AssociateAccept(AnsweredContext(1, result, "1.2"));
                  }),
            "0 - acceptance|1 - user rejection|"
            "2 - no reason (provider rejection)|"
            "3 - abstract syntax not supported (provider rejection)|"
            "4 - transfer syntaxes not supported (provider rejection)|"
            "5 ERROR wrong value|");
  const auto proposed = [](std::uint8_t role) {
    return AssociateRequest(Item(0x50, Role("1.7", role, role)));
  };
  const auto accepted = [](std::uint8_t role) {
    return AssociateAccept(Item(0x50, Role("1.7", role, role)));
  };
  const std::string wrong = "|2 ERROR - wrong value!|";
  EXPECT_EQ(Texts("87+1", "SCU role: ", 2, proposed),
            "0 - non support of the SCU role|1 - support of SCU role" + wrong);
  EXPECT_EQ(Texts("88+1", "SCP role: ", 2, proposed),
            "0 - non support of the SCP role|1 - support of SCP role" + wrong);
  EXPECT_EQ(Texts("87+1", "SCU role: ", 2, accepted),
            "0 - rejected SCU role|1 - accepted SCU role" + wrong);
  EXPECT_EQ(Texts("88+1", "SCP role: ", 2, accepted),
            "0 - rejected SCP role|1 - accepted SCP role" + wrong);
}

TEST_F(UpperLayerDecoderTest, FixedSizePdusShowTheirCaptions) {
  EXPECT_EQ(Decode(Fixed(0x03, 1, 1, 7)),
            "0 [0+10] DICOM - Upper Layer Protokoll: A-ASSOCIATE-RJ PDU (03h)\n"
            "1 [0+1] PDU-Type: A-ASSOCIATE-RJ (03h)\n"
            "1 [1+1] Reserved: 00h\n"
            "1 [2+4] PDU-Length: 00000004h, 4\n"
            "1 [6+1] Reserved: 00h\n"
            "1 [7+1] Result: 1-rejected permanent\n"
            "1 [8+1] Source: 1-DICOM UL service user\n"
            "1 [9+1] Reason/Diag.: 7-called AE title not recognized\n");
  const std::string release_request =
      PduStart(10, "A-RELEASE-RQ", "(05h)", "00000004h, 4");
  EXPECT_EQ(Decode(Fixed(0x05, 0, 0, 12)),
            release_request + "1 [6+4] Reserved: 0000000Ch\n");
  EXPECT_EQ(Decode(ReleaseReply()),
            PduStart(10, "A-RELEASE-RP", "(06h)", "00000004h, 4") +
                "1 [6+4] Reserved: 00000000h\n");
  // An abort comes as a release request.
  EXPECT_EQ(Decode(Abort(2, 2)),
            release_request +
                "1 [6+1] Reserved: 00h\n"
                "1 [7+1] Reserved: 00h\n"
                "1 [8+1] Source: 2-DICOM UL service provider (initiated "
                "abort)\n"
                "1 [9+1] Reason/Diag.: 2-unexpected PDU\n");
}

TEST_F(UpperLayerDecoderTest, EnumeratedBytesOfARejection) {
  EXPECT_EQ(Texts("7+1", "Result: ", 3,
                  [](std::uint8_t result) { return Fixed(3, result, 1, 1); }),
            "00h ERROR - wrong value!|1-rejected permanent|"
            "2-rejected transient|03h ERROR - wrong value!|");
  EXPECT_EQ(Texts("8+1", "Source: ", 4,
                  [](std::uint8_t source) { return Fixed(3, 1, source, 1); }),
            "00hERROR - wrong value!|1-DICOM UL service user|"
            "2-DICOM UL service provider (ACSE related function)|"
            "3-DICOM UL service provider (Presentation related function)|"
            "04hERROR - wrong value!|");
  const std::string wrong_source = "ERROR - because of Source!|";
  const struct {
    std::uint8_t source;
    int last;
    std::string reasons;
  } cases[] = {
      {0, 1, wrong_source + wrong_source},
      {1, 11,
       "0 ERROR - wrong value!|1-no reason given|"
       "2-application context name not supported|"
       "3-calling AE title not recognized|4-reserved|5-reserved|6-reserved|"
       "7-called AE title not recognized|8-reserved|9-reserved|10-reserved|"
       "11 ERROR - wrong value!|"},
      {2, 3,
       "0 ERROR - wrong value!|1-no reason given|"
       "2-protocol version not supported|3 ERROR - wrong value!|"},
      {3, 8,
       "0-reserved|1-temporary congrestion|2-local-limit exeeded|3-reserved|"
       "4-reserved|5-reserved|6-reserved|7-reserved|8 ERROR - wrong value!|"},
      {4, 0, wrong_source}};
  for (const auto& c : cases) {
    EXPECT_EQ(Texts("9+1", "Reason/Diag.: ", c.last,
                    [&](std::uint8_t reason) {
                      return Fixed(3, 1, c.source, reason);
                    }),
              c.reasons);
  }
}

TEST_F(UpperLayerDecoderTest, EnumeratedBytesOfAnAbort) {
  EXPECT_EQ(
      Texts("8+1", "", 3, [](std::uint8_t source) { return Abort(source, 0); }),
      "Source: 0-DICOM UL service user (initiated abort)|Source: 1-reserved|"
      "Source: 2-DICOM UL service provider (initiated abort)|"
      "Result: 03h ERROR - wrong value!|");
  EXPECT_TRUE(Decode(Abort(3, 0)).ends_with("wrong value!\n"));
  EXPECT_EQ(Line("9+1", Abort(0, 5)), "Reserved: 05h");
  EXPECT_EQ(Line("9+1", Abort(1, 0)), "Reserved: 00h");
  EXPECT_EQ(Texts("9+1", "Reason/Diag.: ", 7,
                  [](std::uint8_t reason) { return Abort(2, reason); }),
            "0-reason not specified|1-unrecognized PDU|2-unexpected PDU|"
            "3-reserved|4-unrecognized PDU parameter|"
            "5-unexpected PDU parameter|6-invalid PDU parameter value|"
            "7 ERROR - wrong value!|");
}

TEST_F(UpperLayerDecoderTest, LengthFieldMarksOnlyItsOwnLine) {
  const std::string error = " ERROR - Pdu length differs from Packet Length!";
  EXPECT_EQ(Line("2+4", ReleaseReply().Patched(2, Big32(0x80000000))),
            "PDU-Length: 80000000h, -2147483648" + error);
  // 11 bytes of which 5 are claimed agree, but these PDUs have 10.
  for (const int type : {0x03, 0x05, 0x06, 0x07}) {
    EXPECT_EQ(Line("2+4", Pdu(static_cast<std::uint8_t>(type), Bytes(5))),
              "PDU-Length: 00000005h, 5" + error);
  }
  EXPECT_EQ(Decode(AssociateRequest({}).Patched(2, Big32(67))),
            AssociateStart(true, 74, "00000043h, 67" + error));
}

TEST_F(UpperLayerDecoderTest, DataShowsTheFirstPdvAndDumpsTheRest) {
  const std::string row_start = "0000  48 49";
  EXPECT_EQ(Decode(PData(Pdv(1, kLastCommand, Text("HI")))),
            PduStart(14, "P-DATA-TF", "(04h)", "00000008h, 8") +
                "0 [6+5] PDV Header\n"
                "1 [6+4] PDV Length: 00000004h, 4\n"
                "1 [10+1] Presentation Context ID: 01h\n"
                "0 [11+1] Message Control Header: 03h\n"
                "1 [11+1] .... ..1. = last fragment\n"
                "1 [11+1] .... ...1 = Message Command information\n"
                "0 [12+2] DICOM Message Data\n"
                "1 [12+2] " +
                row_start + std::string(58 - row_start.size(), ' ') + "HI" +
                std::string(14, ' ') + "\n");
  // No value, no section for it; of the control byte two bits count.
  EXPECT_EQ(DecodeFrom("0 [11", PData(Pdv(1, 0xFC, {}))),
            "0 [11+1] Message Control Header: FCh\n"
            "1 [11+1] .... ..0. = not the last fragment\n"
            "1 [11+1] .... ...0 = Message Data Set information\n");
  // A second PDV lies in the dump.
  const Bytes two = PData(Pdv(1, kLastCommand, {}) + Pdv(1, kData, {}));
  EXPECT_EQ(Line("6+4", two),
            "PDV Length: 00000002h, 2 ERROR - Pdv length differs from Packet "
            "Length!");
  EXPECT_TRUE(Line("12+6", two).starts_with("0000  00 00 00 02 01 00 "));
}

// What follows are PDUs that cannot be decoded to their end.

TEST_F(UpperLayerDecoderTest, NoPduAndUnknownTypesAreOneLine) {
  EXPECT_EQ(Decode({}), PositionLine(0));
  EXPECT_EQ(Decode({0x00}), "0 [54+1] Error - Unknown Pdu Number 00h\n");
  EXPECT_EQ(Decode(Pdu(0x08, Bytes(90))),
            "0 [54+1] Error - Unknown Pdu Number 08h\n");
}

// Cut anywhere, a PDU ends in the position line, but for cuts behind the last
// byte that is read.
TEST_F(UpperLayerDecoderTest, EveryPrefixEndsInThePositionLine) {
  const struct {
    Bytes pdu;
    std::size_t read;
  } cases[] = {{Fixed(0x03, 1, 1, 1), 10}, {Fixed(0x03, 1, 4, 1), 9},
               {ReleaseRequest(), 10},     {Abort(0, 0), 10},
               {Abort(3, 0), 9},           {PData(Pdv(1, 3, Text("abc"))), 12}};
  for (const auto& c : cases) {
    for (std::size_t n = 1; n < c.pdu.size(); ++n) {
      SCOPED_TRACE(n);
      EXPECT_EQ(EndsInPositionLine(Decode(c.pdu.First(n))), n < c.read);
    }
  }
}

TEST_F(UpperLayerDecoderTest, EveryPrefixOfARequestKeepsTheLinesBeforeTheCut) {
  const Bytes whole = WholeRequest();
  // From the version on, lines do not depend on the buffer's length.
  const std::string whole_text = DecodeFrom("1 [6+2]", whole);
  for (std::size_t n = 8; n < whole.size(); ++n) {
    SCOPED_TRACE(n);
    std::string text = DecodeFrom("1 [6+2]", whole.First(n));
    // The 32 reserved bytes are not read, and neither is the application
    // information that ends this PDU; 84 and 114 are the ends of items.
    const bool quiet = (n >= 42 && n <= 74) || n == 84 || n == 114 || n >= 169;
    EXPECT_EQ(EndsInPositionLine(text), !quiet) << text;
    if (!quiet) text.resize(text.rfind('\n', text.size() - 2) + 1);
    EXPECT_TRUE(whole_text.starts_with(text)) << text;
  }
}

}  // namespace
}  // namespace dicom::testing
