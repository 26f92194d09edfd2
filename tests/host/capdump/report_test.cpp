#include <gtest/gtest.h>

#include <algorithm>

#include "host/capdump/report.h"
#include "host/rows/reported_row.h"

namespace host {
namespace {

constexpr Nanoseconds kNoon = 1'714'737'600'000'000'000;  // 2024-05-03 12:00

WireRecord Wire(std::uint32_t direction, std::uint64_t length,
                std::uint32_t first_frame, std::uint32_t last_frame,
                Nanoseconds microseconds, const std::string& note = "") {
  const Nanoseconds time = kNoon + microseconds * 1000;
  return {.direction = direction,
          .length = length,
          .first_frame = first_frame,
          .last_frame = last_frame,
          .time = time,
          .note = note,
          .complete_time = time};
}

std::vector<ReportedRow> Reported(const std::vector<ListedRow>& rows,
                                  const std::vector<WireRecord>& wire) {
  RowTrace trace(wire);
  trace.Append(rows);
  return ReportRows(rows, trace, wire);
}

TEST(ReportedRowTest, RecordsThatAreNotListedKeepTheirPlace) {
  std::vector<WireRecord> wire = {Wire(0, 100, 4, 4, 0), Wire(0, 8, 5, 5, 10),
                                  Wire(0, 100, 6, 6, 30)};
  wire[1].listed = false;
  const auto rows = Reported({{1, 0, 100, "", ""}, {2, 0, 100, "", ""}}, wire);
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_EQ(rows[1].index, std::nullopt);
  EXPECT_EQ(rows[1].listed.length, 8U);
  EXPECT_EQ(rows[2].index, 1U);
  EXPECT_FALSE(rows[0].since_previous);
  EXPECT_EQ(rows[2].since_previous, Nanoseconds{20'000});
}

// Its bytes came before those that it had to wait for, or a clock went back.
TEST(ReportedRowTest, TheTimeBetweenRowsIsNeverNegative) {
  std::vector<WireRecord> wire = {
      Wire(0, 100, 4, 9, 90), Wire(0, 100, 5, 8, 60), Wire(1, 100, 10, 10, 50),
      Wire(0, 100, 11, 11, 100)};
  wire[1].complete_time = wire[0].complete_time;
  const auto rows = Reported({{1, 0, 100, "", ""},
                              {2, 0, 100, "", ""},
                              {1, 1, 100, "", ""},
                              {3, 0, 100, "", ""}},
                             wire);
  EXPECT_EQ(rows[1].since_previous, Nanoseconds{0});
  EXPECT_EQ(rows[2].since_previous, Nanoseconds{0});
  EXPECT_EQ(rows[3].since_previous, Nanoseconds{10'000});
}

// One connection with two PDUs, the second decoded up to a failure.
class ReportTest : public testing::Test {
 protected:
  ReportTest() {
    connection_.first_endpoint = "192.0.2.1:40000";
    connection_.second_endpoint = "192.0.2.2:104";
    connection_.carries_dicom = true;
    connection_.captured_packets = 1234;
    connection_.payload_bytes = 56789;
    connection_.first_time = kNoon;
    connection_.last_time = kNoon + 1'500'000'000;
    connection_.pdus = {Wire(0, 205, 4, 4, 250, "7 bytes were lost"),
                        Wire(1, 16390, 5, 12, 1250)};
    reported_.index = 2;
    reported_.connection = &connection_;
    reported_.ae_titles = AeTitles{0, "CT 1", "ARCHIVE"};
    reported_.pdus = 2;
    reported_.notes = {"it breaks off"};
    rows_ = Reported({{1, 0, 205, "A-ASSOCIATE-RQ PDU", ""},
                      {2, 1, 16390, "P-DATA-TF PDU", ""}},
                     connection_.pdus);
  }

  std::string Write(Report& report) {
    report.BeginCapture("a.pcap", 7, 1);
    report.BeginConnection(reported_);
    report.BeginList(ListKind::kPdus, rows_);
    report.Row(rows_[0], {});
    report.Row(rows_[1], decode_);
    report.BeginList(ListKind::kMessages, {});
    return std::move(text_);
  }

  Sink IntoText() {
    return [this](std::string_view text) { text_ += text; };
  }

  Connection connection_;
  ReportedConnection reported_;
  std::vector<ReportedRow> rows_;
  DecodedRow decode_ = {.tree = {{{0, "P-DATA-TF", ByteRange{1, 0, 16390}},
                                  {1, "Item", ByteRange{1, 6, 4}},
                                  {2, "M\xFCller\n", ByteRange{1, 10, 6}},
                                  {0, "Message Data", {}}}},
                        .hex = "0000  04 FC  .\xFC\r\n0010  00     .\r\n",
                        .stopped = "Out of Range"};
  std::string text_;
};

TEST_F(ReportTest, TextIsMadeForReading) {
  EXPECT_EQ(Write(*MakeTextReport(IntoText())),
            R"(a.pcap: 7 TCP connections, 1 with DICOM

Connection 3  192.0.2.1:40000 --> 192.0.2.2:104
  AE titles   CT 1 --> ARCHIVE
  begins      2024-05-03 12:00:00.000000 UTC
  lasts       1.500000 s, 1,234 packets, 56,789 bytes
  holds       2 PDUs, 0 messages
  note        it breaks off

  PDUs
  row  time (UTC)       since row  dir  length  summary             frames
    1  12:00:00.000250             -->     205  A-ASSOCIATE-RQ PDU  4
      note: 7 bytes were lost
    2  12:00:00.001250   0.001000  <--  16,390  P-DATA-TF PDU       5-12
      [0+16390]       P-DATA-TF
      [6+4]             Item
      [10+6]              Müller\n
      [no bytes]      Message Data
      decoding stopped: Out of Range
      0000  04 FC  .ü
      0010  00     .

  Messages: none
)");
}

TEST_F(ReportTest, JsonHasOneObjectALineAndNestedTrees) {
  const std::string json = Write(*MakeJsonReport(IntoText()));
  EXPECT_EQ(
      json,
      R"({"kind":"connection","connection":3,"first":"192.0.2.1:40000",)"
      R"("second":"192.0.2.2:104","dicom":true,"calling_ae_title":"CT 1",)"
      R"("called_ae_title":"ARCHIVE","time":"2024-05-03T12:00:00.000000000Z",)"
      R"("duration":1.500000000,"packets":1234,"bytes":56789,"pdus":2,)"
      R"("messages":0,"notes":["it breaks off"]})"
      "\n"
      R"({"kind":"pdu","connection":3,"row":1,"number":1,"direction":0,)"
      R"("from":"192.0.2.1:40000","to":"192.0.2.2:104","length":205,)"
      R"("summary":"A-ASSOCIATE-RQ PDU","detail":"","first_frame":4,)"
      R"("last_frame":4,"time":"2024-05-03T12:00:00.000250000Z",)"
      R"("note":"7 bytes were lost"})"
      "\n"
      R"({"kind":"pdu","connection":3,"row":2,"number":2,"direction":1,)"
      R"("from":"192.0.2.2:104","to":"192.0.2.1:40000","length":16390,)"
      R"("summary":"P-DATA-TF PDU","detail":"","first_frame":5,)"
      R"("last_frame":12,"time":"2024-05-03T12:00:00.001250000Z",)"
      R"("since_previous":0.001000000,"tree":[{"text":"P-DATA-TF",)"
      R"("section":1,"offset":0,"length":16390,"children":[{"text":"Item",)"
      R"("section":1,"offset":6,"length":4,"children":[{"text":"Müller\n",)"
      R"("section":1,"offset":10,"length":6}]}]},{"text":"Message Data"}],)"
      R"("hex":"0000  04 FC  .ü\r\n0010  00     .\r\n",)"
      R"("stopped":"Out of Range"})"
      "\n");
}

TEST_F(ReportTest, ColumnsWithoutContentAreLeftOut) {
  connection_.pdus.clear();
  rows_ = Reported({{7, 0, 4, "A", "Message Id: 1"}}, {});
  text_.clear();
  const auto report = MakeTextReport(IntoText());
  report->BeginList(ListKind::kMessages, rows_);
  report->Row(rows_[0], {});
  EXPECT_EQ(text_,
            "\n  Messages\n"
            "  row  number  dir  length  summary  detail\n"
            "    1      #7  -->       4  A        Message Id: 1\n");
}

}  // namespace
}  // namespace host
