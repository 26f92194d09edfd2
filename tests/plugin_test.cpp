// The module from the outside: through its exports, with a host that behaves or
// does not.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "errors/errors.h"
#include "plugin/exports.h"
#include "plugin/packet_accessor.h"
#include "tests/bytes.h"
#include "tests/recorders.h"
#include "tests/test_dictionary.h"
#include "tests/test_host.h"

namespace dicom::testing {
namespace {

constexpr std::uint32_t kPduView = 0;
constexpr std::uint32_t kMessageView = 1;
constexpr std::uint32_t kStopped = 0;
constexpr std::uint32_t kLive = 1;

const Bytes kEcho = PData(Pdv(1, kLastCommand, Command(0x0030, 7)));
const Bytes kEchoReply = PData(Pdv(1, kLastCommand, Command(0x8030, 7)));

// One list call: what goes in, and what comes out.
struct ListCall {
  std::int32_t first;
  std::uint32_t count;
  std::uint32_t first_available = 77;
  std::uint32_t last_available = 77;
  std::vector<PacketListRow> rows = std::vector<PacketListRow>(41);
  std::uint32_t word = 0;

  std::uint32_t Code() const { return word & 0xFFFF; }
  std::uint32_t Progress() const { return word >> 16; }

  // "number direction length summary|detail".
  std::string Rows() const {
    std::string text;
    for (const PacketListRow& row : rows) {
      if (row.number == 0) break;
      text += std::to_string(row.number) + " " + std::to_string(row.direction) +
              " " + std::to_string(row.length) + " " + row.summary + "|" +
              row.detail + "\n";
    }
    return text;
  }
};

class PluginTest : public ::testing::Test {
 protected:
  PluginTest() {
    WriteFileBytes(kDataDicPath, "0008,0080;Institution Name;LO\n");
    WriteFileBytes(kUidDicPath, "1.2.840.10008.1.1;Verification\n");
    EXPECT_TRUE(LoadModule());
  }
  ~PluginTest() override {
    ClearDicomDisplay(0, host_.Tree(), host_.Hex());
    UnloadModule();
  }

  static ListCall List(TestHost& host, std::uint32_t view, std::uint32_t live,
                       std::int32_t first = 0, std::uint32_t count = 40) {
    ListCall call{first, count};
    call.word = GetDicomPacketList(host.Window(), call.rows.data(), &call.first,
                                   &call.count, &call.first_available,
                                   &call.last_available, view, live);
    return call;
  }

  // Calls until the whole capture is read, as a host does.
  static ListCall ListAll(TestHost& host, std::uint32_t view) {
    for (int i = 0; i < 1000; ++i) {
      const ListCall call = List(host, view, kStopped);
      if (call.Code() != DICOM_LIST_CALL_AGAIN) return call;
    }
    ADD_FAILURE() << "the list never ends";
    return ListCall{0, 0};
  }

  // Shows a row; the text of what left the display, or nothing.
  static std::string Show(TestHost& host, std::int32_t index,
                          std::uint32_t view) {
    return RaisedText([&] {
      DisplayDicomPacket(host.Window(), host.Tree(), index, host.Images(),
                         host.Hex(), view);
    });
  }

  // The packets of an association with one echo, in the host.
  const std::vector<CapturedPacket>& GiveEcho() {
    Conversation talk;
    talk.Open()
        .Send(0, AssociateRequest(ProposedContext(1, "1.2.840.10008.1.1",
                                                  {"1.2.840.10008.1.2"})))
        .Send(1, AssociateAccept(AnsweredContext(1, 0, "1.2.840.10008.1.2")))
        .Send(0, kEcho)
        .Send(1, kEchoReply)
        .Send(0, ReleaseRequest())
        .Send(1, ReleaseReply())
        .Close();
    return host_.packets = talk.Packets();
  }
  void GiveAndListEcho() {
    GiveEcho();
    ListAll(host_, kPduView);
  }
  void GiveMore(const std::vector<CapturedPacket>& packets) {
    host_.packets.insert(host_.packets.end(), packets.begin(), packets.end());
  }
  // The last position of the list, from a call that reads on.
  std::uint32_t LastRow() {
    return List(host_, kPduView, kLive).last_available;
  }

  TestHost host_;
};

TEST_F(PluginTest, AnswersItsVersionAndRefusesToSaveAndPrint) {
  DicomRegisterParent(1);  // both do nothing
  DicomPacketCaptureStart(1);
  EXPECT_EQ(GetDicomDllVersion(), 257);
  MessageBoxRecorder recorder;
  SaveDicomDecodeToFile(host_.Window());
  PrintDicomDecode(host_.Window(), 1);
  const ShownBox refusal{host_.Window(), "Not supported in this Version!", " "};
  EXPECT_EQ(recorder.Boxes(), (std::vector<ShownBox>{refusal, refusal}));
}

TEST_F(PluginTest, ListsAnAssociationInBothViews) {
  GiveEcho();
  EXPECT_EQ(ListAll(host_, kPduView).Rows(),
            "1 0 124 A-ASSOCIATE-RQ PDU|\n"
            "2 1 103 A-ASSOCIATE-AC PDU|\n"
            "3 0 44 P-DATA-TF PDU|\n"
            "4 1 44 P-DATA-TF PDU|\n"
            "5 0 10 A-RELEASE-RQ PDU|\n"
            "6 1 10 A-RELEASE-RP PDU|\n");
  const ListCall messages = List(host_, kMessageView, kStopped);
  // The end of the capture lists both messages once more.
  EXPECT_EQ(messages.Rows(),
            "1 0 32 C-ECHO-RQ|Message Id: 7\n"
            "2 1 32 C-ECHO-RSP|Message Id: 7\n"
            "2 1 32 C-ECHO-RSP|Message Id: 7\n");
  EXPECT_EQ(messages.Code(), DICOM_LIST_UP_TO_DATE);
  EXPECT_EQ(List(host_, kMessageView, kStopped).Rows(), messages.Rows());
}

TEST_F(PluginTest, EmptyOrRefusedCaptureTouchesNothingElse) {
  // Word, first row and count, first and last available position.
  const auto call = [this](std::uint32_t live) {
    const ListCall c = List(host_, kPduView, live, 5, 7);
    return std::vector<std::int64_t>{c.word, c.first, c.count,
                                     c.first_available, c.last_available};
  };
  using Answer = std::vector<std::int64_t>;
  EXPECT_EQ(call(kStopped), (Answer{1, -1, 0, 77, 77}));
  host_.refuse_count = true;
  EXPECT_EQ(call(kStopped), (Answer{0, 5, 7, 77, 77}));
  // A capture without PDUs has an empty view.
  host_.refuse_count = false;
  host_.packets = {{0, TcpSegmentBytes({})}, {1, TcpSegmentBytes({})}};
  EXPECT_EQ(call(kLive), (Answer{(50 << 16) + 1, -1, 0, 0, 0xFFFFFFFF}));
}

TEST_F(PluginTest, RowsAreClampedToTheListAndToForty) {
  Conversation talk;
  talk.Open();
  const auto release = [&](int times) {
    while (times-- > 0) talk.Send(0, ReleaseRequest()).Send(1, ReleaseReply());
    host_.packets = talk.Packets();
  };
  release(5);
  const struct {
    std::int32_t first;
    std::uint32_t count;
    std::int32_t first_out;
    std::uint32_t count_out, first_row;
  } cases[] = {{15, 5, 9, 1, 10},
               {-1, 3, 9, 1, 10},
               {5, 4, 5, 4, 6},
               {5, 5, 5, 5, 6},
               {5, 0xFFFFFFFF, 5, 5, 6}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.first);
    const ListCall call = List(host_, kPduView, kStopped, c.first, c.count);
    EXPECT_EQ(call.first, c.first_out);
    EXPECT_EQ(call.count, c.count_out);
    EXPECT_EQ(call.rows[0].number, c.first_row);
    EXPECT_EQ(call.rows[c.count_out].number, 0u);
  }
  release(100);
  RefreshDicomDecode(host_.Window());
  ListAll(host_, kPduView);
  const ListCall call = List(host_, kPduView, kStopped, 0, 100);
  EXPECT_EQ(call.count, 100u);
  EXPECT_EQ(call.rows[39].number, 40u);
  EXPECT_EQ(call.rows[40].number, 0u);
  // Null pointers are not written through.
  EXPECT_EQ(GetDicomPacketList(host_.Window(), nullptr, nullptr, nullptr,
                               nullptr, nullptr, 0, 1) &
                0xFFFF,
            DICOM_LIST_UP_TO_DATE);
}

TEST_F(PluginTest, ReadsSixtySegmentsACallAndClosesOnlyAtTheEnd) {
  Conversation talk;
  talk.Open();
  for (int i = 0; i < 61; ++i) talk.Send(0, ReleaseRequest()).Acknowledge(1);
  talk.Send(0, ReleaseRequest().First(8));
  host_.packets = talk.Packets();
  ListCall call = List(host_, kPduView, kStopped);
  EXPECT_EQ(call.Code(), DICOM_LIST_CALL_AGAIN);
  EXPECT_EQ(call.last_available, 59u);
  EXPECT_GT(call.Progress(), 90u);
  // Live, the newest data waits for the other side and nothing is closed.
  call = List(host_, kPduView, kLive);
  EXPECT_EQ(call.Code(), DICOM_LIST_UP_TO_DATE);
  EXPECT_EQ(call.last_available, 60u);
  call = List(host_, kPduView, kStopped, 61);
  EXPECT_EQ(call.Rows(), "62 0 8 A-RELEASE-RQ PDU|\n");
}

TEST_F(PluginTest, NewestDataOfADirectionWaitsForTheOtherSide) {
  Conversation talk;
  host_.packets = talk.Open().Send(0, ReleaseRequest()).Packets();
  EXPECT_EQ(List(host_, kPduView, kLive).Rows(), "");
  host_.packets = talk.Acknowledge(1).Packets();
  EXPECT_EQ(List(host_, kPduView, kLive).Rows(), "1 0 10 A-RELEASE-RQ PDU|\n");
}

TEST_F(PluginTest, AsksForTheCountBeforeEachPacketAndReadsSegmentsTwice) {
  host_.packets =
      Conversation().Open().Send(0, ReleaseRequest()).Acknowledge(1).Packets();
  List(host_, kPduView, kLive);
  EXPECT_EQ(host_.TakeRequests(),
            "153 153 151:-1 153 151:0 153 151:1 153 151:2 153 151:3 153 150:3 "
            "153");
  // An old index never comes again; a refused count leaves it to the packet.
  host_.refuse_count = false;
  RefreshDicomDecode(host_.Window());
  host_.before_answer = [this](WPARAM code, std::int32_t) {
    host_.refuse_count = code == DICOM_FETCH_NEXT_PACKET;
  };
  List(host_, kPduView, kLive);
  EXPECT_EQ(host_.TakeRequests().substr(0, 31),
            "153 153 151:-1 153 151:0 153 15");
}

TEST_F(PluginTest, HandshakeIsFoundAmongOtherPackets) {
  const struct {
    const char* situation;
    std::vector<CapturedPacket> before;
    bool found;
  } cases[] = {
      {"other traffic", {{0, TcpSegmentBytes({.flags = kAck})}}, true},
      {"a reset attempt",
       {{0, TcpSegmentBytes({.sequence = 8, .flags = kSyn})},
        {1, TcpSegmentBytes({.acknowledgement = 9, .flags = kRst | kAck})}},
       true},
      // The reset is looked for anywhere, and what follows it is searched.
      {"a SYN without an answer, then another connection's reset",
       {{0, TcpSegmentBytes({.sequence = 8, .flags = kSyn})},
        {0, TcpSegmentBytes({.flags = kRst})}},
       true},
      {"a SYN that nothing answers",
       {{0, TcpSegmentBytes({.sequence = 8, .flags = kSyn})}},
       false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.situation);
    RefreshDicomDecode(host_.Window());
    const std::vector<CapturedPacket> echo = GiveEcho();
    host_.packets = c.before;
    GiveMore(echo);
    EXPECT_EQ(ListAll(host_, kPduView).Rows().empty(), !c.found);
  }
}

TEST_F(PluginTest, IncompleteHandshakeIsReadAgainButPassedPacketsAreNot) {
  const std::vector<CapturedPacket> all = GiveEcho();
  host_.packets = {all.begin(), all.begin() + 2};
  List(host_, kPduView, kLive);
  host_.packets = all;
  host_.TakeRequests();
  EXPECT_NE(List(host_, kPduView, kLive).Rows(), "");
  EXPECT_EQ(host_.TakeRequests().substr(0, 15), "153 153 151:-1 ");

  RefreshDicomDecode(host_.Window());
  host_.packets = {all.begin() + 3, all.end()};  // no SYN
  List(host_, kPduView, kLive);
  host_.TakeRequests();
  EXPECT_EQ(List(host_, kPduView, kLive).Rows(), "");
  EXPECT_EQ(host_.TakeRequests(), "153 153");
}

TEST_F(PluginTest, EarlySegmentsWaitAndRetransmissionsArePassedOver) {
  const std::vector<CapturedPacket> ordered = GiveEcho();
  const std::string rows = ListAll(host_, kPduView).Rows();
  const auto expect_same_rows = [&] {
    RefreshDicomDecode(host_.Window());
    EXPECT_EQ(ListAll(host_, kPduView).Rows(), rows);
  };
  // Each packet behind the handshake swapped with the next, then doubled.
  for (std::size_t i = 3; i + 1 < ordered.size(); ++i) {
    SCOPED_TRACE(i);
    host_.packets = ordered;
    std::swap(host_.packets[i], host_.packets[i + 1]);
    expect_same_rows();
    host_.packets = ordered;
    host_.packets.insert(host_.packets.begin() + static_cast<int>(i),
                         ordered[i]);
    expect_same_rows();
  }
}

TEST_F(PluginTest, SecondConnectionIsFoundBehindAnOrdinaryClose) {
  GiveEcho();
  Conversation again(0xFFFFFFF0, 77);  // its numbers wrap
  GiveMore(again.Open(1)
               .Send(1, kEcho)
               .Send(0, kEchoReply)
               .Acknowledge(1)
               .Packets());
  EXPECT_EQ(List(host_, kMessageView, kLive).Rows(),
            "1 0 32 C-ECHO-RQ|Message Id: 7\n"
            "2 1 32 C-ECHO-RSP|Message Id: 7\n"
            "3 1 32 C-ECHO-RQ|Message Id: 7\n"
            "4 0 32 C-ECHO-RSP|Message Id: 7\n");
}

TEST_F(PluginTest, EveryThirdFailureIsShownAndKeepsWhatThereIs) {
  GiveEcho();
  host_.packets.push_back({0, Repeat(0, 13)});  // no TCP header
  MessageBoxRecorder recorder;
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(List(host_, kPduView, kLive).word, 1u);
    EXPECT_EQ(List(host_, kPduView, kStopped).word, 1u);
    EXPECT_EQ(recorder.Boxes().size(), static_cast<std::size_t>(round));
    std::uint32_t nested = 0;
    recorder.WhileBoxIsOpen(
        [&] { nested = List(host_, kPduView, kStopped).word; });
    EXPECT_EQ(List(host_, kPduView, kLive).word, 0u);
    EXPECT_EQ(nested, 2u);  // still busy
    ASSERT_EQ(recorder.Boxes().size(), static_cast<std::size_t>(round + 1));
    EXPECT_EQ(recorder.Boxes().back(),
              (ShownBox{host_.Window(), "Packet too short for Tcp Header!",
                        "Exception"}));
    // The runt is behind us: what was read before it is there now.
    EXPECT_EQ(LastRow(), 5u);
    RefreshDicomDecode(host_.Window());
  }
}

TEST_F(PluginTest, NestedCallsAreTurnedAwayAndOthersServed) {
  GiveAndListEcho();
  RefreshDicomDecode(host_.Window());
  std::string log;
  host_.before_answer = [&](WPARAM, std::int32_t) { AdvanceTicks(2001); };
  host_.Post([&] {
    log += std::to_string(List(host_, kPduView, kStopped).word) + " " +
           std::to_string(List(host_, kPduView, kLive).word);
    // A display is not a list: it runs, and so does a refresh.
    log += Show(host_, 0, kPduView);
    log += " " + std::to_string(host_.TreeCount() > 0);
    RefreshDicomDecode(host_.Window());
  });
  // The call that was interrupted goes on with what it had.
  EXPECT_EQ(LastRow(), 5u);
  EXPECT_EQ(log, "2 1 1");
  EXPECT_EQ(LastRow(), 5u);
}

TEST_F(PluginTest, QuitIsLeftToTheHostsOwnLoop) {
  GiveEcho();
  host_.before_answer = [](WPARAM, std::int32_t) { AdvanceTicks(2001); };
  ::PostQuitMessage(7);
  EXPECT_EQ(List(host_, kPduView, kLive).last_available, 5u);
  MSG message{};
  EXPECT_TRUE(::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
  EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
  EXPECT_EQ(message.wParam, 7u);
}

TEST_F(PluginTest, AccessorNeedsAHostWindow) {
  PacketAccessor accessor(std::make_shared<SegmentHistory>());
  EXPECT_THROW(accessor.ReadNextSegment(), HandleNotSet);
  accessor.SetHostWindow(host_.Window());
  EXPECT_FALSE(accessor.ReadNextSegment());
}

TEST_F(PluginTest, WindowsKeepSeparateLists) {
  TestHost other;
  other.packets =
      Conversation().Open().Send(0, Abort(0, 0)).Acknowledge(1).Packets();
  GiveAndListEcho();
  EXPECT_EQ(List(other, kPduView, kLive).Rows(), "1 0 10 A-ABORT PDU|\n");
  DicomDeRegisterParent(other.Window());
  other.packets.clear();
  host_.packets.clear();  // what was read stays
  EXPECT_EQ(List(other, kPduView, kLive).first, -1);
  GiveEcho();
  EXPECT_EQ(LastRow(), 5u);
}

TEST_F(PluginTest, DisplaysTheRowAtAPositionAndTheLastBehindTheEnd) {
  GiveAndListEcho();
  EXPECT_EQ(Show(host_, 99, kPduView), "");
  EXPECT_EQ(host_.TreeText(),
            "0 [0+10] DICOM - Upper Layer Protokoll: A-RELEASE-RP PDU (06h)\n"
            "1 [0+1] PDU-Type: A-RELEASE-RP (06h)\n"
            "1 [1+1] Reserved: 00h\n"
            "1 [2+4] PDU-Length: 00000004h, 4\n"
            "1 [6+4] Reserved: 00000000h\n");
  EXPECT_EQ(host_.HexText(),
            "0000  06 00 00 00 00 04 00 00  00 00                      "
            "..........\x20\x20\x20\x20\x20\x20\r\n");
  EXPECT_EQ(Show(host_, 0, kMessageView), "");
  EXPECT_EQ(host_.TreeText().substr(0, 44),
            "0 [0+32] DICOM - Command Set: C-ECHO-RQ\n1 [0");
  ClearDicomDisplay(0, host_.Tree(), host_.Hex());
  EXPECT_EQ(host_.TreeCount(), 0u);
  EXPECT_EQ(host_.HexText(), "");
}

TEST_F(PluginTest, EmptyViewClearsTreeAndHexWindow) {
  GiveAndListEcho();
  Show(host_, 0, kPduView);
  TestHost unknown;
  DisplayDicomPacket(unknown.Window(), host_.Tree(), 0, nullptr, host_.Hex(),
                     kMessageView);
  EXPECT_EQ(host_.TreeCount(), 0u);
  EXPECT_EQ(host_.HexText(), "");
}

TEST_F(PluginTest, DumpOfAMessageEndsAt64000BytesAndOfAPduNever) {
  Conversation talk;
  talk.Open()
      .Send(0, AssociateRequest({}))
      .Send(1, AssociateAccept(AnsweredContext(1, 0, "1.2.840.10008.1.2")));
  talk.Send(0, PData(Pdv(1, kLastCommand, Command(0x0001, 1))));
  const Bytes value = Repeat('v', 70000);
  const Bytes data =
      PData(Pdv(1, kLastData, ImplicitElement(0x0008, 0x0080, value)));
  for (std::size_t at = 0; at < data.size(); at += 15000) {
    talk.Send(0, data.Part(at, 15000));
  }
  host_.packets = talk.Packets();
  ListAll(host_, kPduView);
  EXPECT_EQ(Show(host_, 3, kPduView), "");
  EXPECT_EQ(host_.HexText().size(), (70000 + 8 + 12 + 15) / 16 * 76u);
  // Closing the capture has put the other side's message 0 first.
  EXPECT_EQ(Show(host_, 1, kMessageView), "");
  EXPECT_EQ(host_.HexText().size(), 64000 / 16 * 76u);
  EXPECT_NE(host_.TreeText().find("\n1 [32+13776] (0008,0080) - "),
            std::string::npos);
}

TEST_F(PluginTest, FailureThatLeavesTheDisplayKeepsItBusy) {
  GiveAndListEcho();
  // The C++ library's text, longer than the module's own.
  EXPECT_GT(Show(host_, -1, kPduView).size(), 40u);
  EXPECT_EQ(Show(host_, 0, kPduView), "");
  EXPECT_EQ(host_.TreeCount(), 0u);  // turned away

  UnloadModule();
  ASSERT_TRUE(LoadModule());
  ListAll(host_, kPduView);
  host_.refused = {3};
  EXPECT_EQ(Show(host_, 0, kPduView), "Unable to get Packet From Tapvane");
  host_.refused.clear();
  EXPECT_EQ(Show(host_, 0, kPduView), "");
  EXPECT_EQ(host_.TreeCount(), 0u);
  EXPECT_EQ(LastRow(), 5u);
}

}  // namespace
}  // namespace dicom::testing
