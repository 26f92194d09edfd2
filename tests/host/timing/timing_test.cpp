#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "host/dialogue/dialogue_reader.h"
#include "host/findings/findings.h"
#include "host/findings/story.h"
#include "host/streams/capture_loader.h"
#include "host/timing/connection_timing.h"
#include "tests/wire_builder.h"

namespace host {
namespace {

using dicom::testing::ImplicitElement;
using dicom::testing::Little16;

constexpr Nanoseconds kMillisecond = 1'000'000;

// Two peers, of which every packet has its time.
class Play {
 public:
  // From the packet before to the next one, in milliseconds.
  Play& After(int milliseconds) {
    time_ += milliseconds * kMillisecond;
    return *this;
  }
  Play& Send(std::uint32_t direction, const Bytes& payload,
             std::uint8_t flags = kAck) {
    return Add(
        {direction, next_[direction], next_[1 - direction], flags, payload});
  }
  Play& Again(std::uint32_t direction, const Bytes& payload) {
    next_[direction] -= payload.Length();
    return Send(direction, payload);
  }
  Play& Acknowledge(std::uint32_t direction, std::uint16_t window = 8000) {
    window_ = window;
    return Send(direction, {});
  }
  // So many milliseconds to the acceptor and back.
  Play& Associate(int trip = 1) {
    Send(0, {}, kSyn).After(trip).Send(1, {}, kSyn | kAck).Send(0, {});
    return After(2).Negotiate(trip + 2);
  }
  Play& Negotiate(int milliseconds) {
    Send(0, AssociateRequest({}));
    return After(milliseconds).Send(1, AssociateAccept({}));
  }
  Play& Release(int milliseconds) {
    return After(5)
        .Send(0, ReleaseRequest())
        .After(milliseconds)
        .Send(1, ReleaseReply());
  }
  Play& Release() { return Release(1).After(2).Send(0, {}, kFin | kAck); }
  std::vector<Connection> Finish() {
    connections_.Finish();
    return connections_.Take();
  }

 private:
  Play& Add(const Segment& segment) {
    const Bytes tcp = segment.Tcp().Patched(14, Big16(window_));
    window_ = 8000;
    connections_.Add({++frame_, time_, PeerOf(segment.direction),
                      PeerOf(1 - segment.direction), tcp, tcp.Length(),
                      TcpHeader::Parse(tcp), connections_.store().Append(tcp)});
    const bool counts = (segment.flags & (kSyn | kFin)) != 0;
    next_[segment.direction] = std::max(
        next_[segment.direction],
        segment.sequence + segment.payload.Length() + (counts ? 1u : 0u));
    return *this;
  }

  TcpConnections connections_{HandOver::kCleanStreams,
                              std::make_shared<ByteStore>(), ReadDialogues()};
  std::array<std::uint32_t, 2> next_{1000, 5000};
  std::uint32_t frame_ = 0;
  Nanoseconds time_ = 1'700'000'000'000 * kMillisecond;
  std::uint16_t window_ = 8000;
};

Bytes Command(std::uint16_t field, std::uint16_t id, bool has_data,
              std::uint16_t status = 0) {
  const auto number = [](std::uint16_t element, std::uint16_t value) {
    return ImplicitElement(0, element, Little16(value));
  };
  return PData(dicom::testing::Pdv(
      1, kLastCommand,
      dicom::testing::CommandSet(
          number(0x0100, field) + number(field < 0x8000 ? 0x0110 : 0x0120, id) +
          number(0x0800, has_data ? 1 : 0x0101) +
          (field < 0x8000 ? Bytes{} : number(0x0900, status)))));
}
const Bytes kEcho = Command(0x0030, 1, false);
const Bytes kEchoed = Command(0x8030, 1, false);
const Bytes kStore = Command(0x0001, 2, true);
const Bytes kStored = Command(0x8001, 2, false);
const Bytes kMove = Command(0x0021, 3, false);
const Bytes kMoving = Command(0x8021, 3, false, 0xFF00);
const Bytes kMoved = Command(0x8021, 3, false);
Bytes Object(std::size_t bytes) { return PData(Pdv(kLastData, bytes)); }

// "connecting network 1000" a span, times in microseconds.
std::string Spans(const AssociationTiming& times) {
  std::string text;
  for (const TimeSpan& span : times.spans) {
    text += std::string(PartSlug(span.part)) + " " +
            std::string(OwnerText(span.owner)) + " " +
            std::to_string(span.Length()) + "\n";
  }
  return text;
}

AssociationTiming TimesOf(Play& play) {
  const auto connections = play.Finish();
  return TimeConnection(connections.at(0)).associations.at(0);
}

// Every microsecond is in one span, and every sum is exact.
void ExpectWhole(const Connection& connection) {
  const ConnectionTiming timing = TimeConnection(connection);
  Microseconds at = 0;
  for (const AssociationTiming& times : timing.associations) {
    ASSERT_EQ(times.begin, at);
    Microseconds sum = 0;
    for (const TimeSpan& span : times.spans) {
      ASSERT_EQ(span.begin, at);
      ASSERT_GT(span.end, at);
      at = span.end;
    }
    for (std::size_t part = 0; part < kTimeParts; ++part) {
      sum += times.sums.Of(static_cast<TimePart>(part));
    }
    ASSERT_EQ(at, times.end);
    ASSERT_EQ(sum, times.Duration());
  }
  if (!timing.associations.empty()) {
    ASSERT_EQ(at, timing.Since(connection.transfer.last));
  }
  const Dialogue* const dialogue = DialogueOf(connection);
  for (std::size_t i = 0; i < timing.messages.size(); ++i) {
    const MessageTiming& message = timing.messages[i];
    ASSERT_GE(message.Duration(), 0);
    ASSERT_GE(message.answered_after.value_or(0), 0);
    ASSERT_GE(message.whole.value_or(0), 0);
    ASSERT_LE(message.first.frame, message.last.frame);
    ASSERT_GE(message.last.time, connection.transfer.first);
    ASSERT_EQ(message.last.frame, dialogue->messages[i].last_frame);
  }
}

TEST(TimingTest, EveryMicrosecondOfTheSamplesIsInOnePart) {
  int associations = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(SOURCE_DIR "/samples")) {
    if (entry.path().extension() == ".md") continue;
    SCOPED_TRACE(entry.path().string());
    CaptureLoader loader(entry.path(), {.observe = ReadDialogues()});
    loader.Read([] { return false; });
    for (const Connection& connection : loader.connections().Take()) {
      ExpectWhole(connection);
      associations +=
          static_cast<int>(TimeConnection(connection).associations.size());
    }
  }
  EXPECT_GT(associations, 0);
}

TEST(TimingTest, SmallPacketsThatWaitForAnAcknowledgementAreTheirSenders) {
  Play play;
  play.Associate().After(10).Send(0, kEcho).After(20).Send(1, kEchoed);
  play.After(30).Send(0, kStore).After(41).Acknowledge(1);
  play.Send(0, Object(100)).After(21).Send(1, kStored).Release();
  const AssociationTiming times = TimesOf(play);
  EXPECT_EQ(Spans(times),
            "connecting network 1000\n"
            "negotiating requestor 2000\n"
            "negotiating network 1000\n"  // the way there and back
            "negotiating acceptor 2000\n"
            "preparing requestor 10000\n"
            "transferring network 1000\n"
            "thinking acceptor 19000\n"
            "preparing requestor 30000\n"
            "held_back requestor 41000\n"
            "transferring network 1000\n"
            "thinking acceptor 20000\n"
            "idle requestor 5000\n"
            "releasing network 1000\n"
            "releasing requestor 2000\n");
  EXPECT_EQ(times.held_back[0].count, 1u);
  EXPECT_EQ(times.held_back[0].delayed, 1u);

  // At once, though nothing is acknowledged yet: nothing is held back.
  Play no_delay;
  no_delay.Associate().After(30).Send(0, kStore).Send(0, Object(100));
  no_delay.After(41).Acknowledge(1).Send(0, kEcho).After(20).Send(1, kEchoed);
  no_delay.Send(1, kStored).Release();
  EXPECT_EQ(TimesOf(no_delay).sums.Of(TimePart::kHeldBack), 0);
}

TEST(TimingTest, TheWayToAFarSideIsNobodysTime) {
  Play play;  // captured at the acceptor, 50 ms from the requestor
  play.Send(0, {}, kSyn).Send(1, {}, kSyn | kAck).After(50).Send(0, {});
  play.After(2).Send(0, AssociateRequest({})).After(3);
  play.Send(1, AssociateAccept({})).After(60).Send(0, kStore);
  // On its way already when the acknowledgement left: not held back.
  play.After(43).Acknowledge(1).After(2).Send(0, Object(100));
  play.After(20).Send(1, kStored).After(55).Send(0, ReleaseRequest());
  play.After(1).Send(1, ReleaseReply()).After(52).Send(0, {}, kFin | kAck);
  play.After(4).Send(1, {}, kFin | kAck).After(50).Acknowledge(0);
  EXPECT_EQ(Spans(TimesOf(play)),
            "connecting network 50000\n"
            "negotiating requestor 2000\n"
            "negotiating acceptor 3000\n"
            "transferring network 50000\n"
            "preparing requestor 10000\n"
            "transferring network 45000\n"
            "thinking acceptor 20000\n"
            "transferring network 50000\n"
            "idle requestor 5000\n"
            "releasing acceptor 1000\n"
            "releasing network 50000\n"
            "releasing requestor 2000\n"
            "releasing acceptor 4000\n"
            "releasing network 50000\n");
}

TEST(TimingTest, WhatTcpWaitsForBelongsToItsCause) {
  const Bytes object = Object(3000);
  const Bytes parts[] = {object.First(1000), object.Part(1000, 1000),
                         object.From(2000)};
  Play play;
  play.Associate().After(10).Send(0, kStore).Send(0, parts[0]);
  play.After(2).Acknowledge(1, 0).After(700).Acknowledge(1);  // did not read
  play.Send(0, parts[1]).After(200).Again(0, parts[1]);       // was lost
  play.After(1).Acknowledge(1).After(50).Send(0, parts[2]);   // was not ready
  play.After(21).Send(1, kStored).Release();
  const auto connections = play.Finish();
  EXPECT_EQ(Spans(TimeConnection(connections.at(0)).associations.at(0)),
            "connecting network 1000\n"
            "negotiating requestor 2000\n"
            "negotiating network 1000\n"
            "negotiating acceptor 2000\n"
            "preparing requestor 10000\n"
            "transferring network 2000\n"
            "zero_window acceptor 700000\n"
            "loss_recovery network 201000\n"
            "preparing requestor 50000\n"
            "transferring network 1000\n"
            "thinking acceptor 20000\n"
            "idle requestor 5000\n"
            "releasing network 1000\n"
            "releasing requestor 2000\n");
  const FlowFacts& flow = connections[0].transfer.flows[0];
  EXPECT_EQ(flow.timed_out, 1u);
  EXPECT_EQ(connections[0].transfer.flows[1].zero_windows, 1u);
}

// What cost the time, and a part of how it is said.
struct CostCase {
  const char* slug;
  const char* sentence;
  std::function<void(Play&)> talk;
  int trip = 1;  // in milliseconds
};
const Bytes kSlices = Object(159'988);  // 20 times 8,000
const CostCase kCosts[] = {
    {"packets-held-back", "10 stalls of 41 ms: the requestor CALLING",
     [](Play& play) {
       for (int i = 0; i < 10; ++i) {
         play.After(1).Send(0, kStore).After(41).Acknowledge(1);
         play.Send(0, Object(100)).After(1).Send(1, kStored);
       }
     }},
    // The same with TCP_NODELAY.
    {nullptr, "",
     [](Play& play) {
       for (int i = 0; i < 10; ++i) {
         play.After(1).Send(0, kStore).Send(0, Object(100));
         play.After(1).Send(1, kStored).After(41).Acknowledge(0);
       }
     }},
    {"answers-slow-down", "the first quarter took 40 ms, the last one 220 ms",
     [](Play& play) {
       for (int i = 1; i <= 12; ++i) {
         play.After(1).Send(0, kEcho).After(20 * i).Send(1, kEchoed);
       }
     }},
    {"answers-slow", "CALLED (192.0.2.2:104) took 2 s of 2.01 s to answer",
     [](Play& play) {
       play.After(1).Send(0, kEcho).After(2000).Send(1, kEchoed);
     }},
    {"requests-slow", "CALLING (192.0.2.1:41000) took 2 s of 2.01 s",
     [](Play& play) {
       play.After(2000).Send(0, kEcho).After(1).Send(1, kEchoed);
     }},
    // Once nobody wanted anything.
    {nullptr, "",
     [](Play& play) {
       for (const int pause : {1, 1, 5000, 1}) {
         play.After(pause).Send(0, kEcho).After(1).Send(1, kEchoed);
       }
     }},
    {"answers-slow",
     "1.8 s of it are between the pending answers of C-MOVE: the destination",
     [](Play& play) {
       play.After(1).Send(0, kMove).After(200).Send(1, kMoving);
       play.After(900).Send(1, kMoving).After(900).Send(1, kMoved);
     }},
    {"window-too-small", "is 8,000 bytes at most, and a round trip takes 20 ms",
     [](Play& play) {
       play.After(1).Send(0, kStore).After(20).Acknowledge(1);
       for (std::size_t at = 0; at < kSlices.Length(); at += 8000) {
         play.Send(0, kSlices.Part(at, 4000));
         play.Send(0, kSlices.Part(at + 4000, 4000)).After(20);
         play.Acknowledge(1);
       }
     },
     20},
    {"association-per-object",
     "in 5 associations connecting, negotiating and releasing took 60",
     [](Play& play) {
       for (int i = 0; i < 5; ++i) {
         if (i != 0) play.Release(50).Negotiate(100);
         play.After(1).Send(0, kStore).Send(0, Object(100));
         play.After(1).Send(1, kStored);
       }
     }},
    {"transfer-slow", "Look at the network first: transferring 5,",
     [](Play& play) {
       const Bytes object = Object(5000);
       play.After(1).Send(0, kStore);
       for (std::size_t at = 0; at < object.Length(); at += 1000) {
         play.Send(0, object.From(at).First(
                          std::min<std::size_t>(1000, object.Length() - at)));
         play.After(300);
       }
       play.Send(1, kStored);
     }},
    {"association-slow", "took 1.5 s of",
     [](Play& play) { play.Release(1).Negotiate(1500); }},
    {"retransmissions", "1 packet of the client 192.0.2.1:41000 had to be sent",
     [](Play& play) {
       play.After(1).Send(0, kEcho).After(200).Again(0, kEcho).After(1);
       play.Acknowledge(1).Send(1, kEchoed);
     }},
};

// The conversations are poor in all but their times.
std::vector<Finding> FoundOfTime(const Connection& connection) {
  std::vector<Finding> findings = FindAll(Scene({&connection}, {}));
  std::erase_if(findings, [](const Finding& finding) {
    return finding.kind < &KindOf("retransmissions") ||
           finding.kind > &KindOf("association-slow");
  });
  return findings;
}

TEST(TimingTest, EachCauseOfLostTimeIsNamedFirst) {
  for (const CostCase& c : kCosts) {
    SCOPED_TRACE(c.slug == nullptr ? "healthy" : c.slug);
    Play play;
    play.Associate(c.trip);
    c.talk(play);
    play.Release(c.trip);
    const auto connections = play.Finish();
    const auto findings = FoundOfTime(connections.at(0));
    ASSERT_EQ(findings.empty(), c.slug == nullptr);
    if (findings.empty()) continue;
    EXPECT_EQ(findings[0].kind->slug, c.slug);
    EXPECT_NE(findings[0].sentence.find(c.sentence), std::string::npos)
        << findings[0].sentence;
  }
}

TEST(TimingTest, WhatIsLeftOpenLastsToTheEnd) {
  Play never_read;
  never_read.Associate().After(10).Send(0, kStore).After(2).Acknowledge(1, 0);
  never_read.After(3000).Send(0, {}, kRst | kAck);
  EXPECT_EQ(TimesOf(never_read).sums.Of(TimePart::kZeroWindow), 3'000'000);

  // The answer was captured before its request: nobody thinks any more.
  Play crossed;
  crossed.Associate().After(10).Send(1, kEchoed).Send(0, kEcho).After(2000);
  EXPECT_EQ(TimesOf(crossed.Release()).sums.Of(TimePart::kIdle), 2'005'000);
}

TEST(TimingTest, APercentileIsTheFirstValueThatSoManyDoNotExceed) {
  std::vector<Nanoseconds> values(99);
  std::iota(values.begin(), values.end(), 1);
  EXPECT_EQ(Percentile(values, 99), 99);  // 98.01 values
  EXPECT_EQ(Percentile(values, 50), 50);  // 49.5
  EXPECT_EQ(Percentile({7}, 50), 7);
  EXPECT_EQ(Percentile({}, 50), 0);
}

TEST(TimingTest, AClockThatGoesBackMakesNoNegativeTimes) {
  Play play;
  play.Associate().After(10).Send(0, kStore).After(-300).Send(0, Object(100));
  play.After(20).Send(1, kStored).After(400).Release();
  const auto connections = play.Finish();
  ExpectWhole(connections.at(0));
  const ConnectionTiming timing = TimeConnection(connections[0]);
  // It has caught up 280 ms before the end: 400 + 5 + 1 + 2 - 280 remain.
  EXPECT_EQ(timing.associations.at(0).Duration(), 16'000 + 128'000);
  ASSERT_FALSE(timing.limits.empty());
  EXPECT_EQ(timing.limits[0],
            "The clock of the capture goes back by up to 0.300000 s: until it "
            "has caught up, times count as not going on.");
  const Scene scene({&connections[0]}, {});
  std::string story;
  Nanoseconds at = 0;
  for (const StoryStep& step : StoryOf(scene.connections()[0], 20).steps) {
    EXPECT_GE(step.since_begin, at);
    at = step.since_begin;
    story += step.text.substr(0, step.text.find_first_of(",:")) + "\n";
  }
  EXPECT_EQ(story,
            "CALLING asks CALLED for an association\n"
            "accepted\n"
            "C-STORE\n"
            "the clock of the capture goes back by 300 ms\n"
            "released\n"
            "the client closes (FIN)\n");
}

}  // namespace
}  // namespace host
