#include <gtest/gtest.h>

#include <random>

#include "host/streams/ae_titles.h"
#include "host/streams/dimse_status.h"
#include "host/streams/pdu_header.h"
#include "host/streams/stream_assembler.h"
#include "tests/wire_builder.h"

namespace host {
namespace {

TEST(CapturedConnectionTest, PacketsStayAsTheyAreUnlessTooLong) {
  Wire wire;
  wire.segment_bytes = 40000;
  wire.first_sequence = 0xFFFFFFF0;
  wire.Handshake();
  wire.SendRaw(0, Bytes(40000, 0x41));
  wire.segments[3].flags |= kFin | kPush;
  const auto connections = Connect(wire.segments, HandOver::kAsCaptured);
  const PacketFeed& feed = *connections[0].feed;
  ASSERT_EQ(feed.PacketCount(), 3u + 3 + 1);
  EXPECT_FALSE(connections[0].live);
  Bytes packet, joined;
  std::uint32_t sequence = wire.segments[3].sequence;
  for (std::uint32_t i = 3; i < 6; ++i) {
    packet = PacketOf(feed, i).tcp_bytes;
    const TcpHeader header = TcpHeader::Parse(packet).value();
    EXPECT_EQ(header.sequence, sequence);
    EXPECT_EQ(header.flags, i == 5 ? kAck | kFin | kPush : +kAck);
    joined += packet.From(20);
    sequence += packet.Length() - 20;
  }
  EXPECT_EQ(joined, wire.streams[0]);
  EXPECT_EQ(PacketOf(feed, 6).tcp_bytes, wire.segments[4].Tcp());
  EXPECT_EQ(PacketOf(feed, 6).direction, 1u);
}

TEST(CapturedConnectionTest, ASynOnAClosedPairBeginsAnotherConnection) {
  Wire first, second;
  first.Association();
  second.first_sequence = 77;
  second.Association();
  auto both = [&](std::vector<Segment> segments) {
    segments.insert(segments.end(), second.segments.begin(),
                    second.segments.end());
    return Connect(segments, HandOver::kAsCaptured).size();
  };
  EXPECT_EQ(both(first.segments), 2u);
  std::vector<Segment> open = first.segments;
  open.resize(open.size() - 2);
  EXPECT_EQ(both(open), 1u);
  open.push_back(open.back());
  open.back().flags |= kRst;
  EXPECT_EQ(both(open), 2u);
}

// Random segments against a plain array of bytes.
TEST(StreamAssemblerTest, AgreesWithAPlainArray) {
  std::mt19937 random(3);
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    const auto store = std::make_shared<ByteStore>();
    StreamAssembler stream(store);
    const std::uint32_t base = 0xFFFFFF00u + static_cast<std::uint32_t>(round);
    stream.Begin(base);
    Bytes bytes(600, 0);
    std::vector<std::uint32_t> frames(600, 0);
    std::size_t end = 0;
    for (std::uint32_t i = 1; i < 30; ++i) {
      const std::size_t at = random() % 550, count = 1 + random() % 50;
      Bytes payload(count);
      for (auto& b : payload) b = static_cast<std::uint8_t>(random());
      stream.Add(base + static_cast<std::uint32_t>(at), payload,
                 static_cast<std::uint32_t>(count),
                 {store->Append(payload), i, i});
      for (std::size_t k = 0; k < count; ++k) {
        if (frames[at + k] != 0) continue;
        frames[at + k] = i;
        bytes[at + k] = payload[k];
      }
      end = std::max(end, at + count);
    }
    ASSERT_EQ(stream.end(), static_cast<StreamPosition>(end));
    Bytes copy(end);
    stream.Copy(0, copy);
    EXPECT_TRUE(std::equal(copy.begin(), copy.end(), bytes.begin()));
    for (std::size_t at = 0; at < end; ++at) {
      std::size_t missing = at, present = at;
      while (missing < end && frames[missing] != 0) ++missing;
      while (present < end && frames[present] == 0) ++present;
      const auto position = static_cast<StreamPosition>(at);
      ASSERT_EQ(stream.PresentUntil(position),
                static_cast<StreamPosition>(missing));
      ASSERT_EQ(stream.NextPresent(position),
                static_cast<StreamPosition>(present));
      const auto to = std::min(end, at + 40);
      const auto first = frames.begin() + static_cast<int>(at);
      const auto last = frames.begin() + static_cast<int>(to);
      ASSERT_EQ(stream.Frames(position, static_cast<StreamPosition>(to)).last,
                *std::max_element(first, last));
      ASSERT_EQ(stream.PresentBytes(position, static_cast<StreamPosition>(to)),
                static_cast<std::uint64_t>(
                    std::count_if(first, last, [](auto f) { return f != 0; })));
    }
  }
}

class OnePacketFeed final : public PacketFeed {
 public:
  explicit OnePacketFeed(std::string packet) : packet_(std::move(packet)) {}
  std::uint32_t PacketCount() const override { return 2; }
  CopiedPacket CopyPacket(std::uint32_t number,
                          PacketRoom room) const override {
    const std::string packet = number == 1 ? packet_ : packet_.substr(0, 20);
    std::copy(packet.begin(), packet.end(), room.begin());
    return {static_cast<std::uint32_t>(packet.size()), number};
  }

 private:
  std::string packet_;
};

TEST(PduHeaderTest, TellsWhichLengthsATypeMayHave) {
  const struct {
    PduType type;
    std::uint32_t least, most;
  } kLengths[] = {{kAssociateRq, 68, 1u << 24},
                  {kAssociateAc, 68, 1u << 24},
                  {kPDataTf, 6, 1u << 29},
                  {kAssociateRj, 4, 4},
                  {kReleaseRq, 4, 4},
                  {kReleaseRp, 4, 4},
                  {kAbort, 4, 4}};
  for (const auto& [type, least, most] : kLengths) {
    SCOPED_TRACE(static_cast<int>(type));
    for (const std::uint32_t length : {least - 1, least, most, most + 1}) {
      EXPECT_EQ((PduHeader{type, 0, length}.HasPossibleLength()),
                length == least || length == most)
          << length;
    }
  }
  EXPECT_FALSE((PduHeader{8, 0, 4}.HasPossibleLength()));
}

TEST(AeTitlesTest, TitlesComeFromTheFirstAssociateRequest) {
  std::string packet(20, '\0');
  packet[12] = 0x50;  // data offset 20
  packet += std::string("\x01\x00\x00\x00\x00\xC8\x00\x01\x00\x00", 10);
  packet += "ARCHIVE         CT 1            ";
  const auto titles = FindAeTitles(OnePacketFeed(packet));
  ASSERT_TRUE(titles);
  EXPECT_EQ(titles->called, "ARCHIVE");
  EXPECT_EQ(titles->calling, "CT 1");
  EXPECT_EQ(titles->caller_direction, 1U);
  packet[20] = '\x04';
  EXPECT_FALSE(FindAeTitles(OnePacketFeed(packet)));
  packet[12] = '\xF0';  // claims more header than there is
  EXPECT_FALSE(FindAeTitles(OnePacketFeed(packet.substr(0, 20))));
}

TEST(DimseStatusTest, IsFoundBehindOtherElements) {
  const std::vector<std::uint8_t> command = {
      0x00, 0x00, 0x00, 0x01, 0x02, 0x00, 0x00, 0x00, 0x01, 0x80,   // command
      0x00, 0x00, 0x00, 0x09, 0x02, 0x00, 0x00, 0x00, 0x00, 0xA7};  // status
  EXPECT_EQ(FindStatus(command), 0xA700);
  EXPECT_EQ(StatusNote(0xA700), "status A700h, a failure");
  EXPECT_EQ(StatusNote(0xFF00), "");
  for (std::size_t cut = 0; cut < command.size(); ++cut) {
    EXPECT_FALSE(FindStatus(std::span(command).first(cut))) << cut;
  }
}

}  // namespace
}  // namespace host
