#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <set>

#include "tests/clean_feed_walk.h"
#include "tests/wire_builder.h"

namespace host {
namespace {

using dicom::testing::CleanFeedWalk;

std::string Listed(const std::vector<WireRecord>& records) {
  std::string text;
  for (const WireRecord& r : records) {
    if (!r.listed) continue;
    text += std::to_string(r.direction) + " " + std::to_string(r.length) + "\n";
  }
  return text;
}

std::string AllNotes(const Connection& connection) {
  std::string text;
  for (const std::string& note : connection.notes) text += note + "\n";
  return text;
}

// Where in `stream` a PDU begins, or another PDV item of one.
std::set<std::size_t> Starts(const Bytes& stream) {
  std::set<std::size_t> starts;
  for (std::size_t at = 0; at + 6 <= stream.size();) {
    const std::size_t end = at + PduLength(stream.From(at));
    starts.insert(at);
    if (stream[at] == 4) {
      std::size_t item = at + 6;
      while ((item += ItemLength(stream.From(item))) + 6 <= end) {
        starts.insert(item);
      }
    }
    at = end;
  }
  return starts;
}

void ExpectFeedOf(const Connection& connection,
                  const std::array<Bytes, 2>& streams) {
  const CleanFeedWalk walk(*connection.feed);
  EXPECT_EQ(walk.problem, "");
  EXPECT_EQ(walk.streams, streams);
  for (const std::uint32_t side : {0u, 1u}) {
    for (const std::size_t start : Starts(streams[side])) {
      EXPECT_TRUE(walk.begins[side].contains(start)) << start;
    }
  }
}

void ExpectWhole(const Wire& wire, const std::vector<Segment>& segments) {
  const auto connections = Connect(segments);
  ASSERT_EQ(connections.size(), 1u);
  const Connection& c = connections[0];
  EXPECT_EQ(Listed(c.pdus), wire.pdus);
  EXPECT_EQ(Listed(c.messages), wire.messages);
  EXPECT_EQ(AllNotes(c), "");
  EXPECT_TRUE(c.carries_dicom);
  EXPECT_TRUE(c.live);
  EXPECT_EQ(c.payload_bytes, wire.streams[0].size() + wire.streams[1].size());
}

TEST(CleanStreamsTest, AnySegmentSizeGivesTheSameListsAndCleanPackets) {
  for (const std::size_t bytes : {1u, 2u, 5u, 6u, 7u, 11u, 13u, 100u, 511u,
                                  1448u, 9000u, 15956u, 65000u}) {
    SCOPED_TRACE(bytes);
    Wire wire;
    wire.segment_bytes = bytes;
    wire.Association();
    ExpectWhole(wire, wire.segments);
    const auto connections = Connect(wire.segments);
    ExpectFeedOf(connections[0], wire.streams);
  }
}

TEST(CleanStreamsTest, EveryCutPositionGivesTheSameLists) {
  Wire whole;
  whole.segment_bytes = 1 << 20;
  whole.Begin();
  whole.Send(1, AssociateAccept({}));
  whole.SendAll(0,
                {PData(Pdv(kLastCommand, 20)),
                 PData(Pdv(kData, 9) + Pdv(kLastData, 11)), ReleaseRequest()});
  whole.Message(0, 40);
  const Segment joined = whole.segments[whole.segments.size() - 2];
  for (std::size_t cut = 1; cut < joined.payload.size(); ++cut) {
    SCOPED_TRACE(cut);
    std::vector<Segment> segments = whole.segments;
    Segment& tail = segments.end()[-2];  // and in the wrong order
    Segment& head = segments.end()[-1] = joined;
    tail.payload = joined.payload.From(cut);
    head.payload = joined.payload.First(cut);
    tail.sequence += head.payload.Length();
    ExpectWhole(whole, segments);
  }
}

TEST(CleanStreamsTest, WrapsReorderingAndRepeatsChangeNothing) {
  std::mt19937 random(7);
  for (const std::uint32_t first :
       {0u, 0x7FFFFF00u, 0xFFFFFFFEu, 0xFFFFF000u}) {
    SCOPED_TRACE(first);
    Wire wire;
    wire.first_sequence = first;
    wire.second_sequence = first - 30;
    wire.segment_bytes = 300;
    wire.Association();
    std::vector<Segment> mixed, stretch;
    for (const Segment& s : wire.segments) {
      if (!s.payload.empty()) {
        stretch.push_back(s);
        continue;
      }
      // What came from one side is mixed, and some of it comes once more.
      if (!stretch.empty())
        stretch.push_back(stretch[random() % stretch.size()]);
      std::shuffle(stretch.begin(), stretch.end(), random);
      mixed.insert(mixed.end(), stretch.begin(), stretch.end());
      stretch.clear();
      mixed.push_back(s);
    }
    ExpectWhole(wire, mixed);
  }
}

// What is known of a capture's connections from each part of it: index, ends,
// packets and bytes, a line each.
std::set<std::string> ConnectionsOf(const std::vector<TcpFrame>& frames,
                                    HandOver hand_over, CapturePart part) {
  TcpConnections connections(hand_over, std::make_shared<ByteStore>(), {}, {},
                             part);
  for (TcpFrame frame : frames) {
    frame.stored = connections.store().Append(frame.tcp);
    connections.Add(frame);
  }
  connections.Finish();
  std::set<std::string> lines;
  for (const Connection& one : connections.Take()) {
    lines.insert(std::to_string(one.index) + " " + one.first_endpoint + " " +
                 one.second_endpoint + " " +
                 std::to_string(one.captured_packets) + " " +
                 std::to_string(one.payload_bytes));
  }
  return lines;
}

// Nine pairs of ends have four connections each, one behind the other, of which
// some lack their SYN, some their end, and some are reset.
// As clients often are: their ports are even, or lie behind each other.
TEST(CapturePartTest, TakesItsShareOfNeighbouringPorts) {
  constexpr int kClients = 512;
  for (const int step : {1, 2, 4}) {
    for (const std::uint32_t parts : {2u, 8u}) {
      int own = 0;
      for (int i = 0; i < kClients; ++i) {
        Endpoint client = PeerOf(0);
        client.port = static_cast<std::uint16_t>(40000 + i * step);
        if (CapturePart{1, parts}.Holds(PeerOf(1), client)) ++own;
      }
      const int share = kClients / static_cast<int>(parts);
      EXPECT_GT(own, share / 2) << step << " " << parts;
      EXPECT_LT(own, share * 3 / 2) << step << " " << parts;
    }
  }
}

TEST(CapturePartTest, PartsTogetherAreTheWholeWithItsNumbers) {
  std::vector<Bytes> bytes;
  std::vector<TcpFrame> frames;
  for (std::uint32_t round = 0; round < 4; ++round) {
    for (std::uint32_t pair = 0; pair < 9; ++pair) {
      Wire wire;
      wire.first_sequence = 1000 + 77777 * round;
      wire.second_sequence = 900000 * (round + pair);
      wire.Begin();
      if (pair % 3 != 1) wire.Send(1, AssociateAccept({}));
      if (pair % 4 != 2) wire.Close();
      if (pair % 4 == 3) wire.segments.back().flags = kRst;
      if (round == 1 && pair % 2 == 0)
        wire.segments.erase(wire.segments.begin());
      for (const Segment& s : wire.segments) {
        bytes.push_back(s.Tcp());
        TcpFrame frame;
        frame.number = static_cast<std::uint32_t>(bytes.size());
        frame.source = PeerOf(s.direction);
        frame.destination = PeerOf(1 - s.direction);
        Endpoint& client = s.direction == 0 ? frame.source : frame.destination;
        client.port = static_cast<std::uint16_t>(41000 + pair);
        frame.wire_length = bytes.back().Length();
        frame.header = TcpHeader::Parse(bytes.back());
        frames.push_back(frame);
      }
    }
  }
  for (std::size_t i = 0; i < frames.size(); ++i) frames[i].tcp = bytes[i];
  for (const HandOver way : {HandOver::kCleanStreams, HandOver::kAsCaptured}) {
    const auto whole = ConnectionsOf(frames, way, {});
    EXPECT_GE(whole.size(), 27u);
    std::set<std::string> united;
    std::size_t count = 0;
    for (const std::uint32_t part : {0u, 1u, 2u}) {
      const auto own = ConnectionsOf(frames, way, {part, 3});
      EXPECT_FALSE(own.empty());
      count += own.size();
      united.insert(own.begin(), own.end());
    }
    EXPECT_EQ(united, whole);
    EXPECT_EQ(count, whole.size());
  }
}

TEST(CleanStreamsTest, FollowingAGrowingCaptureGivesTheSameInTheEnd) {
  Wire wire;
  wire.segment_bytes = 700;
  wire.Association();
  TcpConnections connections(HandOver::kCleanStreams);
  std::uint32_t number = 0, packets = 0;
  for (const Segment& s : wire.segments) {
    AddSegment(s, ++number, &connections);
    connections.Update();
    const PacketFeed& feed = *connections.at(0).feed;
    ASSERT_GE(feed.PacketCount(), packets);
    packets = feed.PacketCount();
  }
  EXPECT_EQ(Listed(connections.at(0).pdus), wire.pdus);
  EXPECT_TRUE(connections.TakeEnded().empty());
  const auto later = ConnectionBuilder::Clock::now() + std::chrono::seconds(2);
  connections.Update(later);  // it is closed and nothing has come: it is over
  EXPECT_EQ(connections.TakeEnded(),
            std::vector<const Connection*>{&connections.at(0)});
  ExpectFeedOf(connections.at(0), wire.streams);
  connections.Finish();
  const auto all = connections.Take();
  ExpectFeedOf(all[0], wire.streams);
  EXPECT_EQ(Listed(all[0].messages), wire.messages);
}

TEST(CleanStreamsTest, RowsNameTheirFrames) {
  Wire wire;
  wire.segment_bytes = 50;
  wire.Begin();  // frames 1 to 3; 4, 5; acknowledged 6
  wire.Send(0, PData(Pdv(kLastCommand, 100)));    // 7 to 9; 10
  wire.Send(0, PData(Pdv(kLastData, 10)));        // 11; 12
  std::swap(wire.segments[6], wire.segments[8]);  // 7 came last
  const auto connections = Connect(wire.segments);
  const auto& c = connections.at(0);
  const auto frames = [](const std::vector<WireRecord>& records) {
    std::string text;
    for (const WireRecord& r : records) {
      text += std::to_string(r.first_frame) + "-" +
              std::to_string(r.last_frame) + " ";
    }
    return text;
  };
  EXPECT_EQ(frames(c.pdus), "4-5 7-9 11-11 ");
  EXPECT_EQ(c.pdus[0].time, 5'000'000);
  EXPECT_EQ(frames(c.messages), "7-11 ");
  EXPECT_EQ(c.messages[0].length, 110u);
}

// Both directions send at once: the PDU that is complete first comes first.
TEST(CleanStreamsTest, PdusAreOrderedByTheFrameThatCompletesThem) {
  Wire wire;
  wire.segment_bytes = 40;
  wire.Handshake();
  wire.SendRaw(0, AssociateRequest({}));  // frames 4, 5
  wire.SendRaw(1, AssociateAccept({}));   // frames 7, 8
  std::swap(wire.segments[4], wire.segments[7]);
  const auto connections = Connect(wire.segments);
  EXPECT_EQ(Listed(connections[0].pdus), "1 74\n0 74\n");
}

// --- Losses ---

// For each data segment in turn: all PDUs whose header is left are listed.
TEST(CleanStreamsTest, AnyLostSegmentCostsOnlyThePdusWhoseHeaderItHeld) {
  for (const std::size_t bytes : {150u, 1448u}) {
    Wire wire;
    wire.segment_bytes = bytes;
    wire.Association();
    for (std::size_t lost = 3; lost < wire.segments.size(); ++lost) {
      SCOPED_TRACE(lost);
      const Segment gone = wire.segments[lost];
      if (gone.payload.empty()) continue;
      std::vector<Segment> rest = wire.segments;
      rest.erase(rest.begin() + static_cast<int>(lost));
      const auto connections = Connect(rest);
      ASSERT_EQ(connections.size(), 1u);

      const std::size_t from =
          gone.sequence - 1 -
          (gone.direction == 0 ? wire.first_sequence : wire.second_sequence);
      const std::size_t to = from + gone.payload.size();
      std::string expected[2], found[2];
      for (const std::uint32_t side : {0u, 1u}) {
        for (std::size_t at = 0; at < wire.streams[side].size();) {
          const std::size_t length = PduLength(wire.streams[side].From(at));
          const bool header_lost =
              side == gone.direction && at < to && at + 6 > from;
          if (!header_lost) expected[side] += std::to_string(length) + "\n";
          at += length;
        }
      }
      for (const WireRecord& r : connections[0].pdus) {
        found[r.direction] += std::to_string(r.length) + "\n";
      }
      EXPECT_EQ(found[0], expected[0]);
      EXPECT_EQ(found[1], expected[1]);
      EXPECT_NE(AllNotes(connections[0]), "");
    }
  }
}

TEST(CleanStreamsTest, LostItemHeaderCostsNoOtherMessage) {
  Wire wire;
  wire.segment_bytes = 1 << 20;
  wire.Begin();
  wire.segment_bytes = 60;
  // The second item's header is at 6 + 6 + 100 = 112, in the second segment.
  wire.Send(0, PData(Pdv(kLastCommand, 100) + Pdv(kLastData, 200)));
  wire.Send(0, PData(Pdv(kLastCommand, 44)));
  wire.Message(0, 300);
  wire.Message(0, 44);
  wire.segments.erase(wire.segments.begin() + 6);
  const auto connections = Connect(wire.segments);
  EXPECT_EQ(Listed(connections[0].pdus), wire.pdus);
  EXPECT_EQ(Listed(connections[0].messages), wire.messages);
  EXPECT_EQ(AllNotes(connections[0]),
            "60 lost bytes were filled with zero in 1 PDU from "
            "192.0.2.1:41000.\n");
  EXPECT_EQ(PacketOf(*connections[0].feed, 7).tcp_bytes.Part(20, 6),
            Big32(202) + Bytes({1, kLastData}));  // up to the PDU's end
}

TEST(CleanStreamsTest, SnapLengthCutsAreHoles) {
  Wire wire;
  wire.segment_bytes = 1000;
  wire.Begin();
  wire.Send(0, PData(Pdv(kLastCommand, 500)));
  wire.Send(0, PData(Pdv(kLastData, 5000)));
  wire.Message(0, 5500);
  wire.Send(0, ReleaseRequest());
  for (Segment& s : wire.segments) {
    s.cut = s.payload.Length();
    s.payload = s.payload.First(100);
    s.cut -= s.payload.Length();
  }
  const auto connections = Connect(wire.segments);
  EXPECT_EQ(Listed(connections[0].pdus), wire.pdus);
  EXPECT_EQ(Listed(connections[0].messages), wire.messages);
  EXPECT_EQ(connections[0].pdus[1].note,
            "412 lost bytes were filled with zero");
  EXPECT_EQ(connections[0].messages[0].note,  // 5 segments lack 900 each
            "4,912 lost bytes were filled with zero");
}

TEST(CleanStreamsTest, ACaptureFromTheMiddleBeginsWithTheFirstWholePdu) {
  Wire wire;
  wire.segment_bytes = 100;
  wire.Association();
  // Without handshake, request and the first 300 bytes of the first message's
  // data set; the data PDVs belong to a message that was not seen to begin.
  std::vector<Segment> rest(wire.segments.begin() + 12, wire.segments.end());
  const auto connections = Connect(rest);
  const auto& c = connections.at(0);
  EXPECT_EQ(Listed(c.pdus), wire.pdus.substr(wire.pdus.find("0 2012")));
  EXPECT_EQ(Listed(c.messages),
            wire.messages.substr(wire.messages.find("1 70")));
  EXPECT_TRUE(c.carries_dicom);
  EXPECT_NE(c.pdus[0].note.find("before it in no whole PDU"),
            std::string::npos);
}

TEST(CleanStreamsTest, BrokenOffPduIsToldWithItsSize) {
  Wire wire;
  wire.Begin();
  const Bytes pdu = PData(Pdv(kLastData, 16378));
  ASSERT_EQ(pdu.size(), 16390u);
  wire.SendRaw(0, pdu.First(812));
  const auto connections = Connect(wire.segments);
  EXPECT_EQ(Listed(connections[0].pdus), "0 74\n");
  EXPECT_EQ(AllNotes(connections[0]),
            "The capture ends inside a P-DATA-TF PDU from 192.0.2.1:41000: 812 "
            "of 16,390 bytes.\n");
}

// Three segments of one byte, almost 64 MiB apart, are no reason to make
// gigabytes of zeros.
TEST(CleanStreamsTest, AFewBytesFarApartAreNotFilled) {
  Wire wire;
  wire.Begin();
  wire.SendRaw(0, Bytes{4, 0, 0x0F, 0, 0, 0});  // 240 MiB
  for (std::uint32_t i = 1; i < 6; ++i) {
    Segment s = wire.segments[5];
    s.payload = {1};
    s.sequence += i * ((60u << 20) + 1);
    wire.segments.push_back(s);
  }
  const auto connections = Connect(wire.segments);
  EXPECT_EQ(Listed(connections[0].pdus), "0 74\n");
  EXPECT_LT(connections[0].feed->PacketCount(), 20u);
}

// --- What the wire may hold ---

TEST(CleanStreamsTest, PdusOfOddShapeKeepTheModuleInStep) {
  struct Case {
    const char* what;
    Bytes pdu;
    bool listed;
    std::string messages;  // of the command before and the one after it
  };
  const std::string both = "0 10\n0 12\n";
  const Case cases[] = {
      {"no item", PData({}), true, both},
      {"too short for an item", PData({1, 2, 3}), false, both},
      {"item without value", PData(Pdv(kLastData, 0)), true, both},
      {"data goes on into the next command", PData(Pdv(kData, 9)), true,
       "0 10\n0 31\n"},
      {"command without value", PData(Pdv(kLastCommand, 0)), true, both},
      {"five bytes left over", PData(Pdv(kLastCommand, 8) + Bytes(5, 0)), true,
       "0 10\n0 8\n0 12\n"},
      {"the same, alone in a packet",
       PData(Pdv(kLastCommand, 15944) + Bytes(3, 0)), true,
       "0 10\n0 15944\n0 12\n"},
      {"unknown type", Pdu(9, Bytes(30, 4)), true, both},
      {"unknown type, long", Pdu(0x80, Bytes(40000, 4)), true, both},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Wire wire;
    wire.Begin();
    wire.Send(0, PData(Pdv(kLastCommand, 10)));
    if (c.listed) {
      wire.Send(0, c.pdu);
    } else {
      wire.SendRaw(0, c.pdu);
      wire.streams[0] =
          wire.streams[0].First(wire.streams[0].size() - c.pdu.size());
    }
    wire.Send(0, PData(Pdv(kLastCommand, 12)));
    if (!c.listed) {  // its numbers count the PDU that is left out
      wire.segments.end()[-2].sequence += c.pdu.Length();
    }
    const auto connections = Connect(wire.segments);
    EXPECT_EQ(Listed(connections[0].pdus), wire.pdus);
    EXPECT_EQ(Listed(connections[0].messages), c.messages);
    EXPECT_EQ(connections[0].notes.empty(), c.listed);
    ExpectFeedOf(connections[0], wire.streams);
  }
}

TEST(CleanStreamsTest, AMessageWithoutItsEndKeepsTheCommandLength) {
  Wire wire;
  wire.Begin();
  wire.Send(0, PData(Pdv(kLastCommand, 10)));
  wire.Send(0, PData(Pdv(kData, 500)));
  wire.Send(0, PData(Pdv(kLastData, 0)));
  const auto connections = Connect(wire.segments);
  EXPECT_EQ(Listed(connections[0].messages), "0 10\n");
  EXPECT_EQ(connections[0].messages[0].note,
            "the last data PDV is empty or missing: 500 bytes of the data set "
            "are not counted");
}

TEST(CleanStreamsTest, StreamsThatAreNoDicomAreNamed) {
  const std::pair<Bytes, std::string> cases[] = {
      {{0x16, 3, 1, 2, 0, 1, 0, 1}, "TLS"},
      {dicom::testing::Text("GET / HT"), "HTTP"}};
  for (const auto& [bytes, protocol] : cases) {
    Wire wire;
    wire.Handshake();
    wire.SendRaw(0, bytes);
    const auto connections = Connect(wire.segments);
    EXPECT_FALSE(connections[0].carries_dicom);
    EXPECT_EQ(Listed(connections[0].pdus), "");
    EXPECT_EQ(AllNotes(connections[0]),
              "The stream from 192.0.2.1:41000 is no DICOM (it looks like " +
                  protocol + ").\n");
  }
}

// --- Connections ---

TEST(CleanStreamsTest, ASynWithANewNumberBeginsAnotherConnection) {
  Wire first, second;
  first.Association();
  second.first_sequence = 90000;
  second.second_sequence = 70;
  second.segment_bytes = 11;
  second.Association();
  std::vector<Segment> all = first.segments;
  all.insert(all.begin() + 1, first.segments[0]);  // SYN again: the same one
  all.insert(all.end(), second.segments.begin(), second.segments.end());
  auto connections = Connect(all);
  ASSERT_EQ(connections.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    const Wire& wire = i == 0 ? first : second;
    EXPECT_EQ(Listed(connections[i].pdus), wire.pdus);
    EXPECT_EQ(Listed(connections[i].messages), wire.messages);
    ExpectFeedOf(connections[i], wire.streams);
  }
  // The one before it has ended, though the capture goes on.
  TcpConnections growing(HandOver::kCleanStreams);
  std::uint32_t number = 0;
  for (auto s = first.segments.begin(); s != first.segments.end() - 2; ++s) {
    AddSegment(*s, ++number, &growing);
  }
  AddSegment(second.segments[0], ++number, &growing);
  EXPECT_EQ(CleanFeedWalk(*growing.at(0).feed).problem, "");
  // The second one's SYN not captured: its answer's number tells.
  all.erase(all.begin() + static_cast<int>(first.segments.size()) + 1);
  connections = Connect(all);
  ASSERT_EQ(connections.size(), 2u);
  EXPECT_EQ(connections[1].pdus.size(), 13u);
  EXPECT_EQ(connections[1].first_endpoint, "192.0.2.2:104");
  ExpectFeedOf(connections[1], {second.streams[1], second.streams[0]});
}

TEST(CleanStreamsTest, TheAnswerTellsWhoOpenedTheConnection) {
  Wire wire;
  wire.Handshake();
  wire.Send(0, PData(Pdv(kLastCommand, 40)));
  wire.Send(0, ReleaseRequest());
  wire.segments.erase(wire.segments.begin());  // so the answer comes first
  const auto connections = Connect(wire.segments);
  EXPECT_EQ(Listed(connections.at(0).pdus), "1 52\n1 10\n");
  EXPECT_EQ(PacketOf(*connections[0].feed, 0).direction, 1u);
}

TEST(CleanStreamsTest, BytesThatCannotBelongAreIgnored) {
  Wire wire;
  wire.Association();
  const Segment data = wire.segments[5];
  ASSERT_FALSE(data.payload.empty());
  const int end = static_cast<int>(wire.segments.size());
  const std::uint32_t behind_fin = wire.segments.back().sequence;
  const struct {
    const char* what;
    std::function<void(Segment&)> change;
    int at;
    std::size_t notes;
  } cases[] = {
      {"the payload of a reset, which is told itself",
       [](Segment& s) { s.flags |= kRst, s.payload.assign(9, 0); }, 5, 1},
      {"before the first byte",
       [](Segment& s) { s.sequence -= 50, s.payload.resize(50); }, 5, 0},
      {"far ahead", [](Segment& s) { s.sequence += 65u << 20; }, 5, 0},
      {"behind the FIN",
       [&](Segment& s) { s.direction = 1, s.sequence = behind_fin; }, end, 0},
      // The first copy is kept.
      {"another content under the same numbers",
       [](Segment& s) { s.payload.assign(20, 0xEE); }, 6, 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Segment changed = data;
    c.change(changed);
    std::vector<Segment> all = wire.segments;
    all.insert(all.begin() + c.at, changed);
    const auto connections = Connect(all);
    ASSERT_EQ(connections.size(), 1u);
    EXPECT_EQ(Listed(connections[0].pdus), wire.pdus);
    EXPECT_EQ(connections[0].notes.size(), c.notes);
  }
}

}  // namespace
}  // namespace host
