#include <gtest/gtest.h>

#include <string>

#include "errors/errors.h"
#include "tests/bytes.h"
#include "tracking/byte_array_view.h"
#include "tracking/packet_span.h"
#include "tracking/presentation_context_table.h"
#include "tracking/segment_history.h"
#include "tracking/tcp_segment.h"

namespace dicom::testing {
namespace {

using namespace std::string_literals;

constexpr std::uint8_t kViewed[] = {0x01, 0x80, 0x03, 0xFF, 0x00};

TEST(ByteArrayViewTest, EveryOrderCodeButOneIsLittleEndian) {
  const ByteArrayView view(kViewed, 5);
  EXPECT_EQ(view.WordAt(0, 1), 0x0180);
  EXPECT_EQ(view.LongAt(0, 1), 0x018003FFu);
  for (std::uint32_t order : {0u, 2u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(order);
    EXPECT_EQ(view.WordAt(0, order), 0x8001);
    EXPECT_EQ(view.LongAt(0, order), 0xFF038001u);
  }
}

TEST(ByteArrayViewTest, ReadsEndAtTheLastByteWhateverTheOffset) {
  const ByteArrayView view(kViewed, 5);
  EXPECT_EQ(view.ByteAt(4), 0);
  EXPECT_EQ(view.CharactersAt(3, 2), std::string_view("\xFF\0", 2));
  for (std::uint32_t offset : {5u, 6u, 0x7FFFFFFFu, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
    SCOPED_TRACE(offset);
    EXPECT_THROW(view.ByteAt(offset), OutOfRange);
    EXPECT_THROW(view.WordAt(offset, 1), OutOfRange);
    EXPECT_THROW(view.LongAt(offset, 1), OutOfRange);
    EXPECT_THROW(view.CharactersAt(offset, 4), OutOfRange);
  }
  EXPECT_THROW(view.WordAt(4, 0), OutOfRange);
  EXPECT_THROW(view.LongAt(2, 0), OutOfRange);
  EXPECT_THROW(view.CharactersAt(1, 0xFFFFFFFF), OutOfRange);
  EXPECT_THROW(ByteArrayView().ByteAt(0), OutOfRange);
}

TcpSegment Parsed(const Bytes& packet, std::uint32_t number = 0,
                  std::uint8_t direction = 0) {
  TcpSegment segment;
  segment.Parse(packet.data(), packet.Length(), number, direction);
  return segment;
}

TEST(TcpSegmentTest, FourteenBytesAreEnoughAndThirteenAreNot) {
  const Bytes header = TcpSegmentBytes({.sequence = 0xFFFFFFFE,
                                        .acknowledgement = 7,
                                        .flags = 0xFF,
                                        .header_words = 15});
  for (std::size_t length = 0; length < 14; ++length) {
    SCOPED_TRACE(length);
    EXPECT_THROW(Parsed(header.First(length)), ArrayTooShort);
  }
  const Bytes short_header = header.First(14);
  const TcpSegment segment = Parsed(short_header, 9, 1);
  EXPECT_EQ(segment.SequenceNumber(), 0xFFFFFFFEu);
  EXPECT_EQ(segment.AcknowledgementNumber(), 7u);
  EXPECT_TRUE(segment.HasFin() && segment.HasSyn() && segment.HasRst() &&
              segment.HasAck());
  // Not diagnosed: the header claims more than there is.
  EXPECT_EQ(segment.HeaderLength(), 60);
  EXPECT_EQ(segment.PayloadLength(), 14u - 60u);
  EXPECT_TRUE(segment.HasPayload());
}

TEST(SegmentHistoryTest, ChangeOfDirectionSettlesWhatWasThereBefore) {
  SegmentHistory history;
  const Bytes bytes = TcpSegmentBytes({}, {1});
  history.Append(Parsed(bytes, 0, 1));
  history.Append(Parsed(bytes, 1, 1));
  EXPECT_FALSE(history.TakeSettled());
  history.Append(Parsed(bytes, 2, 0));
  EXPECT_EQ(history.TakeSettled(), 0u);
  EXPECT_EQ(history.TakeSettled(), 1u);
  EXPECT_FALSE(history.TakeSettled());  // never the new one
  EXPECT_FALSE(history.SettleOnDirection(0));
  EXPECT_TRUE(history.SettleOnDirection(1));
  EXPECT_EQ(history.TakeSettled(), 2u);
  EXPECT_FALSE(history.SettleOnDirection(1));  // nothing is held
  history.Append(Parsed(bytes, 3, 1));
  EXPECT_EQ(history.TakeAny(), 3u);
  EXPECT_FALSE(history.TakeAny());
}

TEST(SegmentHistoryTest, RetransmissionSettlesItsNewestMatchAndAllOlder) {
  SegmentHistory history;
  const Bytes first = TcpSegmentBytes({.sequence = 5, .acknowledgement = 9});
  const Bytes second = TcpSegmentBytes({.sequence = 6, .acknowledgement = 9});
  history.Append(Parsed(first, 0));
  history.Append(Parsed(first, 1));
  history.Append(Parsed(second, 2));
  // The other direction's segment has the same numbers the other way round.
  const Bytes answer = TcpSegmentBytes({.sequence = 9, .acknowledgement = 5});
  EXPECT_FALSE(history.SettleRetransmitted(NumbersOf(Parsed(answer, 3, 0))));
  EXPECT_TRUE(history.SettleRetransmitted(NumbersOf(Parsed(answer, 3, 1))));
  EXPECT_EQ(history.TakeSettled(), 0u);
  EXPECT_EQ(history.TakeSettled(), 1u);
  EXPECT_FALSE(history.TakeSettled());
  EXPECT_FALSE(history.SettleRetransmitted(NumbersOf(Parsed(answer, 3, 1))));
}

TEST(SpanListTest, CopiesShareTheirSpansAndNeverChange) {
  SpanList list;
  list.Append({1, 2, 3});
  list.Append({4, 5, 6});
  SpanList copy = list;
  list.Append({7, 8, 9});
  copy.Append({10, 11, 12});
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[2].packet_number, 7u);
  ASSERT_EQ(copy.size(), 3u);
  EXPECT_EQ(copy[1].packet_number, 4u);
  EXPECT_EQ(copy[2].packet_number, 10u);
}

struct OnePacket : PacketSource {
  ByteArrayView PacketBytes(std::uint32_t) override {
    ++fetches;
    return {bytes.data(), 4};
  }
  Bytes bytes{1, 2, 3, 4};
  int fetches = 0;
};

TEST(GatherBytesTest, SpanPastItsPacketGivesZerosButNeverARecordedLength) {
  SpanList spans;
  spans.Append({0, 2, 5});
  spans.Append({0, 0xFFFFFFFF, 2});
  spans.Append({0, 0, 1});
  OnePacket packet;
  EXPECT_EQ(GatherBytes(spans, 100, packet), (Bytes{3, 4, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(packet.fetches, 1);
  EXPECT_EQ(GatherBytes(spans, 3, packet), (Bytes{3, 4, 0}));

  SpanList endless;
  endless.Append({0, 0, 0xFFFFFFD8});
  EXPECT_EQ(GatherBytes(endless, 0xFFFFFFFF, packet).size(), 15976u);
}

// "big/explicit" flags of a context, or the failure's text.
std::string SyntaxOf(const PresentationContextTable& table, std::uint8_t id) {
  try {
    return std::to_string(table.IsBigEndian(id)) + "/" +
           std::to_string(table.IsExplicitVr(id));
  } catch (const PresentationContextDoesNotExist& failure) {
    return failure.what();
  }
}

PresentationContextTable TableOf(const Bytes& accept) {
  PresentationContextTable table;
  table.AddAcceptedContexts({accept.data(), accept.Length()});
  return table;
}

constexpr char kNoContext[] = "The Presentation context does not exist.";

TEST(PresentationContextTableTest, ClassifiesTheTextAndThenAllButItsLast) {
  const struct {
    std::string uid, flags;
  } cases[] = {{"1.2.840.10008.1.2", "0/0"},
               {std::string("1.2.840.10008.1.2\0", 18), "0/0"},
               {"1.2.840.10008.1.22", "0/0"},
               {"1.2.840.10008.1.2.1", "0/1"},
               {"1.2.840.10008.1.2.2", "1/1"},
               {"1.2.840.10008.1.2.2 ", "1/1"},
               {"1.2.840.10008.1.2.2"s + '\0' + '\0', "0/1"},
               {"1.2.840.10008.1.2.4.50", "0/1"},
               {"", "0/1"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.uid);
    PresentationContextTable table;
    table.AddPresentationContext(1, c.uid);
    EXPECT_EQ(SyntaxOf(table, 1), c.flags);
    EXPECT_THROW(table.AddPresentationContext(1, c.uid),
                 DoublePresentationContextId);
  }
}

// The flags of the contexts 1, 3 and 5, "-" for none.
std::string ContextsOf(const Bytes& accept) {
  const PresentationContextTable table = TableOf(accept);
  std::string all;
  for (const std::uint8_t id : Bytes{1, 3, 5}) {
    const std::string flags = SyntaxOf(table, id);
    all += flags == kNoContext ? "-" : flags;
  }
  return all;
}

TEST(PresentationContextTableTest, EntersAcceptedContextsAlone) {
  const std::string_view implicit = "1.2.840.10008.1.2";
  const std::string_view big = "1.2.840.10008.1.2.2";
  const Bytes one = AnsweredContext(1, 0, implicit);
  const Bytes five = AnsweredContext(5, 0, big);
  const Bytes id_one = {1, 0, 0, 0};
  // An item or sub-item of length FFFCh steps by 65,536, that is, not at all.
  const Bytes standing = {0x10, 0, 0xFF, 0xFC};
  const Bytes standing_inside = Item(0x21, {1, 0, 0, 0, 0x30, 0, 0xFF, 0xFC});
  const struct {
    const char* situation;
    Bytes items;
    std::string contexts;
  } cases[] = {
      {"among other items",
       Item(0x10, Text("1.2")) + one + Item(0x50, Repeat(0x21, 9)) + five,
       "0/0-1/1"},
      {"user rejection", AnsweredContext(1, 1, implicit) + five, "--1/1"},
      {"no reason", AnsweredContext(1, 2, implicit) + five, "--1/1"},
      {"unknown abstract syntax", AnsweredContext(1, 3, big) + five, "--1/1"},
      {"unknown syntaxes", AnsweredContext(1, 4, implicit) + five, "--1/1"},
      {"no result", AnsweredContext(1, 255, implicit) + five, "--1/1"},
      {"proposed", one.Patched(0, {0x20}) + five, "--1/1"},
      {"unknown item", one.Patched(0, {0x22}) + five, "--1/1"},
      {"abstract syntax", one.Patched(8, {0x30}) + five, "--1/1"},
      {"unknown sub-item", one.Patched(8, {0x41}) + five, "--1/1"},
      {"a syntax behind another sub-item",
       Item(0x21, id_one + Item(0x30, Text("1.2")) + Item(0x40, Text(big))),
       "1/1--"},
      // The second entry of an ID ends the reading, what was entered stays.
      {"two syntaxes",
       Item(0x21, id_one + Item(0x40, Text(implicit)) + Item(0x40, Text(big))) +
           five,
       "0/0--"},
      {"an ID again", one + AnsweredContext(1, 0, big) + five, "0/0--"},
      {"behind an item that leads nowhere", standing + one, "---"},
      {"behind a context that leads nowhere", standing_inside + one, "---"},
      {"before one", one + standing_inside, "0/0--"},
      // Offsets have 16 bits: an item that ends where the first begins.
      {"at the beginning again",
       Item(0x21, Bytes{1, 0, 3, 0} + Repeat(0, 65000)) +
           Item(0x99, Repeat(0, 65536 + 74 - (74 + 65008) - 4)) + one,
       "---"},
      // Behind 64 KB the walk is in the first item.
      {"behind 64 KB",
       five + Item(0x10, Repeat(0, 65000)) + Item(0x10, Repeat(0, 600)) + one,
       "--1/1"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ContextsOf(AssociateAccept(c.items)), c.contexts) << c.situation;
  }
}

TEST(PresentationContextTableTest, WhatIsWrongEndsTheReadingQuietly) {
  const Bytes good =
      AssociateAccept(AnsweredContext(1, 0, "1.2.840.10008.1.2"));
  EXPECT_EQ(ContextsOf(good), "0/0--");
  EXPECT_EQ(ContextsOf(good + Bytes{0}), "---");  // length
  EXPECT_EQ(ContextsOf(good.Patched(6, {0, 3})), "---");
  for (std::size_t cut = 0; cut < good.size(); ++cut) {
    EXPECT_EQ(ContextsOf(good.First(cut)), "---");
    // With the right length for what there is.
    if (cut < 6) continue;
    const auto length = static_cast<std::uint32_t>(cut) - 6;
    EXPECT_EQ(ContextsOf(good.First(cut).Patched(2, Big32(length))), "---");
  }
}

}  // namespace
}  // namespace dicom::testing
