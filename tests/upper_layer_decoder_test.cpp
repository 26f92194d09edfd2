#include "upper_layer/upper_layer_decoder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

#include "tests/bytes.h"
#include "tests/test_dictionary.h"
#include "tests/test_host.h"
#include "tree/tree_output.h"

namespace dicom::testing {
namespace {

using namespace std::string_literals;

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

// What an association shows before its items.
std::string AssociateStart(bool request, const std::string& pdu_bytes,
                           const std::string& length_field) {
  const std::string name = request ? "A-ASSOCIATE-RQ" : "A-ASSOCIATE-AC";
  const std::string type = request ? "(01h)\n" : "(02h)\n";
  return "0 [0+" + pdu_bytes + "] DICOM - Upper Layer Protokoll: " + name +
         " PDU " + type + "1 [0+1] PDU-Type: " + name + " " + type +
         "1 [1+1] Reserved: 00h\n"
         "1 [2+4] PDU-Length: " +
         length_field +
         "\n"
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
std::string Header(int depth, int offset, const std::string& type,
                   const std::string& size) {
  const auto line = [&](int distance, const std::string& bytes_and_text) {
    return std::to_string(depth) + " [" + std::to_string(offset + distance) +
           bytes_and_text + "\n";
  };
  return line(0, "+1] Item Type: " + type) + line(1, "+1] Reserved: 00h") +
         line(2, "+2] Item size: " + size);
}

std::string PositionLine(const std::string& offset, const std::string& hex) {
  return "0 [" + offset +
         "+1] ERROR - Could not decode further at Position: " + hex + "h, " +
         offset + "\n";
}

bool EndsInPositionLine(const std::string& text) {
  const std::size_t last_line = text.rfind('\n', text.size() - 2) + 1;
  return text.find("] ERROR - Could not decode further at Position: ",
                   last_line) != std::string::npos;
}

class UpperLayerDecoderTest : public ::testing::Test {
 protected:
  ~UpperLayerDecoderTest() override { ClearTree(host_.Tree()); }

  std::string Decode(const Bytes& pdu) {
    ClearTree(host_.Tree());
    host_.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, std::uint32_t{1});
    DecodeTreeWriter writer(host_.Window(), host_.Tree(), 0, host_.Images());
    UpperLayerDecoder decoder(pdu.data(), pdu.Length(), writer,
                              dictionary_.Get());
    decoder.DecodePdu();
    position_ = decoder.Position();
    return host_.TreeText();
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

  TestHost host_;
  TestDictionary dictionary_{"1.2;Second\n1.2.3;Application\n1.4;Abstract\n"};
  std::uint32_t position_ = 0;  // where the last decode ended
};

TEST_F(UpperLayerDecoderTest, RequestShowsEveryItemAndSubItem) {
  EXPECT_EQ(
      Decode(WholeRequest()),
      AssociateStart(true, "172", "000000A6h, 166") +
          "1 [74+10] Application Context Item: 1.2.3\n" +
          Header(2, 74, "10h", "0006h, 6") +
          "2 [78+6] Application context name: 1.2.3\n"
          "3 [78+6] UID description: Application\n"
          "1 [84+30] Presentation Context Item: 01h\n" +
          Header(2, 84, "20h", "001Ah, 26") +
          "2 [88+1] Presentation Context ID: 01h\n"
          "2 [89+3] Reserved: 0Ah 0Bh 0Ch\n"
          "2 [92+7] Abstract Syntax Sub Item: 1.4\n" +
          Header(3, 92, "30h", "0003h, 3") +
          "3 [96+3] Abstract Syntax name: 1.4\n"
          "4 [96+3] UID description: Abstract\n"
          "2 [99+7] Transfer syntax Item: 1.2\n" +
          Header(3, 99, "40h", "0003h, 3") +
          "3 [103+3] Transfer syntax name: 1.2\n"
          "4 [103+3] UID description: Second\n"
          "2 [106+8] Transfer syntax Item: 1.5\n" +
          Header(3, 106, "40h", "0004h, 4") +
          "3 [110+4] Transfer syntax name: 1.5\n"
          "4 [110+4] UID description: - Undefined UID\n"
          "1 [114+58] User Info Item\n" +
          Header(2, 114, "50h", "0036h, 54") +
          "2 [118+8] Maximum Length Sub Item\n" +
          Header(3, 118, "51h", "0004h, 4") +
          "3 [122+4] Maximum length received: 2147483648\n"
          "2 [126+7] Implementation Class UID Sub Item\n" +
          Header(3, 126, "52h", "0003h, 3") +
          "3 [130+3] Implementation Class UID: 1.6\n"
          "4 [130+3] UID description: - Undefined UID\n"
          "2 [133+8] Asynchronous Operation Window Sub Item\n" +
          Header(3, 133, "53h", "0004h, 4") +
          "3 [137+2] Maximum number operations invoked: 65535\n"
          "3 [139+2] Maximum number operations performed: 1\n"
          "2 [141+11] Asynchronous Operation Window Sub Item\n" +
          Header(3, 141, "54h", "0007h, 7") +
          "3 [145+2] UID size: 0003h, 3\n"
          "3 [147+3] SOP class UID: 1.7\n"
          "4 [147+3] UID description: - Undefined UID\n"
          "3 [150+1] SCU role: 0 - non support of the SCU role\n"
          "3 [151+1] SCP role: 1 - support of SCP role\n"
          "2 [152+8] Implementation Version Name Sub Item\n" +
          Header(3, 152, "55h", "0004h, 4") +
          "3 [156+4] Implementation version name: NAME\n"
          "2 [160+12] SOP Class Extended Negotiation Sub Item\n" +
          Header(3, 160, "56h", "0008h, 8") +
          "3 [164+2] SOP class UID size: 0003h, 3\n"
          "3 [166+3] SOP class UID: 1.8\n"
          "4 [166+3] UID description: - Undefined UID\n"
          "3 [169+3] Service class application information: (as specified in "
          "the Service Class Specification)\n");
}

TEST_F(UpperLayerDecoderTest, AcceptDiffersWhereItsFormSaysSo) {
  EXPECT_EQ(
      Decode(AssociateAccept(AnsweredContext(1, 4, "") +
                             Item(0x10, Text("1.2.3")) +
                             Item(0x50, Role("1.7", 0, 1) + Item(0x55, {})))),
      AssociateStart(false, "114", "0000006Ch, 108") +
          "1 [74+12] Presentation Context Item: 01h\n" +
          Header(2, 74, "21h", "0008h, 8") +
          "2 [78+1] Presentation Context ID: 01h\n"
          "2 [79+1] Reserved: 00h\n"
          "2 [80+1] Result/Reason: 4 - transfer syntaxes not supported "
          "(provider rejection)\n"
          "2 [81+1] Reserved: 00h\n"
          "2 [82+4] Transfer syntax Item: \n" +
          Header(3, 82, "40h", "0000h, 0") +
          // Nothing has closed the empty syntax: the next item opens in it.
          "3 [86+9] Application Context Item: 1.2.3\n" +
          Header(4, 86, "10h", "0005h, 5") +
          "4 [90+5] Application context name: 1.2.3\n"
          "5 [90+5] UID description: Application\n"
          "1 [95+19] User Info Item\n" +
          Header(2, 95, "50h", "000Fh, 15") +
          "2 [99+11] Asynchronous Operation Window Sub Item\n" +
          Header(3, 99, "54h", "0007h, 7") +
          "3 [103+2] UID size: 0003h, 3\n"
          "3 [105+3] SOP class UID: 1.7\n"
          "4 [105+3] UID description: - Undefined UID\n"
          "3 [108+1] SCU role: 0 - rejected SCU role\n"
          "3 [109+1] SCP role: 1 - accepted SCP role\n"
          "2 [110+4] Implementation Version Name Sub Item\n" +
          Header(3, 110, "55h", "0000h, 0") +
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
      "Unknown Sub Item Type: 57h\n" + Header(3, 82, "57h", "0002h, 2");
  const Bytes unknown = Item(0x57, Text("ab"));
  EXPECT_EQ(DecodeFrom("2 [82", AssociateRequest(
                                    Item(0x20, Bytes(4) + unknown + unknown))),
            "2 [82+6] " + skipped + "2 [88+6] Unknown Sub Item Type: 57h\n" +
                Header(3, 88, "57h", "0002h, 2"));
  EXPECT_EQ(DecodeFrom("2 [82", AssociateAccept(
                                    Item(0x21, Bytes{1, 0, 0, 0} + unknown))),
            "2 [82+6] " + skipped);
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
  for (std::uint32_t version : {0x0003u, 0xFFFFu}) {
    SCOPED_TRACE(version);
    EXPECT_EQ(Decode(AssociateRequest({}).Patched(6, Big16(version))),
              AssociateStart(true, "74", "00000044h, 68"));
  }
}

TEST_F(UpperLayerDecoderTest, TitleEndsAtItsZeroByteOrItsField) {
  const Bytes pdu = AssociateRequest({}).Patched(
      10, Text("SIXTEEN-LETTERS!") + Text("NAME") + Bytes{0} + Text("x"));
  EXPECT_EQ(Line("10+16", pdu), "Called AE title: SIXTEEN-LETTERS!");
  EXPECT_EQ(Line("26+16", pdu), "Calling AE title: NAME");
}

TEST_F(UpperLayerDecoderTest, SyntaxBesideTheContextSizeResynchronises) {
  const std::string error =
      "ERROR in item size (either this item or in the sub item(s)\n";
  const std::string next =
      "1 [95+4] Unknown Item Type: 60h\n"
      "2 [96+1] Reserved: 00h\n"
      "2 [97+2] Item size: 0000h, 0\n";
  // The last field of the syntax, its name, begins at 86: 86 + 13 - 4 is 95.
  const Bytes syntax = Item(0x40, Text("1.2"));
  EXPECT_EQ(DecodeFrom("0 [89", AssociateAccept(MissizedContext(syntax, 13) +
                                                Bytes(6) + Item(0x60, {}))),
            "0 [89+1] " + error + next);
  // Without a name, and in an unknown sub-item, that is the size at 84.
  EXPECT_EQ(
      DecodeFrom("0 [86", AssociateAccept(MissizedContext(Item(0x40, {}), 15) +
                                          Bytes(9) + Item(0x60, {}))),
      "0 [86+1] " + error + next);
  EXPECT_EQ(DecodeFrom("0 [88", AssociateAccept(
                                    MissizedContext(Item(0x57, Bytes(2)), 15) +
                                    Bytes(7) + Item(0x60, {}))),
            "0 [88+1] " + error + next);
  // It may reach the end of the buffer but not pass it.
  EXPECT_EQ(DecodeFrom("0 [89", AssociateAccept(MissizedContext(syntax, 7))),
            "0 [89+1] " + error);
  EXPECT_EQ(DecodeFrom("0 [89", AssociateAccept(MissizedContext(syntax, 8))),
            "0 [89+1] " + error + PositionLine("89", "59"));
}

TEST_F(UpperLayerDecoderTest, EmptyUidEndsTheDecodeAtItsField) {
  const std::string at_item = PositionLine("74", "4A");
  const std::string at_sub_item = PositionLine("82", "52");
  const std::string at_uid = PositionLine("84", "54");
  struct Case {
    Bytes item;
    std::string last_line;
  };
  for (const Case& c :
       {Case{Item(0x10, {}), at_item},
        Case{Item(0x20, Bytes(4) + Item(0x30, {})), at_sub_item},
        Case{Item(0x50, Item(0x52, {})), at_sub_item},
        Case{Item(0x50, Role("", 0, 0)), at_uid},
        Case{Item(0x50, Item(0x56, Big16(0))), at_uid}}) {
    const std::string text = Decode(AssociateRequest(c.item + Bytes(8)));
    EXPECT_TRUE(text.ends_with(c.last_line)) << text;
  }
}

TEST_F(UpperLayerDecoderTest, LengthsOtherThanFourAreMarked) {
  // A maximum length of 2 bytes is read as 4 and skipped as 2; a window is
  // always 4 bytes.
  const Bytes short_length = Item(0x51, Big16(0x1234));
  const Bytes long_window = Item(0x53, {0, 2, 0, 3}).Patched(2, Big16(6));
  EXPECT_EQ(
      DecodeFrom("2 [78",
                 AssociateRequest(Item(0x50, short_length + long_window))),
      "2 [78+6] Maximum Length Sub Item\n" +
          Header(3, 78, "51h", "0002h, 2 ERROR - The length should be 4!") +
          "3 [82+2] Maximum length received: 305419008\n"  // 12345300h
          "2 [84+10] Asynchronous Operation Window Sub Item\n" +
          Header(3, 84, "53h", "0006h, 6 ERROR - The length should be 4!") +
          "3 [88+2] Maximum number operations invoked: 2\n"
          "3 [90+2] Maximum number operations performed: 3\n");
}

TEST_F(UpperLayerDecoderTest, UidLongerThanItsSubItemReturnsToTheSubItemsEnd) {
  // The UID of 6 bytes takes in the next sub-item's first bytes.
  const Bytes negotiation = Item(0x56, Big16(6) + Text("1.2"));
  EXPECT_EQ(
      DecodeFrom("3 [84", AssociateRequest(
                              Item(0x50, negotiation + Item(0x55, Text("N"))))),
      "3 [84+6] SOP class UID: 1.2U\n"
      "4 [84+6] UID description: - Undefined UID\n"
      "3 [90+13718] Service class application information: (as specified "
      "in the Service Class Specification)\n"
      "2 [87+5] Implementation Version Name Sub Item\n" +
          Header(3, 87, "55h", "0001h, 1") +
          "3 [91+1] Implementation version name: N\n");
}

TEST_F(UpperLayerDecoderTest, EnumeratedBytesOfItems) {
  const std::pair<std::uint8_t, const char*> results[] = {
      {0, "0 - acceptance"},
      {1, "1 - user rejection"},
      {2, "2 - no reason (provider rejection)"},
      {3, "3 - abstract syntax not supported (provider rejection)"},
      {4, "4 - transfer syntaxes not supported (provider rejection)"},
      {5, "5 ERROR wrong value"},
      {255, "255 ERROR wrong value"}};
  for (const auto& [result, text] : results) {
    EXPECT_EQ(Line("80+1", AssociateAccept(AnsweredContext(1, result, "1.2"))),
              "Result/Reason: "s + text);
  }
  struct Case {
    Bytes (*associate)(const Bytes& items);
    std::uint8_t scu, scp;
    const char *scu_text, *scp_text;
  };
  for (const Case& c :
       {Case{AssociateRequest, 1, 0, "1 - support of SCU role",
             "0 - non support of the SCP role"},
        Case{AssociateAccept, 1, 0, "1 - accepted SCU role",
             "0 - rejected SCP role"},
        Case{AssociateRequest, 2, 255, "2 ERROR - wrong value!",
             "255 ERROR - wrong value!"},
        Case{AssociateAccept, 255, 2, "255 ERROR - wrong value!",
             "2 ERROR - wrong value!"}}) {
    const Bytes pdu = c.associate(Item(0x50, Role("1.7", c.scu, c.scp)));
    EXPECT_EQ(Line("87+1", pdu), "SCU role: "s + c.scu_text);
    EXPECT_EQ(Line("88+1", pdu), "SCP role: "s + c.scp_text);
  }
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
      "0 [0+10] DICOM - Upper Layer Protokoll: A-RELEASE-RQ PDU (05h)\n"
      "1 [0+1] PDU-Type: A-RELEASE-RQ (05h)\n"
      "1 [1+1] Reserved: 00h\n"
      "1 [2+4] PDU-Length: 00000004h, 4\n";
  EXPECT_EQ(Decode(Fixed(0x05, 0, 0, 12)),
            release_request + "1 [6+4] Reserved: 0000000Ch\n");
  EXPECT_EQ(Decode(ReleaseReply()),
            "0 [0+10] DICOM - Upper Layer Protokoll: A-RELEASE-RP PDU (06h)\n"
            "1 [0+1] PDU-Type: A-RELEASE-RP (06h)\n"
            "1 [1+1] Reserved: 00h\n"
            "1 [2+4] PDU-Length: 00000004h, 4\n"
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

TEST_F(UpperLayerDecoderTest, EnumeratedBytesOfFixedSizePdus) {
  struct Case {
    Bytes pdu;
    const char *range, *text;
  };
  const auto reject = [](std::uint8_t source, std::uint8_t reason) {
    return Fixed(0x03, 1, source, reason);
  };
  for (const Case& c : {
           Case{Fixed(0x03, 0, 1, 1), "7+1",
                "Result: 00h ERROR - wrong value!"},
           Case{Fixed(0x03, 2, 1, 1), "7+1", "Result: 2-rejected transient"},
           Case{Fixed(0x03, 3, 1, 1), "7+1",
                "Result: 03h ERROR - wrong value!"},
           Case{reject(0, 1), "8+1", "Source: 00hERROR - wrong value!"},
           Case{reject(2, 1), "8+1",
                "Source: 2-DICOM UL service provider (ACSE related function)"},
           Case{reject(3, 1), "8+1",
                "Source: 3-DICOM UL service provider (Presentation related "
                "function)"},
           Case{reject(4, 1), "8+1", "Source: 04hERROR - wrong value!"},
           Case{reject(0, 1), "9+1",
                "Reason/Diag.: ERROR - because of Source!"},
           Case{reject(4, 1), "9+1",
                "Reason/Diag.: ERROR - because of Source!"},
           Case{reject(1, 0), "9+1", "Reason/Diag.: 0 ERROR - wrong value!"},
           Case{reject(1, 1), "9+1", "Reason/Diag.: 1-no reason given"},
           Case{reject(1, 2), "9+1",
                "Reason/Diag.: 2-application context name not supported"},
           Case{reject(1, 3), "9+1",
                "Reason/Diag.: 3-calling AE title not recognized"},
           Case{reject(1, 4), "9+1", "Reason/Diag.: 4-reserved"},
           Case{reject(1, 6), "9+1", "Reason/Diag.: 6-reserved"},
           Case{reject(1, 8), "9+1", "Reason/Diag.: 8-reserved"},
           Case{reject(1, 10), "9+1", "Reason/Diag.: 10-reserved"},
           Case{reject(1, 11), "9+1", "Reason/Diag.: 11 ERROR - wrong value!"},
           Case{reject(2, 0), "9+1", "Reason/Diag.: 0 ERROR - wrong value!"},
           Case{reject(2, 1), "9+1", "Reason/Diag.: 1-no reason given"},
           Case{reject(2, 2), "9+1",
                "Reason/Diag.: 2-protocol version not supported"},
           Case{reject(2, 3), "9+1", "Reason/Diag.: 3 ERROR - wrong value!"},
           Case{reject(3, 0), "9+1", "Reason/Diag.: 0-reserved"},
           Case{reject(3, 1), "9+1", "Reason/Diag.: 1-temporary congrestion"},
           Case{reject(3, 2), "9+1", "Reason/Diag.: 2-local-limit exeeded"},
           Case{reject(3, 3), "9+1", "Reason/Diag.: 3-reserved"},
           Case{reject(3, 7), "9+1", "Reason/Diag.: 7-reserved"},
           Case{reject(3, 8), "9+1", "Reason/Diag.: 8 ERROR - wrong value!"},
           Case{Abort(0, 5), "8+1",
                "Source: 0-DICOM UL service user (initiated abort)"},
           Case{Abort(0, 5), "9+1", "Reserved: 05h"},
           Case{Abort(1, 0), "8+1", "Source: 1-reserved"},
           Case{Abort(1, 0), "9+1", "Reserved: 00h"},
           Case{Abort(2, 0), "9+1", "Reason/Diag.: 0-reason not specified"},
           Case{Abort(2, 1), "9+1", "Reason/Diag.: 1-unrecognized PDU"},
           Case{Abort(2, 3), "9+1", "Reason/Diag.: 3-reserved"},
           Case{Abort(2, 4), "9+1",
                "Reason/Diag.: 4-unrecognized PDU parameter"},
           Case{Abort(2, 5), "9+1", "Reason/Diag.: 5-unexpected PDU parameter"},
           Case{Abort(2, 6), "9+1",
                "Reason/Diag.: 6-invalid PDU parameter value"},
           Case{Abort(2, 7), "9+1", "Reason/Diag.: 7 ERROR - wrong value!"},
           Case{Abort(3, 0), "8+1", "Result: 03h ERROR - wrong value!"},
       }) {
    EXPECT_EQ(Line(c.range, c.pdu), c.text);
  }
  EXPECT_TRUE(
      Decode(Abort(3, 0)).ends_with("Result: 03h ERROR - wrong value!\n"));
  EXPECT_EQ(position_, 9u);
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
            AssociateStart(true, "74", "00000043h, 67" + error));
}

TEST_F(UpperLayerDecoderTest, DataShowsTheFirstPdvAndDumpsTheRest) {
  const std::string row_start = "0000  48 49";
  EXPECT_EQ(Decode(PData(Pdv(1, kLastCommand, Text("HI")))),
            "0 [0+14] DICOM - Upper Layer Protokoll: P-DATA-TF PDU (04h)\n"
            "1 [0+1] PDU-Type: P-DATA-TF (04h)\n"
            "1 [1+1] Reserved: 00h\n"
            "1 [2+4] PDU-Length: 00000008h, 8\n"
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

TEST_F(UpperLayerDecoderTest, UnknownTypeMarksByte54) {
  EXPECT_EQ(Decode({0x00}), "0 [54+1] Error - Unknown Pdu Number 00h\n");
  EXPECT_EQ(Decode(Pdu(0x08, Bytes(90))),
            "0 [54+1] Error - Unknown Pdu Number 08h\n");
}

TEST_F(UpperLayerDecoderTest, EmptyBufferEndsAtPositionZero) {
  EXPECT_EQ(Decode({}), PositionLine("0", "0"));
}

// Cut anywhere, a PDU ends in the position line, but for cuts behind the last
// byte that is read.
TEST_F(UpperLayerDecoderTest, EveryPrefixEndsInThePositionLine) {
  struct Case {
    Bytes pdu;
    std::size_t read;
  };
  for (const Case& c :
       {Case{Fixed(0x03, 1, 1, 1), 10}, Case{Fixed(0x03, 1, 4, 1), 9},
        Case{ReleaseRequest(), 10}, Case{Abort(0, 0), 10}, Case{Abort(3, 0), 9},
        Case{PData(Pdv(1, 3, Text("abc"))), 12}}) {
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
