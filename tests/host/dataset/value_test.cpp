// Values as people read them.
#include <gtest/gtest.h>

#include <bit>
#include <string>

#include "host/dataset/registry.h"
#include "host/dataset/value_check.h"
#include "host/dataset/value_text.h"
#include "tests/bytes.h"

namespace dicom::testing {
namespace {

using host::ShownValue;
using host::Tag;
using host::Vr;

constexpr Tag kUnknown{0x0009, 0x1001};

// "TEXT | MEANING | FINDING" of a whole value.
std::string Shown(Vr vr, const Bytes& value, Tag tag = kUnknown,
                  const char* declared = "ISO_IR 100") {
  host::DataSetEvent event;
  event.kind = host::DataSetEvent::Kind::kElement;
  event.tag = tag;
  event.vr = event.value_vr = vr;
  event.length = event.available = value.size();
  event.entry = host::FindElement(tag);
  const ShownValue shown =
      host::ShowValue(event, Bytes(value.First(host::kShownBytes)),
                      host::CharacterSet(declared));
  return shown.text + " | " + shown.meaning + " | " + shown.finding;
}

Bytes Double(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return Little32(static_cast<std::uint32_t>(bits)) +
         Little32(static_cast<std::uint32_t>(bits >> 32));
}

Bytes Float(float value) {
  return Little32(std::bit_cast<std::uint32_t>(value));
}

TEST(ShowValueTest, TextsAreShownAndExplained) {
  const struct {
    Vr vr;
    const char *value, *shown;
  } cases[] = {
      {Vr::kDA, "20261121", "20261121 | 2026-11-21 | "},
      {Vr::kDA, "20260229", "20260229 |  | \"20260229\" is no date"},
      {Vr::kDA, "20240229-", "20240229- | from 2024-02-29 | "},
      {Vr::kDA, "-20240229", "-20240229 | until 2024-02-29 | "},
      {Vr::kDA, "20260101-20260131",
       "20260101-20260131 | 2026-01-01 to 2026-01-31 | "},
      {Vr::kDA, "2026", "2026 |  | \"2026\" is no date"},
      {Vr::kDA, "-", "- |  | \"-\" is no date"},
      {Vr::kTM, "022400.635", "022400.635 | 02:24:00.635 | "},
      {Vr::kTM, "0224-03", "0224-03 | 02:24 to 03 | "},
      {Vr::kTM, "2400", "2400 |  | \"2400\" is no time"},
      {Vr::kTM, "022441.1234567",
       "022441.1234567 |  | \"022441.1234567\" is no time"},
      {Vr::kDT, "20261121022441.5+0130",
       "20261121022441.5+0130 | 2026-11-21 02:24:41.5 +01:30 | "},
      {Vr::kDT, "2026-0500", "2026-0500 | 2026 -05:00 | "},
      {Vr::kDT, "20260101-20270101",
       "20260101-20270101 | 2026-01-01 to 2027-01-01 | "},
      {Vr::kAS, "045Y", "045Y | 45 years | "},
      {Vr::kAS, "001W", "001W | 1 week | "},
      {Vr::kAS, "45Y", "45Y |  | \"45Y\" is no age"},
      {Vr::kPN, "Buc^J\xE9r\xF4me^^Dr.",
       "Buc^Jérôme^^Dr. | family Buc, given Jérôme, prefix Dr. | "},
      {Vr::kPN, "A=B=C",
       "A=B=C | family A; ideographic: family B; phonetic: "
       "family C | "},
      {Vr::kPN, "A=B=C=D",
       "A=B=C=D | family A; ideographic: family B; phonetic: "
       "family C | a name has more than three groups"},
      {Vr::kPN, "ANONYMOUS", "ANONYMOUS |  | "},
      {Vr::kUI, "1.2.840.10008.1.2\\1.2.3",
       "1.2.840.10008.1.2\\1.2.3 | Implicit VR Little Endian; ? | "},
      {Vr::kUI, "1.2.840.10008.1.2.2",
       "1.2.840.10008.1.2.2 | Explicit VR Big Endian (Retired) | "},
      {Vr::kUI, "1.02.3", "1.02.3 |  | \"1.02.3\" is no UID"},
      {Vr::kDS, " 1.50\\-2E3 ", " 1.50\\-2E3 |  | "},
      {Vr::kDS, "1,5", "1,5 |  | \"1,5\" is no decimal number"},
      {Vr::kIS, "+12\\2147483647", "+12\\2147483647 |  | "},
      {Vr::kIS, "2147483648",
       "2147483648 |  | \"2147483648\" is no integer of 32 bits"},
      {Vr::kCS, "ORIGINAL\\PRIMARY", "ORIGINAL\\PRIMARY |  | "},
      {Vr::kCS, "Original", "Original |  | \"Original\" is no code string"},
      {Vr::kCS, "CT\xE9 ",
       "CTé |  | holds bytes above 7Fh, which this VR must "
       "not"},
      {Vr::kSH, "12345678901234567",
       "12345678901234567 |  | a value of 17 characters is longer than the 16 "
       "of SH"},
      {Vr::kLT, "a\\b\r\n\x1B\t",
       "a\\b\\r\\n\\x1B\\t |  | holds an escape "
       "sequence that is not of DICOM"},
      {Vr::kLO, "", " |  | "},
  };
  for (const auto& [vr, value, shown] : cases) {
    EXPECT_EQ(Shown(vr, Text(value)), shown);
  }
}

TEST(ShowValueTest, NumbersAreExact) {
  const Tag exposure_time{0x0018, 0x9328}, command{0x0000, 0x0100};
  EXPECT_EQ(Shown(Vr::kFD, Double(0.1) + Double(-1e300) + Double(5e-324)),
            "0.1\\-1e+300\\5e-324 |  | ");
  EXPECT_EQ(Shown(Vr::kFL, Float(0.1f) + Float(16777216)),
            "0.1\\16777216 |  | ");
  EXPECT_EQ(Shown(Vr::kFD, Double(300), exposure_time), "300 | 300 ms | ");
  EXPECT_EQ(Shown(Vr::kUS, Little16(0xFFFF)), "65535 |  | ");
  EXPECT_EQ(Shown(Vr::kSS, Little16(0xFFFF)), "-1 |  | ");
  EXPECT_EQ(Shown(Vr::kSV, Repeat(0xFF, 8)), "-1 |  | ");
  EXPECT_EQ(Shown(Vr::kUV, Repeat(0xFF, 8)), "18446744073709551615 |  | ");
  EXPECT_EQ(Shown(Vr::kUS, Little16(0x8001), command),
            "32769 | C-STORE-RSP | ");
  EXPECT_EQ(Shown(Vr::kAT, Little16(0x0040) + Little16(0xA040)),
            "0040,A040 | Value Type | ");
  EXPECT_EQ(Shown(Vr::kUS, Repeat(1, 3)),
            "257 |  | its 3 bytes are no whole number of values of 2 bytes");
  EXPECT_EQ(Shown(Vr::kUS, Little16(1) + Little16(2), {0x0028, 0x0010}),
            "1\\2 |  | 2 values are not the 1 that it may have");
}

TEST(ShowValueTest, LongValuesAreCut) {
  EXPECT_EQ(
      Shown(Vr::kOW, Repeat(0xAB, 1234)),
      "AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB... | 1,234 bytes | ");
  EXPECT_EQ(Shown(Vr::kUN, {1, 2}), "01 02 | 2 bytes | ");
  EXPECT_EQ(Shown(Vr::kUT, Repeat('x', 100000)),
            std::string(host::kShownBytes, 'x') + "... |  | ");
  // A character that is cut in two is none that is wrong.
  Bytes long_text = Text("x");
  for (int i = 0; i < 200; ++i) long_text += Text("é");
  const std::string shown = Shown(Vr::kLT, long_text, kUnknown, "ISO_IR 192");
  EXPECT_TRUE(shown.ends_with("é... |  | ")) << shown;
}

TEST(MultiplicityTest, EveryFormOfTheRegistry) {
  const struct {
    std::uint64_t count;
    const char* vm;
    bool fits;
  } cases[] = {{0, "1", true},     {1, "1", true},    {2, "1", false},
               {3, "1-3", true},   {4, "1-3", false}, {5, "1-n", true},
               {1, "2-n", false},  {9, "2-n", true},  {4, "2-2n", true},
               {3, "2-2n", false}, {16, "16", true},  {99, "1-99", true}};
  for (const auto& [count, vm, fits] : cases) {
    EXPECT_EQ(host::FitsMultiplicity(count, vm), fits) << count << ' ' << vm;
  }
}

}  // namespace
}  // namespace dicom::testing
