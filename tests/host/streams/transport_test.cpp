#include <gtest/gtest.h>

#include <string>

#include "tests/wire_builder.h"

namespace host {
namespace {

// Packets with a time and an IP identification of their own.
class Tape {
 public:
  // Milliseconds from the packet before to the next one.
  Tape& After(int milliseconds) {
    time_ += Nanoseconds{milliseconds} * 1'000'000;
    return *this;
  }
  Tape& Add(const Segment& segment, std::uint16_t window = 1000) {
    ++identification_;
    last_ = segment.Tcp()
                .Patched(14, Big16(window))
                .Patched(16, Big16(identification_));  // for a checksum
    last_direction_ = segment.direction;
    return Again();
  }
  // The same packet once more, as a mirror port makes it.
  Tape& Again() {
    TcpFrame frame{++number_,
                   time_,
                   PeerOf(last_direction_),
                   PeerOf(1 - last_direction_),
                   last_,
                   last_.Length(),
                   TcpHeader::Parse(last_)};
    frame.ip_identification = identification_;
    frame.stored = connections_.store().Append(last_);
    connections_.Add(frame);
    return *this;
  }
  TransportFacts Facts() {
    connections_.Finish();
    return connections_.at(0).transport;
  }

 private:
  TcpConnections connections_{HandOver::kCleanStreams};
  std::uint32_t number_ = 0;
  Nanoseconds time_ = 0;
  std::uint16_t identification_ = 0;
  Bytes last_;
  std::uint32_t last_direction_ = 0;
};

TEST(TransportWatchTest, TellsRepeatedDoubledOvertakenAndLostPacketsApart) {
  const Bytes hundred(100, 'x');
  Tape tape;
  tape.Add({0, 1000, 0, kSyn}).Add({1, 5000, 1001, kSyn | kAck});  // 1, 2
  tape.Add({0, 1001, 5001, kAck});                                 // 3
  tape.Add({0, 1001, 5001, kAck, hundred}).Again();                // doubled
  tape.Add({0, 1201, 5001, kAck, hundred});  // 6 overtakes 7
  tape.After(1).Add({0, 1101, 5001, kAck, hundred});
  tape.After(400).Add({0, 1201, 5001, kAck, hundred});  // 8: sent again
  tape.After(1).Add({1, 5001, 1301, kAck}, 0);          // 9: cannot take more
  tape.After(2000).Add({0, 1300, 5001, kAck, Bytes(1, 'x')});  // probes
  tape.Add({1, 5001, 1301, kAck});                             // 11
  // 1301 to 1400 are acknowledged and were never captured.
  tape.Add({0, 1401, 5001, kAck, hundred}).Add({1, 5001, 1501, kAck});
  tape.After(60'000).Add({1, 5001, 1501, kRst | kAck});  // 14
  const TransportFacts facts = tape.Facts();
  const SideFacts& zero = facts.sides[0];
  const SideFacts& one = facts.sides[1];
  EXPECT_EQ(facts.opener, 0u);
  EXPECT_EQ(zero.duplicates, 1u);
  EXPECT_EQ(zero.retransmissions, 1u);
  EXPECT_EQ(zero.retransmission_wait, 400'000'000);
  EXPECT_EQ(zero.lost_bytes, 100u);
  EXPECT_EQ(zero.payload_packets, 6u);
  EXPECT_EQ(zero.last_payload->frame, 12u);
  EXPECT_EQ(one.zero_windows, 1u);
  EXPECT_EQ(one.zero_window_time, 2'000'000'000);
  EXPECT_EQ(one.rst->frame, 14u);
  EXPECT_EQ(one.unheard, 2u);
  EXPECT_EQ(facts.silence.duration, 60'000'000'000);
  EXPECT_EQ(facts.silence.from_frame, 13u);
}

TEST(TransportWatchTest, ReadsWhatTlsSaysInTheClear) {
  const auto vector16 = [](const Bytes& b) { return Big16(b.Length()) + b; };
  const std::string name = "pacs.example";
  const Bytes host =
      vector16(Bytes{0} + vector16(Bytes(name.begin(), name.end())));
  const Bytes versions{6, 0xFA, 0xFA, 3, 4, 3, 3};  // the first is grease
  const Bytes extensions = Big16(0) + vector16(host) + Big16(43) +
                           vector16(versions) + Big16(99) + vector16({});
  const Bytes hello = Bytes{3, 3} + Bytes(32, 7) + Bytes{0} +
                      vector16({0x13, 1}) + Bytes{1, 0} + vector16(extensions);
  const Bytes record =
      Bytes{22, 3, 1} + vector16(Bytes{1, 0} + vector16(hello));
  for (std::size_t n = 0; n < record.size(); ++n) {  // any cut is harmless
    Tape cut;
    cut.Add({0, 1, 1, kAck, record.First(n)});
    EXPECT_EQ(cut.Facts().sides[0].tls.has_value(), n >= 5) << n;
  }
  Tape tape;
  tape.Add({0, 1, 1, kAck, record});
  tape.Add({1, 1, 1, kAck, Bytes{21, 3, 3, 0, 2, 2, 48}});
  const TransportFacts facts = tape.Facts();
  ASSERT_TRUE(facts.sides[0].tls && facts.sides[1].tls);
  EXPECT_EQ(facts.sides[0].tls->version, 0x0304);
  EXPECT_EQ(facts.sides[0].tls->server_name, name);
  EXPECT_FALSE(facts.sides[1].tls->hello);
  EXPECT_EQ(facts.sides[1].tls->alert->description, 48);
}

}  // namespace
}  // namespace host
