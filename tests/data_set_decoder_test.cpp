#include "dimse/data_set_decoder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/decode_test.h"

namespace dicom::testing {
namespace {

constexpr std::uint32_t kUndefined = 0xFFFFFFFF;

// An explicit element of undefined length, up to where its items begin.
Bytes Undefined(std::uint16_t group, std::uint16_t element,
                std::string_view vr) {
  return ExplicitElement(group, element, vr, {})
      .Patched(8, Little32(kUndefined));
}
Bytes UndefinedSequence() { return Undefined(0x0008, 0x1140, "SQ"); }

Bytes DataItem(const Bytes& value) {
  return ImplicitElement(0xFFFE, 0xE000, value);
}
Bytes Delimiter() { return ImplicitElement(0xFFFE, 0xE0DD, {}); }
Bytes Rows(std::uint16_t rows) {
  return ExplicitElement(0x0028, 0x0010, "US", Little16(rows));
}

// The lines of an element in the short form; the first covers two bytes too
// many.
std::string ShortFormLines(std::uint32_t offset, const std::string& tag,
                           const std::string& name, const std::string& vr,
                           std::uint32_t length, const std::string& value) {
  return TreeLine(1, offset, 10 + length, tag + " - " + name) +
         TreeLine(2, offset, 4, "Value Type: " + name) +
         TreeLine(2, offset + 4, 2, "Value Representation: " + vr) +
         TreeLine(2, offset + 6, 2, "Value Length: " + HexLength(4, length)) +
         TreeLine(2, offset + 8, length, "Value Field: " + value);
}
std::string RowsLines(std::uint32_t offset, const std::string& rows) {
  return ShortFormLines(offset, "(0028,0010)", "Rows", "US", 2, rows);
}

// The head of an element of undefined length, whose line ends at the highlight
// limit.
std::string UndefinedLines(std::uint32_t offset, const std::string& tag,
                           const std::string& name, const std::string& vr) {
  return TreeLine(1, offset, 13808 - offset, tag + " - " + name) +
         TreeLine(2, offset, 4, "Value Type: " + name) +
         TreeLine(2, offset + 4, 2, "Value Representation: " + vr) +
         TreeLine(2, offset + 6, 2, "Reserved: 0000h") +
         TreeLine(2, offset + 8, 4, "Value Length: FFFFFFFFh, -1");
}
std::string SequenceLines(std::uint32_t offset) {
  return UndefinedLines(offset, "(0008,1140)", "Referenced Image Sequence",
                        "SQ");
}

// An item or a delimiter below such an element.
std::string ItemLines(std::uint32_t offset, std::uint32_t length,
                      const std::string& value) {
  return ElementLines(offset, "(FFFE,E000)", "Item", length, value, 2);
}
std::string DelimiterLines(std::uint32_t offset) {
  return ElementLines(offset, "(FFFE,E0DD)", "Sequence Delimitation Item", 0,
                      ": ", 2);
}

class DataSetDecoderTest : public DecodeTest {
 protected:
  static constexpr std::uint32_t kBase = 100;  // offset in the hex window

  std::string DecodeWhole(std::uint8_t context_id, const Bytes& data_set) {
    return TreeOf([&](DecodeTreeWriter& writer) {
      const Bytes message = Repeat(0, kBase) + data_set;
      Run(DataSetDecoder(
          {ViewOf(message), kBase, data_set.Length(), "", context_id},
          contexts_, dictionary_.Get(), writer));
    });
  }

  // Without the section line.
  std::string Decode(std::uint8_t context_id, const Bytes& data_set) {
    const std::string text = DecodeWhole(context_id, data_set);
    return text.substr(text.find('\n') + 1);
  }
};

TEST_F(DataSetDecoderTest, EmptyDataSetIsTheSectionLine) {
  for (std::uint8_t id : {kImplicit, kExplicit, kExplicitBig}) {
    EXPECT_EQ(DecodeWhole(id, {}), "0 [100+0] DICOM - Data Set\n");
  }
}

TEST_F(DataSetDecoderTest, UnknownContextThrowsBeforeAnyLine) {
  EXPECT_EQ(DecodeWhole(kNotAccepted, Repeat(0, 8)),
            ThrewAt(kBase, "The Presentation context does not exist."));
}

TEST_F(DataSetDecoderTest, ImplicitElementsTakeTheirVrFromTheDictionary) {
  EXPECT_EQ(
      DecodeWhole(kImplicit,
                  ImplicitElement(0x0008, 0x0016, Uid("1.2.840.10008.1.1")) +
                      ImplicitElement(0x0008, 0x1140, DataItem(Text("ab"))) +
                      ImplicitElement(0x0009, 0x0001, Text("?")) +
                      ImplicitElement(0x0010, 0x0010, Text("A^B ")) +
                      ImplicitElement(0x6002, 0x3000, {1, 2})),
      "0 [100+75] DICOM - Data Set\n"
      "1 [100+26] (0008,0016) - SOP Class UID\n"
      "2 [100+4] Value Type: SOP Class UID\n"
      "2 [104+4] Value Length: 00000012h, 18\n"
      "2 [108+18] Value Field: 1.2.840.10008.1.1\n"
      "3 [108+18] UID description: Verification SOP Class\n" +
          ElementLines(126, "(0008,1140)", "Referenced Image Sequence", 10,
                       "") +
          ElementLines(144, "(0009,0001)", "Unknown Tag", 1,
                       ":  Unknown Type") +
          ElementLines(153, "(0010,0010)", "Patient's Name", 4, ": A^B ") +
          ElementLines(165, "(6002,3000)", "Overlay Data", 2, ""));
}

// An undefined length is a length: it passes the end.
TEST_F(DataSetDecoderTest, ImplicitUndefinedLengthEndsTheDataSet) {
  const Bytes sequence =
      ImplicitElement(0x0008, 0x1140, {}).Patched(4, Little32(kUndefined));
  EXPECT_EQ(Decode(kImplicit, sequence + Delimiter()),
            "1 [100+13708] (0008,1140) - Referenced Image Sequence\n"
            "2 [100+4] Value Type: Referenced Image Sequence\n"
            "2 [104+4] Value Length: FFFFFFFFh, -1\n"
            "2 [108+13700] Value Field\n");
}

TEST_F(DataSetDecoderTest, VrOfTheStreamDecidesFormAndText) {
  EXPECT_EQ(Decode(kExplicitBig,
                   ExplicitElement(0x0028, 0x0010, "US", Big16(512), true)),
            RowsLines(100, "512"));
  EXPECT_EQ(
      Decode(kExplicit,
             ExplicitElement(0x0028, 0x0010, "UI", Uid("1.2.840.10008.1.1")) +
                 ExplicitElement(0x0008, 0x1140, "UT", Text("text")) +
                 ExplicitElement(0x0010, 0x0010, "UN", Text("ab")) +
                 ExplicitElement(0x0010, 0x0010, "OB", Text("abcd"))),
      "1 [100+28] (0028,0010) - Rows\n"
      "2 [100+4] Value Type: Rows\n"
      "2 [104+2] Value Representation: UI\n"
      "2 [106+2] Value Length: 0012h, 18\n"
      "2 [108+18] Value Field: 1.2.840.10008.1.1\n"
      "3 [108+18] UID description: Verification SOP Class\n" +
          ShortFormLines(126, "(0008,1140)", "Referenced Image Sequence", "UT",
                         4, "text") +
          ShortFormLines(138, "(0010,0010)", "Patient's Name", "UN", 2,
                         " Unknown Type") +
          "1 [148+16] (0010,0010) - Patient's Name\n"
          "2 [148+4] Value Type: Patient's Name\n"
          "2 [152+2] Value Representation: OB\n"
          "2 [154+2] Reserved: 0000h\n"
          "2 [156+4] Value Length: 00000004h, 4\n"
          "2 [160+4] Value Field\n");
}

TEST_F(DataSetDecoderTest, BigEndianLongFormReadsItsNumbersBigEndian) {
  const Bytes pixels =
      ExplicitElement(0x7FE0, 0x0010, "OW", Repeat(0, 4), true);
  EXPECT_EQ(Decode(kExplicitBig, pixels.Patched(6, {0x12, 0x34})),
            "1 [100+16] (7FE0,0010) - Pixel Data\n"
            "2 [100+4] Value Type: Pixel Data\n"
            "2 [104+2] Value Representation: OW\n"
            "2 [106+2] Reserved: 1234h\n"
            "2 [108+4] Value Length: 00000004h, 4\n"
            "2 [112+4] Value Field\n");
}

TEST_F(DataSetDecoderTest, FragmentsEndAtTheDelimiterAndTheNextElementFollows) {
  EXPECT_EQ(Decode(kExplicit, Undefined(0x7FE0, 0x0010, "OB") + DataItem({}) +
                                  DataItem({1, 2, 3, 4}) + Delimiter() +
                                  Rows(1) + Rows(2)),
            UndefinedLines(100, "(7FE0,0010)", "Pixel Data", "OB") +
                ItemLines(112, 0, ": ") + ItemLines(120, 4, "") +
                DelimiterLines(132) + RowsLines(140, "1") +
                RowsLines(150, "2"));
}

TEST_F(DataSetDecoderTest, SequenceItemsAreSkippedWithoutAValueLine) {
  EXPECT_EQ(
      Decode(kExplicit, UndefinedSequence() + DataItem(Rows(1)) + DataItem({}) +
                            Delimiter() + UndefinedSequence() + Delimiter()),
      SequenceLines(100) +
          "2 [112+18] (FFFE,E000) - Item\n"
          "3 [112+4] Value Type: Item\n"
          "3 [116+4] Value Length: 0000000Ah, 10\n" +
          ItemLines(130, 0, ": ") + DelimiterLines(138) + SequenceLines(146) +
          DelimiterLines(158));
}

TEST_F(DataSetDecoderTest, ItemOfUndefinedLengthEndsTheDataSet) {
  const Bytes item = DataItem({}).Patched(4, Little32(kUndefined));
  EXPECT_EQ(
      Decode(kExplicit, UndefinedSequence() + item + Delimiter() + Delimiter()),
      SequenceLines(100) +
          "2 [112+13696] (FFFE,E000) - Item\n"
          "3 [112+4] Value Type: Item\n"
          "3 [116+4] Value Length: FFFFFFFFh, -1\n");
}

// Any tag but the item's ends the value behind its own item, whatever its
// length; a delimiter of an item too.
TEST_F(DataSetDecoderTest, OtherTagAmongItemsEndsTheValue) {
  for (const Bytes& last : {ImplicitElement(0xFFFE, 0xE00D, {1, 2}),
                            ImplicitElement(0x0028, 0x0010, {1, 2}),
                            ImplicitElement(0xFFFE, 0xE0DD, {1, 2})}) {
    const std::string text =
        Decode(kExplicit,
               Undefined(0x7FE0, 0x0010, "OB") + last + Rows(1) + Delimiter());
    EXPECT_NE(text.find("\n3 [120+2] Value Field\n" + RowsLines(122, "1")),
              std::string::npos)
        << text;
  }
  const std::string text =
      Decode(kExplicit, UndefinedSequence() +
                            ImplicitElement(0xFFFE, 0xE00D, {}) + Rows(1));
  EXPECT_TRUE(
      text.ends_with("\n3 [120+0] Value Field: \n" + RowsLines(120, "1")))
      << text;
}

// Every prefix ends in an exception at the element or item, or at the value,
// that the end cuts; a prefix of whole elements and items in none.
TEST_F(DataSetDecoderTest, CutAnywhereThrowsAtWhatIsCut) {
  const Bytes data_set = ExplicitElement(0x0010, 0x0010, "PN", Text("A^BC")) +
                         Undefined(0x7FE0, 0x0010, "OB") + DataItem({1, 2}) +
                         Delimiter();
  for (std::uint32_t cut = 1; cut < data_set.Length(); ++cut) {
    SCOPED_TRACE(cut);
    const std::string text = Decode(kExplicit, data_set.First(cut));
    const std::uint32_t at = cut < 8    ? 0    // the first element's header
                             : cut < 12 ? 8    // its value
                             : cut < 24 ? 12   // the second's
                             : cut < 32 ? 24   // the item's
                                        : 34;  // the delimiter's
    // A fragment is not read: it may be cut.
    const bool whole = cut == 12 || cut == 24 || (cut >= 32 && cut <= 34);
    EXPECT_EQ(text.ends_with(ThrewAt(kBase + at, "Out of Range")), !whole)
        << text;
  }
}

}  // namespace
}  // namespace dicom::testing
