#include "dimse/value_format.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include "dimse/dicom_dictionary.h"
#include "errors/errors.h"

namespace dicom {
namespace {

using namespace std::string_literals;

ByteArrayView ViewOf(std::string_view bytes) {
  return {reinterpret_cast<const std::uint8_t*>(bytes.data()),
          static_cast<std::uint32_t>(bytes.size())};
}

// The text of a value that fills the whole buffer.
std::string Value(std::string_view vr, const std::string& bytes,
                  std::uint32_t order = kLittleEndian) {
  return ValueText(ViewOf(bytes), 0, static_cast<std::uint32_t>(bytes.size()),
                   order, VrCodeOf(vr));
}

// The bytes of a number as this machine keeps it, which is little-endian.
template <typename Number>
std::string BytesOf(Number number) {
  return {reinterpret_cast<const char*>(&number), sizeof(number)};
}

template <typename Number>
std::string DoubleText(Number bits) {
  return Value("FD", BytesOf(bits));
}

TEST(NumberFormTest, FormsOfAField) {
  EXPECT_EQ(HexAndDecimal(26), "1Ah, 26");
  EXPECT_EQ(HexAndDecimal(0), "0h, 0");
  EXPECT_EQ(HexAndDecimal(0x80000000), "80000000h, -2147483648");
  EXPECT_EQ(ByteDecimal(7), "7");
  EXPECT_EQ(ByteDecimal(255), "255");
  EXPECT_EQ(ByteHex(7), "07h");
  EXPECT_EQ(WordHex(2), "0002h");
  EXPECT_EQ(WordHexAndDecimal(0x8002), "8002h, 32770");
  EXPECT_EQ(LongHex(0x07000280), "07000280h");
  EXPECT_EQ(LongHexAndDecimal(0xFF000000), "FF000000h, -16777216");
  EXPECT_EQ(Unsigned(0xFFFFFFFF), "4294967295");
}

TEST(ValueTextTest, TextIsShownWholeWithPaddingAndBackslashes) {
  for (const char* vr : {"AE", "CS", "DA", "DS", "DT", "IS", "LO", "PN", "SH",
                         "TM", "LT", "ST", "UT"}) {
    SCOPED_TRACE(vr);
    EXPECT_EQ(Value(vr, " A\\B^C \0"s), " A\\B^C \0"s);
    EXPECT_EQ(Value(vr, ""), "");
    EXPECT_THROW(ValueText(ViewOf("abcd"), 1, 4, 0, VrCodeOf(vr)), OutOfRange);
  }
}

TEST(ValueTextTest, LongTextIsCutAt128AfterTheCheckOfTheWholeValue) {
  const std::string text(300, 't');
  for (const char* vr : {"LT", "ST", "UT"}) {
    SCOPED_TRACE(vr);
    EXPECT_EQ(Value(vr, text), std::string(128, 't'));
    EXPECT_THROW(ValueText(ViewOf(text), 1, 300, 0, VrCodeOf(vr)), OutOfRange);
  }
  EXPECT_EQ(Value("LO", text), text);
}

TEST(ValueTextTest, AgeIsAlwaysFourCharacters) {
  EXPECT_EQ(Value("AS", "035Y036Y"), "035Y");
  EXPECT_EQ(ValueText(ViewOf("035Y"), 0, 0, 0, VrCodeOf("AS")), "035Y");
  EXPECT_THROW(Value("AS", "03"), OutOfRange);
}

TEST(ValueTextTest, UidLosesOneZeroByteAndNoBlank) {
  EXPECT_EQ(Value("UI", "1.2.840.10008.1.1\0"s), "1.2.840.10008.1.1");
  EXPECT_EQ(Value("UI", "1.2\0\0"s), "1.2\0"s);
  EXPECT_EQ(Value("UI", "1.2 "), "1.2 ");
  EXPECT_EQ(Value("UI", "\0"s), "");
  EXPECT_EQ(Value("UI", ""), "");
}

TEST(ValueTextTest, BinaryValuesShowTheFirstNumber) {
  const struct {
    const char* vr;
    std::string bytes;
    const char* text;
    std::uint32_t order = kLittleEndian;
  } cases[] = {{"US", "\x30\0"s, "48"},
               {"US", "\x30\0"s, "12288", kBigEndian},
               {"US", "\xFF\xFF\x01\x02", "65535"},
               {"SS", "\xFF\xFF", "-1"},
               {"SS", "\x80\0"s, "-32768", kBigEndian},
               {"UL", "\xFF\xFF\xFF\xFF", "4294967295"},
               {"AT", "\x08\0\x18\0"s, "(0008,0018)"},
               {"AT", "\0\x08\0\x18"s, "(0008,0018)", kBigEndian},
               {"SL", "\x01\0\0\0"s, ""},
               {"FL", "\0\0\x80\x3F"s, "1.000000e+000"},
               {"FL", "\xC0\x20\0\0"s, "-2.500000e+000", kBigEndian},
               {"FD", "\x3F\xF0\0\0\0\0\0\0"s, "1.000000e+000", kBigEndian}};
  for (const auto& c : cases) EXPECT_EQ(Value(c.vr, c.bytes, c.order), c.text);
}

// The width is the VR's, whatever the length field says.
TEST(ValueTextTest, BinaryValuesNeedTheirWidthInTheBufferOnly) {
  const struct {
    const char* vr;
    std::uint32_t width;
  } kCases[] = {{"US", 2}, {"SS", 2}, {"UL", 4}, {"SL", 4},
                {"AT", 4}, {"FL", 4}, {"FD", 8}};
  const std::string bytes(8, '\0');
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.vr);
    EXPECT_NO_THROW(
        ValueText(ViewOf(bytes), 8 - c.width, 0, 0, VrCodeOf(c.vr)));
    EXPECT_NO_THROW(ValueText(ViewOf(bytes), 0, 0xFFFFFFFF, 0, VrCodeOf(c.vr)));
    EXPECT_THROW(ValueText(ViewOf(bytes), 9 - c.width, 2, 0, VrCodeOf(c.vr)),
                 OutOfRange);
  }
}

TEST(ValueTextTest, BulkAndUnknownValuesAreNotRead) {
  const struct {
    std::int32_t code;
    const char* text;
  } kCases[] = {
      {-1, " Unknown Type"}, {12, "OB"},      {13, "OW"},     {17, "SQ"},
      {25, "default"},       {26, "default"}, {-2, "default"}};
  for (const auto& c : kCases) {
    EXPECT_EQ(ValueText({}, 9, 0xFFFFFFFF, 0, c.code), c.text) << c.code;
  }
}

TEST(ExponentialTest, HasThreeExponentDigitsAndTheWindowsNames) {
  EXPECT_EQ(DoubleText(0.0), "0.000000e+000");
  EXPECT_EQ(DoubleText(-0.0), "-0.000000e+000");
  EXPECT_EQ(DoubleText(5e-324), "4.940656e-324");
  EXPECT_EQ(DoubleText(-1e100), "-1.000000e+100");
  EXPECT_EQ(DoubleText(9999999.5), "1.000000e+007");
  EXPECT_EQ(DoubleText(1234566.5), "1.234567e+006");  // a tie, away from zero
  EXPECT_EQ(DoubleText(-12345645.0), "-1.234565e+007");
  EXPECT_EQ(DoubleText(std::uint64_t{0x7FF0000000000000}), "1.#INF00e+000");
  EXPECT_EQ(DoubleText(std::uint64_t{0xFFF0000000000000}), "-1.#INF00e+000");
  EXPECT_EQ(DoubleText(std::uint64_t{0x7FF8000000000000}), "1.#QNAN0e+000");
  EXPECT_EQ(DoubleText(std::uint64_t{0xFFF8000000000000}), "-1.#IND00e+000");
}

#ifdef _WIN32
// The form is that of Windows' own runtime: here it formats the same numbers.
TEST(WindowsFormatTest, DoublesEqualTheRuntimes) {
  using Print = int(__cdecl*)(char*, const char*, ...);
  const auto print = reinterpret_cast<Print>(reinterpret_cast<void*>(
      ::GetProcAddress(::LoadLibraryA("msvcrt.dll"), "sprintf")));
  ASSERT_NE(print, nullptr);
  std::mt19937_64 random(7);
  for (int i = 0; i < 3000; ++i) {
    const std::uint64_t bits = random();
    // Every other number is a tie at six decimals or close to one.
    const double near_tie = static_cast<double>(bits % 20000000) / 2;
    const double value = i % 2 == 0 ? std::bit_cast<double>(bits) : near_tie;
    char text[100];
    print(text, "%e", value);
    EXPECT_EQ(DoubleText(value), text) << i;
  }
}
#endif

}  // namespace
}  // namespace dicom
