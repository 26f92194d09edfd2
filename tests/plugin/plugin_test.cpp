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
#include "tests/test_module.h"
#include "tree/tree_lines.h"

namespace dicom::testing {
namespace {

const Bytes kEcho = PData(Pdv(1, kLastCommand, Command(0x0030, 7)));
const Bytes kEchoReply = PData(Pdv(1, kLastCommand, Command(0x8030, 7)));

class PluginTest : public ::testing::Test {
 protected:
  ~PluginTest() override { Clear(host_); }

  // The packets of an association with one echo, in the host.
  const std::vector<CapturedPacket>& GiveEcho(std::uint32_t sequence = 1000) {
    Conversation talk(sequence);
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

  // What the third failing call in a row says.
  std::string FailureText() {
    MessageBoxRecorder recorder;
    for (int i = 0; i < 3; ++i) List(host_, kPduView, kStopped);
    return recorder.Boxes().empty() ? "" : recorder.Boxes()[0].text;
  }
  // The rows of a capture that is still growing, from its beginning.
  std::string LiveRows() {
    RefreshDicomDecode(host_.Window());
    return List(host_, kPduView, kLive).Rows();
  }

  LoadedModule module_;
  TestHost host_;
};

TEST_F(PluginTest, AnswersItsVersionAndRefusesToSaveAndPrint) {
  DicomRegisterParent(1);  // both do nothing
  DicomPacketCaptureStart(1);
  EXPECT_EQ(GetDicomDllVersion(), 257);
  MessageBoxRecorder recorder;
  TakeBeeps();
  EXPECT_EQ(SaveDicomDecodeToFile(host_.Window()), kBeepAnswer);
  EXPECT_EQ(PrintDicomDecode(host_.Window(), 1), kBeepAnswer);
  EXPECT_EQ(TakeBeeps(), (std::vector<UINT>{0, 0}));
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
  // Any other number is a message view too.
  EXPECT_EQ(List(host_, 0x80000000, kStopped).Rows(), messages.Rows());
}

TEST_F(PluginTest, EmptyOrRefusedCaptureTouchesNothingElse) {
  // Word, first row and count, first and last available position.
  using Answer = std::vector<std::int64_t>;
  const auto call = [this](std::uint32_t live) {
    const ListCall c = List(host_, kPduView, live, 5, 7);
    EXPECT_EQ(c.Written(), 0u);
    return Answer{c.word, c.first, c.count, c.first_available,
                  c.last_available};
  };
  EXPECT_EQ(call(kStopped), (Answer{1, -1, 0, 77, 77}));
  host_.refuse_count = true;
  EXPECT_EQ(call(kStopped), (Answer{0, 5, 7, 77, 77}));
  // A capture without PDUs has an empty view.
  host_.refuse_count = false;
  host_.packets = {{0, TcpSegmentBytes({})}, {1, TcpSegmentBytes({})}};
  EXPECT_EQ(call(kLive), (Answer{(50 << 16) + 1, -1, 0, 0, 0xFFFFFFFF}));
  // A count that nobody writes is -1, and so is that of the packets read.
  RefreshDicomDecode(host_.Window());
  host_.write_count = [](std::int32_t*) {};
  EXPECT_EQ(call(kStopped), (Answer{(100 << 16) + 1, -1, 0, 0, 0xFFFFFFFF}));
}

TEST_F(PluginTest, ProgressIsThePlaceOfTheLastPacketInPerCent) {
  GiveAndListEcho();
  const struct {
    std::int32_t count;
    std::uint32_t progress;
  } cases[] = {{13, 92}, {24, 50}, {12, 100}, {11, 0},
               {1, 0},   {-1, 0},  {-12, 0}};
  for (const auto& c : cases) {
    host_.write_count = [&c](std::int32_t* count) { *count = c.count; };
    EXPECT_EQ(List(host_, kPduView, kLive).word, (c.progress << 16) + 1)
        << c.count;
  }
}

TEST_F(PluginTest, FailureBehindTheReadingAnswersTheProgress) {
  GiveEcho();
  // The accept is fetched for its segment, and again for its contexts.
  host_.before_answer = [this, fetches = 0](WPARAM code,
                                            std::int32_t index) mutable {
    if (code != DICOM_FETCH_PACKET || index != 4) return;
    host_.delivered_instead[4] = ++fetches % 2 == 0 ? 9 : 4;
  };
  MessageBoxRecorder recorder;
  for (std::uint32_t code : {1u, 1u, 0u}) {
    EXPECT_EQ(List(host_, kPduView, kStopped).word, (92u << 16) + code);
  }
  EXPECT_EQ(recorder.Boxes().at(0).text, "Unable to get Packet From Tapvane");
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
    EXPECT_EQ(call.Written(), c.count_out);
  }
  release(100);
  RefreshDicomDecode(host_.Window());
  ListAll(host_, kPduView);
  const ListCall call = List(host_, kPduView, kStopped, 0, 100);
  EXPECT_EQ(call.count, 100u);
  EXPECT_EQ(call.Written(), 40u);
  EXPECT_EQ(call.rows[39].number, 40u);
  // Null pointers are not written through, and no count is a count of 0.
  PacketListRow untouched{};
  for (PacketListRow* rows :
       {static_cast<PacketListRow*>(nullptr), &untouched}) {
    EXPECT_EQ(GetDicomPacketList(host_.Window(), rows, nullptr, nullptr,
                                 nullptr, nullptr, 0, 1) &
                  0xFFFF,
              DICOM_LIST_UP_TO_DATE);
  }
  EXPECT_EQ(untouched.number, 0u);
}

TEST_F(PluginTest, ReadsSixtySegmentsACallAndClosesOnlyAtTheEnd) {
  Conversation talk;
  talk.Open();
  for (int i = 0; i < 61; ++i) talk.Send(0, ReleaseRequest()).Acknowledge(1);
  talk.Send(0, ReleaseRequest().First(8));
  host_.packets = talk.Packets();
  ListCall call = List(host_, kPduView, 2);  // live
  EXPECT_EQ(call.Code(), DICOM_LIST_UP_TO_DATE);
  EXPECT_EQ(call.last_available, 59u);
  RefreshDicomDecode(host_.Window());
  call = List(host_, kPduView, kStopped);
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
  const Bytes release = ReleaseRequest();
  Conversation talk;
  talk.Open().Send(0, release).Send(0, release).Acknowledge(1);
  host_.packets = talk.Packets();
  List(host_, kPduView, kLive);
  EXPECT_EQ(host_.TakeRequests(),
            "153 153 151:-1 153 151:0 153 151:1 153 151:2 153 151:3 153 151:4 "
            "153 150:3 153 150:4 153");
  // By its number, a packet is asked for unless the number is above the count.
  host_.write_count = [](std::int32_t* count) { *count = 3; };
  EXPECT_EQ(Show(host_, 0, kPduView), "");
  EXPECT_EQ(host_.TakeRequests(), "153 150:3");
  host_.write_count = [](std::int32_t* count) { *count = 2; };
  EXPECT_EQ(Show(host_, 0, kPduView), "Unable to get Packet From Tapvane");
  EXPECT_EQ(host_.TakeRequests(), "153");
}

TEST_F(PluginTest, RefusedCountLeavesItToThePacketAndAnOldOneIsNone) {
  GiveAndListEcho();
  const std::string rows = List(host_, kPduView, kStopped).Rows();
  RefreshDicomDecode(host_.Window());
  host_.before_answer = [this](WPARAM code, std::int32_t) {
    if (code != DICOM_COUNT_PACKETS) host_.refuse_count = true;
  };
  EXPECT_EQ(List(host_, kPduView, kStopped).Rows(), rows);
  host_.before_answer = nullptr;
  host_.refuse_count = false;
  for (std::int32_t old : {4, 2}) {
    host_.next_instead[5] = old;
    LiveRows();
    host_.TakeRequests();
    List(host_, kPduView, kLive);
    EXPECT_EQ(host_.TakeRequests(), "153 153 151:4");
  }
}

TEST_F(PluginTest, PacketThatIsNotDeliveredAgainIsAFailure) {
  const struct {
    const char* situation;
    bool early;
    std::int32_t delivered;  // instead of packet 3, when it is asked for first
  } cases[] = {{"refused", false, 99},
               {"another one", false, 4},
               {"early and refused", true, 99},
               {"early and another one", true, 5}};
  for (const auto& c : cases) {
    GiveEcho();
    if (c.early) std::swap(host_.packets[3], host_.packets[4]);
    host_.before_answer = [&, asked = 0](WPARAM code,
                                         std::int32_t index) mutable {
      if (code == DICOM_FETCH_NEXT_PACKET && index == -1) asked = 0;
      if (code != DICOM_FETCH_PACKET) return;
      host_.delivered_instead.clear();
      if (index == 3 && asked++ == 0) host_.delivered_instead[3] = c.delivered;
    };
    EXPECT_EQ(FailureText(), "Unable to get Packet From Tapvane")
        << c.situation;
    host_.before_answer = nullptr;
    host_.delivered_instead.clear();
    RefreshDicomDecode(host_.Window());
  }
}

TEST_F(PluginTest, AnyDirectionButZeroIsTheOtherSide) {
  const std::vector<CapturedPacket> packets = GiveEcho();
  const std::string rows = ListAll(host_, kPduView).Rows();
  for (std::uint32_t direction : {2u, 256u, 0x80000000u}) {
    for (std::size_t i = 0; i < packets.size(); ++i) {
      host_.packets[i].direction = packets[i].direction * direction;
    }
    RefreshDicomDecode(host_.Window());
    EXPECT_EQ(ListAll(host_, kPduView).Rows(), rows) << direction;
  }
}

TEST_F(PluginTest, HandshakeIsFoundAmongOtherPackets) {
  const CapturedPacket syn = {0,
                              TcpSegmentBytes({.sequence = 8, .flags = kSyn})};
  const auto answer = [](std::uint8_t flags) {
    return CapturedPacket{
        1, TcpSegmentBytes(
               {.sequence = 20, .acknowledgement = 9, .flags = flags})};
  };
  const struct {
    const char* situation;
    std::vector<CapturedPacket> before;
    bool found;
  } cases[] = {
      {"other traffic", {{0, TcpSegmentBytes({.flags = kAck})}}, true},
      {"a SYN that answers", {answer(kSyn | kAck)}, true},
      {"a SYN that resets", {answer(kSyn | kRst)}, true},
      {"a reset attempt", {syn, answer(kRst | kAck)}, true},
      {"a reset behind the answer",
       {syn, answer(kSyn | kAck), answer(kRst)},
       true},
      // The reset is looked for anywhere, and what follows it is searched.
      {"a SYN without an answer, then another connection's reset",
       {syn, {0, TcpSegmentBytes({.flags = kRst})}},
       true},
      {"a SYN that nothing answers", {syn}, false}};
  const std::vector<CapturedPacket> echo = GiveEcho();
  const std::string rows = ListAll(host_, kPduView).Rows();
  for (const auto& c : cases) {
    RefreshDicomDecode(host_.Window());
    host_.packets = c.before;
    GiveMore(echo);
    EXPECT_EQ(ListAll(host_, kPduView).Rows(), c.found ? rows : "")
        << c.situation;
  }
}

TEST_F(PluginTest, AnswerAndClosingAckAreKnownByTheirNumbers) {
  const std::vector<CapturedPacket> echo = GiveEcho();
  const std::string rows = ListAll(host_, kPduView).Rows();
  const struct {
    const char* situation;
    std::size_t packet, offset;
    Bytes bytes;   // in the packet, or in one like it
    bool instead;  // of the packet, else before it
    bool found;
  } cases[] = {{"answer with ACK alone", 1, 13, {kAck}, true, true},
               {"answer with SYN alone", 1, 13, {kSyn}, true, true},
               {"answer with neither", 1, 13, {kPsh}, true, false},
               {"answer to another SYN", 1, 8, Big32(1002), true, false},
               {"closing ACK without ACK", 2, 13, {kPsh}, true, false},
               {"another sequence number", 2, 4, Big32(1002), false, true},
               {"another acknowledgement", 2, 8, Big32(5002), false, true}};
  for (const auto& c : cases) {
    RefreshDicomDecode(host_.Window());
    host_.packets = echo;
    CapturedPacket& packet = host_.packets[c.packet];
    packet.tcp_bytes = packet.tcp_bytes.Patched(c.offset, c.bytes);
    if (!c.instead) {
      host_.packets.insert(
          host_.packets.begin() + static_cast<int>(c.packet) + 1,
          echo[c.packet]);
    }
    EXPECT_EQ(ListAll(host_, kPduView).Rows(), c.found ? rows : "")
        << c.situation;
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
  std::string rows;
  for (std::uint32_t sequence : {1000u, 0xFFFFFFA0u}) {  // these wrap
    RefreshDicomDecode(host_.Window());
    const std::vector<CapturedPacket> ordered = GiveEcho(sequence);
    if (rows.empty()) rows = ListAll(host_, kPduView).Rows();
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
}

TEST_F(PluginTest, WhatComesAgainSettlesOnlyWithoutPayload) {
  Conversation talk;
  talk.Open().Send(0, ReleaseRequest()).Send(0, Abort(0, 0));
  const TcpFields again = {.sequence = 1001, .acknowledgement = 5001};
  host_.packets = talk.Packets();
  GiveMore({{0, TcpSegmentBytes(again, ReleaseRequest())}});
  EXPECT_EQ(LiveRows(), "");
  // A bare one settles the segment with its numbers, and no later one.
  GiveMore({{0, TcpSegmentBytes(again)}});
  EXPECT_EQ(LiveRows(), "1 0 10 A-RELEASE-RQ PDU|\n");
}

TEST_F(PluginTest, OldestEarlySegmentIsTakenAndNoneInTheNextConnection) {
  const TcpFields early = {.sequence = 1011, .acknowledgement = 5001};
  host_.packets = Conversation().Open().Packets();
  GiveMore({{0, TcpSegmentBytes(early, Abort(0, 0))},
            {0, TcpSegmentBytes(early, ReleaseReply())},
            {0, TcpSegmentBytes({1001, 5001}, ReleaseRequest())}});
  const std::string rows =
      "1 0 10 A-RELEASE-RQ PDU|\n"
      "2 0 10 A-ABORT PDU|\n";
  EXPECT_EQ(ListAll(host_, kPduView).Rows(), rows);

  // Behind a FIN two acknowledgements fit; the older segment is first there
  // too.
  RefreshDicomDecode(host_.Window());
  host_.packets = Conversation().Open().Packets();
  GiveMore({{1, TcpSegmentBytes({5001, 1001, kFin | kAck})},
            {0, TcpSegmentBytes({1011, 5002}, Abort(0, 0))},
            {0, TcpSegmentBytes({1011, 5001}, ReleaseReply())},
            {0, TcpSegmentBytes({1001, 5001}, ReleaseRequest())}});
  EXPECT_EQ(ListAll(host_, kPduView).Rows(), rows);

  // This one would fit behind the next handshake.
  RefreshDicomDecode(host_.Window());
  host_.packets = Conversation().Open().Packets();
  GiveMore({{0, TcpSegmentBytes({70001, 90001}, ReleaseReply())},
            {0, TcpSegmentBytes({1001, 5001, kRst})}});
  Conversation next(70000, 90000);
  GiveMore(
      next.Open().Send(0, ReleaseRequest()).Send(0, Abort(0, 0)).Packets());
  EXPECT_EQ(ListAll(host_, kPduView).Rows(), rows);
}

TEST_F(PluginTest, ResetAndBothFinsEndAConnectionAndOneFinDoesNot) {
  constexpr std::uint8_t kFinAck = kFin | kAck;
  const struct {
    const char* situation;
    void (*end)(Conversation& talk);
    std::string answer, next;  // what is listed of both
  } cases[] = {
      {"reset", [](Conversation& talk) { talk.Add(0, kRst); }, "",
       "2 0 10 A-ABORT PDU|\n"},
      {"reset of the other side",
       [](Conversation& talk) { talk.Send(1, ReleaseReply()).Add(1, kRst); },
       "2 1 10 A-RELEASE-RP PDU|\n", "3 0 10 A-ABORT PDU|\n"},
      // What is said behind a FIN is numbered one higher.
      {"FIN",
       [](Conversation& talk) {
         talk.Add(0, kFinAck).Send(1, ReleaseReply()).Acknowledge(0);
       },
       "2 1 10 A-RELEASE-RP PDU|\n", ""},
      {"FIN of the other side",
       [](Conversation& talk) {
         talk.Send(1, ReleaseReply()).Add(1, kFinAck).Acknowledge(0);
       },
       "2 1 10 A-RELEASE-RP PDU|\n", ""},
      {"both",
       [](Conversation& talk) {
         talk.Add(0, kFinAck).Send(1, ReleaseReply()).Add(1, kFinAck);
       },
       "2 1 10 A-RELEASE-RP PDU|\n", "3 0 10 A-ABORT PDU|\n"}};
  for (const auto& c : cases) {
    RefreshDicomDecode(host_.Window());
    Conversation talk, next(70000, 90000);
    c.end(talk.Open().Send(0, ReleaseRequest()));
    host_.packets = talk.Packets();
    GiveMore(next.Open().Send(0, Abort(0, 0)).Packets());
    EXPECT_EQ(ListAll(host_, kPduView).Rows(),
              "1 0 10 A-RELEASE-RQ PDU|\n" + c.answer + c.next)
        << c.situation;
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

TEST_F(PluginTest, MessagesRunTenAtATimeWhenTheirTimeIsPast) {
  Conversation talk;
  talk.Open();
  for (std::uint32_t i = 0; i < 8; ++i) talk.Send(i % 2, ReleaseRequest());
  host_.packets = talk.Packets();
  MSG message;
  while (::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
  }
  // Milliseconds that each segment takes: to the first time and past it, to the
  // second and past it, short of the third and past it.
  constexpr DWORD kMilliseconds[] = {2000, 1, 500, 1, 499, 2, 0};
  std::size_t read = 0;
  host_.before_answer = [&](WPARAM code, std::int32_t) {
    if (code == DICOM_FETCH_PACKET) AdvanceTicks(kMilliseconds[read++]);
  };
  std::string when;  // by the segments read
  for (int i = 0; i < 25; ++i) {
    host_.Post([&] { when += std::to_string(read); });
  }
  AdvanceTicks(0xFFFFFF00 - ::GetTickCount());  // they wrap on the way
  List(host_, kPduView, kLive);
  EXPECT_EQ(when, std::string(10, '2') + std::string(10, '4') + "66666");
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
  for (const auto forget : {DicomDeRegisterParent, RefreshDicomDecode}) {
    forget(other.Window());
    host_.TakeRequests();
    other.TakeRequests();
    EXPECT_EQ(LastRow(), 5u);
    EXPECT_EQ(host_.TakeRequests(), "153 153");
    EXPECT_EQ(List(other, kPduView, kLive).last_available, 0u);
    EXPECT_EQ(other.TakeRequests().substr(0, 15), "153 153 151:-1 ");
  }
}

TEST_F(PluginTest, ContextsAreReadOnceFromAllAcceptsThatThereAre) {
  const auto accept = [](std::uint8_t id) {
    return AssociateAccept(AnsweredContext(id, 0, "1.2.840.10008.1.2"));
  };
  const auto send = [](Conversation& talk, std::uint8_t id) {
    talk.Send(0, PData(Pdv(id, kLastCommand, Command(1, 1))))
        .Send(0,
              PData(Pdv(id, kLastData, ImplicitElement(8, 0x80, Text("Ward")))))
        .Acknowledge(1);
  };
  const auto shows_data = [this](std::int32_t row) {
    EXPECT_EQ(Show(host_, row, kMessageView), "");
    return host_.TreeText().find("Value Field: Ward") != std::string::npos;
  };
  Conversation talk;
  talk.Open().Send(0, AssociateRequest({})).Acknowledge(1);
  host_.packets = talk.Packets();
  EXPECT_EQ(LiveRows(), "1 0 74 A-ASSOCIATE-RQ PDU|\n");
  talk.Send(1, accept(1));
  send(talk, 1);
  host_.packets = talk.Packets();
  EXPECT_EQ(List(host_, kMessageView, kLive).Rows(),
            "1 0 44 C-SEND-RQ|Message Id: 1\n");
  EXPECT_TRUE(shows_data(0));
  talk.Send(1, accept(3));
  send(talk, 3);
  host_.packets = talk.Packets();
  List(host_, kMessageView, kLive);
  EXPECT_FALSE(shows_data(1));  // its accept came too late
  LiveRows();
  EXPECT_TRUE(shows_data(0) && shows_data(1));
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
  EXPECT_TRUE(ClearDicomDisplay(0, host_.Tree(), host_.Hex()));
  EXPECT_EQ(host_.TreeCount(), 0u);
  EXPECT_EQ(host_.HexText(), "");
  EXPECT_FALSE(ClearDicomDisplay(0, host_.Tree(), nullptr));
}

TEST_F(PluginTest, OnlyHexDumpSectionsAreExpanded) {
  GiveAndListEcho();
  host_.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, 1u);
  host_.SetState(DICOM_STATE_SECTION_EXPAND_MASK, 0xFFFFFFFF);
  for (std::int32_t row : {0, 1, 2, 5}) {
    EXPECT_EQ(Show(host_, row, kPduView), "");
    const std::string tree = host_.TreeText(kExpansion);
    EXPECT_EQ(tree.find(" expanded "), tree.find(" expanded DICOM Message"));
    EXPECT_EQ(tree.find(" expanded ") != tree.npos, row == 2);
  }
  Show(host_, 0, kMessageView);
  EXPECT_EQ(host_.TreeText(kExpansion).find(" expanded "), std::string::npos);
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
  EXPECT_EQ(List(host_, kMessageView, kStopped).Rows(),
            "0 0 0 |\n1 0 70040 C-SEND-RQ|Message Id: 1\n");
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
  // Turned away: what the host shows meanwhile stays.
  InsertTreeLine({host_.Window(), host_.Tree(), nullptr}, nullptr, "own", 0,
                 nullptr);
  ::SetWindowTextA(host_.Hex(), "own");
  EXPECT_EQ(Show(host_, 0, kPduView), "");
  EXPECT_EQ(host_.TreeText(), "0 [-] own\n");
  EXPECT_EQ(host_.HexText(), "own");

  module_.Reload();
  ListAll(host_, kPduView);
  host_.refused = {3};
  EXPECT_EQ(Show(host_, 0, kPduView), "Unable to get Packet From Tapvane");
  host_.refused.clear();
  EXPECT_EQ(Show(host_, 0, kPduView), "");
  EXPECT_EQ(host_.TreeCount(), 0u);
  EXPECT_EQ(LastRow(), 5u);  // a list is no display
}

}  // namespace
}  // namespace dicom::testing
