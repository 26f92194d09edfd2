#include <gtest/gtest.h>

#include "host/text/text_encoding.h"
#include "host/text/time_text.h"

namespace host {
namespace {

TEST(TextEncodingTest, CodePage1252BecomesUtf8WithoutTerminalCodes) {
  EXPECT_EQ(Utf8FromCodePage1252("M\xFCller \x80 \x9F\x81\x1F"),
            "M\u00FCller \u20AC \u0178\u0081\x1F");
  EXPECT_EQ(PrintableFromCodePage1252("a\r\nb\t\x1B[2J\x7F\x90 1\\2"),
            "a\\r\\nb\\t\\x1B[2J\\x7F\\x90 1\\2");
  EXPECT_EQ(DumpFromCodePage1252("0000  1B\x90\r\n"), "0000  1B\uFFFD\r\n");
}

TEST(TextEncodingTest, JsonStringsAreValidWhateverIsPutIn) {
  EXPECT_EQ(JsonString("a\"b\\c\n\x01"), R"("a\"b\\c\n\u0001")");
  EXPECT_EQ(JsonString("\u20AC\U0001F600"), "\"\u20AC\U0001F600\"");
  for (const char* broken : {"\xFF", "\xC0", "\x80", "\xF5"}) {
    SCOPED_TRACE(broken);
    EXPECT_EQ(JsonString(broken), "\"\uFFFD\"");
  }
  EXPECT_EQ(JsonString("\xE2\x82"), "\"\uFFFD\uFFFD\"");  // cut
  EXPECT_EQ(JsonString("\xED\xA0\x80"),                   // a surrogate
            "\"\uFFFD\uFFFD\uFFFD\"");
}

TEST(TimeTextTest, TimesAreUtcWithTheAskedDigits) {
  constexpr Nanoseconds kNoon = 1'714'737'600'000'000'000;
  EXPECT_EQ(UtcTime(kNoon + 123'456'789, 9), "2024-05-03T12:00:00.123456789Z");
  EXPECT_EQ(UtcText(kNoon, 3), "2024-05-03 12:00:00.000 UTC");
  EXPECT_EQ(UtcTime(-1, 6), "1969-12-31T23:59:59.999999Z");
  EXPECT_EQ(Seconds(61'000'500'000, 6), "61.000500");
  EXPECT_EQ(Seconds(-1'500'000, 6), "-0.001500");
}

}  // namespace
}  // namespace host
