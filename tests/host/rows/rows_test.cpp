#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "host/rows/connection_text.h"
#include "host/rows/hex_layout.h"
#include "host/rows/row_filter.h"
#include "host/rows/row_pages.h"
#include "host/rows/row_text.h"
#include "host/rows/row_trace.h"
#include "host/rows/tree_search.h"

namespace host {
namespace {

const std::string kDump =
    "0000  38 2E 31 2E 31 00 00 00  00 01 02 00 00 00 30 00    "
    "8.1.1.........0.";

TEST(HexLayoutTest, EveryColumnOfTheDumpBelongsToItsByte) {
  for (std::uint32_t byte = 0; byte < 16; ++byte) {
    SCOPED_TRACE(byte);
    const auto place = HighlightInLine(3, 48 + byte, 1);
    ASSERT_TRUE(place);
    EXPECT_NE(kDump[place->digits.first], ' ');
    EXPECT_NE(kDump[place->digits.first + 1], ' ');
    EXPECT_EQ(place->digits.end, place->digits.first + 2);
    EXPECT_EQ(place->characters.first, kDump.size() - 16 + byte);
    EXPECT_EQ(ByteAt(3, place->digits.first), 48 + byte);
    EXPECT_EQ(ByteAt(3, place->digits.first + 1), 48 + byte);
    EXPECT_EQ(ByteAt(3, place->characters.first), 48 + byte);
  }
  for (const std::uint32_t column : {0u, 5u, 55u, 57u, 74u}) {
    EXPECT_FALSE(ByteAt(0, column)) << column;
  }
}

TEST(HexLayoutTest, RangesAreCutAtTheLine) {
  EXPECT_FALSE(HighlightInLine(0, 16, 4));
  EXPECT_FALSE(HighlightInLine(2, 16, 16));
  EXPECT_FALSE(HighlightInLine(1, 20, 0));
  const auto end = HighlightInLine(1, 10, 8);  // bytes 16 and 17
  ASSERT_TRUE(end);
  EXPECT_EQ(end->digits.first, 6u);
  EXPECT_EQ(end->digits.end, 11u);
  EXPECT_EQ(end->characters.end, 60u);
  EXPECT_TRUE(HighlightInLine(0, 0, 0xFFFFFFFF));
}

std::vector<TreeLine> SampleTree() {
  return {{0, "DICOM - Command Set", ByteRange{1, 0, 78}},
          {1, "(0000,0002) - Affected SOP Class UID", ByteRange{1, 12, 26}},
          {2, "Value Length: 12", ByteRange{1, 16, 4}},
          {2, "Value Field: 1.2", ByteRange{1, 20, 18}},
          {3, "UID description: x", ByteRange{1, 20, 18}},
          {1, "no bytes", ByteRange{1, 20, 0}},
          {0, "DICOM Message Data", std::nullopt}};
}

TEST(TreeSearchTest, FindsLinesByByteAndByText) {
  const auto lines = SampleTree();
  EXPECT_EQ(NarrowestLine(lines, 25), 4u);  // the innermost of equals
  EXPECT_EQ(NarrowestLine(lines, 12), 1u);
  EXPECT_EQ(NarrowestLine(lines, 77), 0u);
  EXPECT_FALSE(NarrowestLine(lines, 78));
  EXPECT_EQ(FindLine(lines, {}, "dicom", false), 0u);
  EXPECT_EQ(FindLine(lines, 0, "dicom", false), 6u);
  EXPECT_EQ(FindLine(lines, 6, "dicom", false), 0u);
  EXPECT_EQ(FindLine(lines, 0, "VALUE", true), 3u);
  EXPECT_FALSE(FindLine(lines, 0, "absent", false));
  EXPECT_EQ(LineValue("Value Field: 1: 2"), "1: 2");
  EXPECT_EQ(LineValue(lines[1].text), "Affected SOP Class UID");
  EXPECT_EQ(SubtreeText(lines, 3),
            "Value Field: 1.2\r\n  UID description: x\r\n");
}

ListedRow Row(const char* summary, const char* detail, std::uint32_t direction,
              std::uint32_t length) {
  return {1, direction, length, summary, detail};
}

TEST(RowFilterTest, LooksIntoEveryColumn) {
  const ListedRow row = Row("C-SEND-RSP", "Message Id: 12", 1, 16390);
  WireRecord wire;
  wire.time = 3'661'000'001'000;
  wire.note = "status A700h, a failure";
  const auto passes = [&](const char* text) {
    return RowFilter(text, "192.0.2.2:50", "[2001:db8::1]:104")
        .Passes(6, row, &wire);
  };
  for (const char* text :
       {"", "send-rsp", "id: 12", "7", "16,390", "16390", "01:01:01.000001",
        "a700H", "dir:<", "dir:1", "dir:db8", " send  dir:< "}) {
    EXPECT_TRUE(passes(text)) << text;
  }
  for (const char* text :
       {"C-ECHO", "99", "dir:>", "dir:0", "dir:192.0", "send dir:>"}) {
    EXPECT_FALSE(passes(text)) << text;
  }
}

TEST(ConnectionTextTest, SaysWhoTalkedAndHowMuch) {
  Connection connection;
  connection.first_endpoint = "192.0.2.2:60234";
  connection.second_endpoint = "192.0.2.1:11112";
  connection.payload_bytes = 5553;
  connection.last_time = 45'000'000;
  const std::string endpoints = "192.0.2.2:60234 --> 192.0.2.1:11112";
  EXPECT_EQ(ConnectionTexts(0, connection, {}),
            (ConnectionColumns{"1", endpoints, "", "no DICOM, 5,553 bytes",
                               "0.045 s"}));
  connection.carries_dicom = true;
  connection.pdus.resize(7);
  connection.messages.resize(1);
  EXPECT_EQ(ConnectionTexts(1, connection, AeTitles{1, "SCU", "SCP"}),
            (ConnectionColumns{"2", endpoints, "SCP <-- SCU",
                               "7 PDUs, 1 message, 5,553 bytes", "0.045 s"}));
}

TEST(RowPagesTest, FetchesWhatIsInSightAndKeepsLittle) {
  std::vector<std::uint32_t> fetched;
  std::uint32_t count = 50;
  RowPages pages([&](std::uint32_t first) {
    fetched.push_back(first);
    std::vector<ListedRow> rows;
    for (std::uint32_t i = first; i < count && rows.size() < 40; ++i) {
      rows.push_back(Row("", "", 0, i));
    }
    return rows;
  });
  EXPECT_EQ(pages.At(49)->length, 49u);
  EXPECT_EQ(pages.At(41)->length, 41u);
  EXPECT_EQ(fetched, (std::vector<std::uint32_t>{40}));
  EXPECT_EQ(pages.At(50), nullptr);
  count = 5000;
  EXPECT_EQ(pages.At(50)->length, 50u);  // the page has grown
  for (std::uint32_t i = 0; i < 5000; i += 40) pages.At(i);
  fetched.clear();
  pages.At(4990);
  EXPECT_TRUE(fetched.empty());
  pages.At(0);
  EXPECT_EQ(fetched.size(), 1u);
}

TEST(RowTextTest, KindsAndCounterparts) {
  WireRecord wire;
  const ListedRow response = Row("C-SEND-RSP", "Message Id: 7", 1, 100);
  EXPECT_EQ(KindOf(response, nullptr), RowKind::kPlain);
  for (const auto& [status, kind] :
       {std::pair<std::uint16_t, RowKind>{0x0000, RowKind::kPlain},
        {0xFF00, RowKind::kPlain},
        {0xB000, RowKind::kWarning},
        {0xA700, RowKind::kFault},
        {0x0110, RowKind::kFault}}) {
    wire.status = status;
    EXPECT_EQ(KindOf(response, &wire), kind) << status;
  }
  EXPECT_EQ(KindOf(Row("A-ABORT PDU", "", 0, 10), nullptr), RowKind::kFault);
  EXPECT_EQ(KindOf(Row("A-ASSOCIATE-RJ PDU", "", 1, 10), nullptr),
            RowKind::kFault);
  EXPECT_EQ(KindOf(Row("A-ASSOCIATE-AC PDU", "", 1, 200), nullptr),
            RowKind::kAssociate);

  const ListedRow command = Row("C-SEND-RQ", "Message Id: 7", 0, 9000);
  EXPECT_TRUE(AreCommandAndResponse(command, response));
  EXPECT_TRUE(AreCommandAndResponse(response, command));
  for (const ListedRow& other : {Row("C-SEND-RQ", "Message Id: 7", 1, 1),
                                 Row("C-SEND-RSP", "Message Id: 8", 1, 1),
                                 Row("C-ECHO-RSP", "Message Id: 7", 1, 1),
                                 Row("C-SEND-RSP", "", 1, 1)}) {
    EXPECT_FALSE(AreCommandAndResponse(command, other)) << other.summary;
  }
}

// Rows and records of a list in letters: each letter is a length, a capital
// goes the other way, and a record in brackets is one that is not to be listed.
// Frames are counted from 1.
class RowTraceTest : public testing::Test {
 protected:
  void Capture(const std::string& wire) {
    bool listed = true;
    for (const char letter : wire) {
      if (letter == '(' || letter == ')') {
        listed = letter == ')';
        continue;
      }
      WireRecord record;
      const ListedRow row = LetterRow(letter);
      record.direction = row.direction;
      record.length = row.length;
      record.listed = listed;
      record.first_frame = record.last_frame =
          static_cast<std::uint32_t>(wire_.size() + 1);
      wire_.push_back(record);
    }
  }

  // The frames of the rows, "-" where none is known.
  std::string Frames(const std::string& rows) {
    std::vector<ListedRow> listed;
    for (const char letter : rows) listed.push_back(LetterRow(letter));
    trace_.Append(listed);
    std::string text;
    for (std::uint32_t i = 0; i < trace_.RowCount(); ++i) {
      const WireRecord* record = trace_.RecordOf(i);
      text += (text.empty() ? "" : " ") +
              (record ? std::to_string(record->first_frame) : "-");
    }
    return text;
  }

  static ListedRow LetterRow(char letter) {
    const bool back = letter < 'a';
    return Row("", "", back, static_cast<std::uint32_t>(letter | 0x20));
  }

  std::vector<WireRecord> wire_;
  RowTrace trace_{wire_};
};

TEST_F(RowTraceTest, RowsShowWhereTheyCameFrom) {
  struct Case {
    const char *wire, *rows, *frames, *why;
  };
  for (const Case& c :
       {Case{"aBc", "aBc", "1 2 3", "as expected"},
        {"a(b)c", "ac", "1 3", "one is not to be listed"},
        {"aBc", "ac", "1 3", "one has no row"},
        {"aBc", "axc", "1 - 3", "no such thing went this way"},
        {"aBc", "aXc", "1 2 3", "another length"},
        {"abcd", "axcd", "1 2 3 4", "another length among its like"},
        {"abcdef", "ax", "1 2", "another length where the list ends early"},
        {"abcde", "aecd", "1 2 3 4", "another length, that of a later one"},
        {"abcd", "aabcd", "1 1 2 3 4", "listed twice"},
        {"ab", "abb", "1 2 2", "listed twice at the end"},
        {"abcd", "axbcd", "1 - 2 3 4", "not from the wire"},
        // One of the equal ones has no row, and which one cannot be known;
        // behind them all is known again.
        {"abbbCbbbD", "abbCbbbD", "1 2 3 5 6 7 8 9", "equal ones"},
        {"", "ab", "- -", "handed over as captured"}}) {
    SCOPED_TRACE(c.why);
    wire_.clear();
    trace_ = RowTrace(wire_);
    Capture(c.wire);
    EXPECT_EQ(Frames(c.rows), c.frames);
  }
}

TEST_F(RowTraceTest, PortionsMakeNoDifference) {
  Capture("ab");
  EXPECT_EQ(Frames("a"), "1");
  EXPECT_EQ(Frames("x"), "1 2") << "another length, by all that is known";
  Capture("cdefghij");
  EXPECT_EQ(Frames("b"), "1 - 2") << "now it is one too many";
  EXPECT_EQ(Frames("cdefg"), "1 - 2 3 4 5 6 7");
}

TEST_F(RowTraceTest, FramesLeadToRows) {
  Capture("ab(c)dEf");
  EXPECT_EQ(trace_.RowAtFrame(4, 0), 2u) << "to be expected";
  Frames("abdE");
  EXPECT_EQ(trace_.RowAtFrame(2, 0), 1u);
  EXPECT_EQ(trace_.RowAtFrame(3, 0), 2u) << "the next one";
  EXPECT_EQ(trace_.RowAtFrame(3, 1), 3u) << "of the same direction";
  EXPECT_EQ(trace_.RowAtFrame(6, 0), 4u) << "not listed yet";
  EXPECT_EQ(trace_.RowOfRecord(4), 3u);
}

}  // namespace
}  // namespace host
