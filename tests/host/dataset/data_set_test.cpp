// The host's reader of data sets: what it makes of well-formed ones in every
// encoding, and of those that are wrong.
#include <gtest/gtest.h>
#include <zlib.h>

#include <sstream>
#include <string>
#include <string_view>

#include "host/dataset/data_set_reader.h"
#include "host/dataset/inflated_source.h"
#include "host/dataset/value_list.h"
#include "tests/bytes.h"
#include "tests/data_set_walk.h"

namespace dicom::testing {
namespace {

using host::DataSetEvent;
using host::Encoding;
using host::kDeflated;
using host::kExplicitBig;
using host::kExplicitLittle;
using host::kImplicitLittle;

constexpr std::uint32_t kUndefined = 0xFFFFFFFF;

// Writes elements in one encoding.
class Writer {
 public:
  explicit Writer(Encoding encoding) : encoding_(encoding) {}

  Bytes Word(std::uint32_t value) const {
    return IsBig() ? Big16(value) : Little16(value);
  }
  Bytes Long(std::uint32_t value) const {
    return IsBig() ? Big32(value) : Little32(value);
  }
  Bytes Tag(std::uint32_t tag) const {
    return Word(tag >> 16) + Word(tag & 0xFFFF);
  }
  // `length` stands in the header whatever the value is.
  Bytes Element(std::uint32_t tag, const char* vr, const Bytes& value,
                std::uint32_t length) const {
    if (!encoding_.explicit_vr) return Tag(tag) + Long(length) + value;
    constexpr std::string_view kLong = "OB OD OF OL OV OW SQ SV UC UN UR UT UV";
    const Bytes head = Tag(tag) + Text(vr);
    return kLong.find(vr) != kLong.npos ? head + Word(0) + Long(length) + value
                                        : head + Word(length) + value;
  }
  Bytes Element(std::uint32_t tag, const char* vr, const Bytes& value) const {
    return Element(tag, vr, value, value.Length());
  }
  Bytes Item(const Bytes& elements) const {
    return Tag(0xFFFEE000) + Long(elements.Length()) + elements;
  }
  Bytes OpenItem(const Bytes& elements) const {
    return Tag(0xFFFEE000) + Long(kUndefined) + elements + ItemEnd();
  }
  Bytes ItemEnd() const { return Tag(0xFFFEE00D) + Long(0); }
  Bytes SequenceEnd() const { return Tag(0xFFFEE0DD) + Long(0); }
  Bytes OpenSequence(std::uint32_t tag, const Bytes& items,
                     const char* vr = "SQ") const {
    return Element(tag, vr, items, kUndefined) + SequenceEnd();
  }

 private:
  bool IsBig() const { return encoding_.order == host::ByteOrder::kBig; }

  Encoding encoding_;
};

const Writer kLittle(kExplicitLittle);

// One line an event but for ends without a problem: "PATH VR VALUES", brackets
// around what begins, "!" and its number before a problem.
std::string Read(const Bytes& bytes, Encoding encoding) {
  host::MemorySource source(bytes);
  host::DataSetReader reader(source, encoding);
  std::ostringstream text;
  using Kind = DataSetEvent::Kind;
  for (;;) {
    const DataSetEvent& event = reader.Next();
    if (event.kind == Kind::kEnd) return text.str();
    const bool is_end = event.kind == Kind::kItemEnd ||
                        event.kind == Kind::kSequenceEnd ||
                        event.kind == Kind::kFragmentsEnd;
    const bool is_wrong = event.problem != host::DataSetProblem::kNone;
    if (is_end && !is_wrong) continue;
    text << reader.PathText();
    if (is_end) text << " end";
    if (event.kind == Kind::kRemark) text << " remark";
    if (event.vr != host::Vr::kNone) text << ' ' << VrText(event.vr);
    if (event.kind == Kind::kElement || event.kind == Kind::kFragment) {
      const auto list = ReadValues(event, reader.Value(host::kShownBytes),
                                   *reader.characters());
      for (const std::string& value : list.values) text << ' ' << value;
    }
    if (is_wrong) text << " !" << static_cast<int>(event.problem);
    text << '\n';
  }
}

std::string Problem(host::DataSetProblem problem) {
  return " !" + std::to_string(static_cast<int>(problem)) + "\n";
}

TEST(DataSetReaderTest, EveryWayToWriteADataSetReadsTheSame) {
  const char* const kRead =
      "0008,0005 CS ISO_IR 100\n"
      "0008,1140 SQ\n"
      "0008,1140[1]\n"
      "0008,1140[1].0008,1150 UI 1.2\n"
      "0008,1140[1].0040,A170 SQ\n"
      "0008,1140[1].0040,A170[1]\n"
      "0008,1140[1].0040,A170[1].0008,0104 LO M\xC3\xBCller\n"
      "0008,1140[2]\n"
      "0010,1010 AS 045Y\n"
      "0028,0009 AT 0018,1063\n"
      "0028,0010 US 512\n"
      "0028,0103 US 1\n"
      "0028,0106 SS -2\n"
      "0040,0275 SQ\n"
      "7FE0,0010 OW\n";
  for (const Encoding encoding :
       {kImplicitLittle, kExplicitLittle, kExplicitBig}) {
    for (const bool is_open : {false, true}) {
      SCOPED_TRACE(std::string(host::EncodingText(encoding)) +
                   (is_open ? ", open" : ", defined"));
      const Writer w(encoding);
      const auto item = [&](const Bytes& elements) {
        return is_open ? w.OpenItem(elements) : w.Item(elements);
      };
      const auto sequence = [&](std::uint32_t tag, const Bytes& items) {
        return is_open ? w.OpenSequence(tag, items)
                       : w.Element(tag, "SQ", items);
      };
      const Bytes meaning = w.Element(0x00080104, "LO", Text("M\xFCller"));
      const Bytes bytes =
          w.Element(0x00080005, "CS", Text("ISO_IR 100")) +
          sequence(0x00081140, item(w.Element(0x00081150, "UI", Uid("1.2")) +
                                    sequence(0x0040A170, item(meaning))) +
                                   item({})) +
          w.Element(0x00101010, "AS", Text("045Y")) +
          w.Element(0x00280009, "AT", w.Tag(0x00181063)) +
          w.Element(0x00280010, "US", w.Word(512)) +
          w.Element(0x00280103, "US", w.Word(1)) +
          w.Element(0x00280106, "SS", w.Word(0xFFFE)) +
          sequence(0x00400275, {}) +
          w.Element(0x7FE00010, "OW", Repeat(7, 100));
      EXPECT_EQ(Read(bytes, encoding), kRead);
      const host::Judgement surely{encoding, true};
      host::MemorySource source(bytes);
      EXPECT_EQ(host::JudgeEncoding(source), surely);
    }
  }
}

TEST(DataSetReaderTest, EveryVrHasItsFormAndWidth) {
  const struct {
    const char *vrs, *values;
  } cases[] = {
      {"AE AS CS DA DS DT IS LO LT PN SH ST TM UC UI UR UT", " 12345678"},
      {"OB OD OF OL OV OW UN", ""},
      {"AT", " 3231,3433 3635,3837"},
      {"FD", " 6.821320051701325e-38"},
      {"FL", " 1.6688934e-07 4.3681084e-05"},
      {"SL UL", " 875770417 943142453"},
      {"SS US", " 12849 13363 13877 14391"},
      {"SV UV", " 4050765991979987505"},
  };
  for (const auto& [vrs, values] : cases) {
    std::istringstream each(vrs);
    for (std::string vr; each >> vr;) {
      EXPECT_EQ(Read(kLittle.Element(0x00091001, vr.c_str(), Text("12345678")),
                     kExplicitLittle),
                "0009,1001 " + vr + values + "\n");
    }
  }
}

TEST(DataSetReaderTest, FragmentsBeginWithTheirOffsets) {
  const Bytes offsets = kLittle.Item(Little32(0) + Little32(12));
  EXPECT_EQ(
      Read(kLittle.OpenSequence(
               0x7FE00010,
               offsets + kLittle.Item(Repeat(9, 4)) + kLittle.Item({}), "OB") +
               kLittle.Element(0xFFFCFFFC, "OB", Repeat(0, 2)),
           kExplicitLittle),
      "7FE0,0010 OB\n"
      "7FE0,0010[1] OB 0 12\n"
      "7FE0,0010[2] OB\n"
      "7FE0,0010[3] OB\n"
      "FFFC,FFFC OB\n");
}

TEST(DataSetReaderTest, PrivateBlocksBelongToTheirCreatorAndItem) {
  const Writer w(kImplicitLittle);
  const Bytes creator = w.Element(0x00090011, "LO", Text("GEMS_IDEN_01"));
  const Bytes element = w.Element(0x00091102, "SH", Text("MR01"));
  const Bytes bytes =
      w.Element(0x00081140, "SQ", w.Item(creator + element) + w.Item(element)) +
      element + w.Element(0x000B0010, "LO", Text("NOBODY"));
  EXPECT_EQ(Read(bytes, kImplicitLittle),
            "0008,1140 SQ\n"
            "0008,1140[1]\n"
            "0008,1140[1].0009,0011 LO GEMS_IDEN_01\n"
            "0008,1140[1].0009,1102 SH MR01\n"
            "0008,1140[2]\n"
            "0008,1140[2].0009,1102 UN\n"
            "0009,1102 UN\n"
            "000B,0010 LO NOBODY\n");
}

TEST(DataSetReaderTest, UnknownSequencesAreReadAsImplicitLittleEndian) {
  const Writer implicit(kImplicitLittle), big(kExplicitBig);
  const Bytes uid = implicit.Element(0x00081150, "UI", Uid("1.2"));
  const std::string inside = "[1]\n0009,1001[1].0008,1150 UI 1.2\n";
  EXPECT_EQ(Read(kLittle.Element(0x00091001, "UN", implicit.OpenItem(uid),
                                 kUndefined) +
                     implicit.SequenceEnd(),
                 kExplicitLittle),
            "0009,1001 UN\n0009,1001" + inside);
  EXPECT_EQ(Read(big.Element(0x00091001, "UN", implicit.Item(uid)) +
                     big.Element(0x00280010, "US", big.Word(512)),
                 kExplicitBig),
            "0009,1001 UN\n0009,1001" + inside + "0028,0010 US 512\n");
  EXPECT_EQ(Read(implicit.Element(0x00091001, "", implicit.Item(uid)),
                 kImplicitLittle),
            "0009,1001 SQ\n0009,1001" + inside);
  // As some send it.
  const Bytes sent = kLittle.Element(0x00081150, "UI", Uid("1.2"));
  EXPECT_EQ(Read(kLittle.Element(0x00091001, "UN",
                                 implicit.Item(sent) + implicit.Item(sent)),
                 kExplicitLittle),
            "0009,1001 UN\n0009,1001[1]" +
                Problem(host::DataSetProblem::kExplicitInUnknown) +
                "0009,1001[1].0008,1150 UI 1.2\n0009,1001[2]\n"
                "0009,1001[2].0008,1150 UI 1.2\n");
}

// Each is told, and what comes behind it is read.
TEST(DataSetReaderTest, WrongLengthsAndDelimitersAreToldAndReadPast) {
  using P = host::DataSetProblem;
  const Writer& w = kLittle;
  const Bytes name = w.Element(0x00100010, "PN", Text("AB"));
  const Bytes id = w.Element(0x00100020, "LO", Text("CD"));
  const std::string name_read = "0010,0010 PN AB",
                    id_read = "0010,0020 LO CD\n";
  const std::string begin = "0008,1140 SQ\n0008,1140[1]\n0008,1140[1].";
  const auto sequence = [&](const Bytes& items) {
    return w.Element(0x00081140, "SQ", items);
  };
  const Bytes too_long = w.Element(0x00100010, "PN", Text("AB"), 40);
  const struct {
    const char* what;
    Bytes bytes;
    std::string read;
  } cases[] = {
      {"a value longer than its item", sequence(w.Item(too_long)) + id,
       begin + name_read + Problem(P::kPastEnd) + id_read},
      {"an item longer than its sequence",
       sequence(w.Item(name).Patched(4, Little32(99))) + id,
       "0008,1140 SQ\n0008,1140[1]" + Problem(P::kPastEnd) + "0008,1140[1]." +
           name_read + "\n" + id_read},
      {"a sequence longer than the data set",
       w.Element(0x00081140, "SQ", w.Item(name), 500),
       "0008,1140 SQ" + Problem(P::kPastEnd) + begin.substr(13) + name_read +
           "\n"},
      {"bytes left in an item", sequence(w.Item(name + Repeat(1, 5))) + id,
       begin + name_read + "\n0008,1140[1] remark" + Problem(P::kRest) +
           id_read},
      {"an item without its delimiter",
       w.OpenSequence(0x00081140,
                      w.OpenItem(name).First(18) + w.OpenItem(name)) +
           id,
       begin + name_read + "\n0008,1140[1] end" + Problem(P::kNoDelimiter) +
           "0008,1140[2]\n0008,1140[2]." + name_read + "\n" + id_read},
      {"a sequence without its delimiter",
       w.Element(0x00081140, "SQ", w.OpenItem(name), kUndefined) + id,
       begin + name_read + "\n0008,1140 end" + Problem(P::kNotAnItem) +
           id_read},
      {"an end of the data set in an open item",
       w.Element(0x00081140, "SQ", w.OpenItem(name).First(18), kUndefined),
       begin + name_read + "\n0008,1140[1] end" + Problem(P::kNoDelimiter) +
           "0008,1140 end" + Problem(P::kNoDelimiter)},
      {"no item in a sequence", sequence(Repeat(7, 20)) + id,
       "0008,1140 SQ\n0008,1140 remark" + Problem(P::kNotAnItem) + id_read},
      {"delimiters out of place",
       w.SequenceEnd() + sequence(w.Item(name + w.ItemEnd())) + id,
       " remark" + Problem(P::kStrayDelimiter) + begin + name_read +
           "\n0008,1140[1] remark" + Problem(P::kStrayDelimiter) + id_read},
      {"an item out of place", w.Item(name) + id,
       " remark" + Problem(P::kStrayDelimiter) + name_read + "\n" + id_read},
      {"a text of undefined length",
       w.OpenSequence(0x0040A160, w.Item(id), "UT"),
       "0040,A160 UT" + Problem(P::kUndefinedLength) +
           "0040,A160[1]\n0040,A160[1]." + id_read},
      {"no VR",
       Writer(kImplicitLittle).Element(0x00100010, "", Text("AB")) + id,
       name_read + Problem(P::kNoVr) + id_read},
      {"no VR before a length of 16 bits",
       w.Element(0x00100010, "??", Text("AB")) + id +
           w.Element(0x00280010, "??", Little16(7)) +
           w.Element(0x00280011, "??", Little16(8)),
       name_read + Problem(P::kNoVrShort) + id_read + "0028,0010 US 7" +
           Problem(P::kNoVrShort) + "0028,0011 US 8" + Problem(P::kNoVrShort)},
      {"no element",
       sequence(w.Item(Little32(0x00200010) + Repeat(1, 30))) + id,
       "0008,1140 SQ\n0008,1140[1]\n0008,1140[1] remark" +
           Problem(P::kNotAnElement) + id_read},
      {"an odd length", w.Element(0x00100010, "PN", Text("ABC")) + id,
       "0010,0010 PN ABC" + Problem(P::kOddLength) + id_read},
      {"no order", id + name, id_read + name_read + Problem(P::kOrder)},
      {"new letters",
       w.Tag(0x00100010) + Text("ZZ") + Little16(0) + Little32(2) + Text("AB") +
           id,
       "0010,0010 ZZ\n" + id_read},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Read(c.bytes, kExplicitLittle), c.read) << c.what;
  }
}

TEST(DataSetReaderTest, ProblemsNamePathAndByte) {
  const Bytes bytes = kLittle.Element(
      0x00400275, "SQ",
      kLittle.Item(kLittle.Element(0x00400007, "LO", Text("AB"), 40)));
  host::MemorySource source(bytes);
  host::DataSetReader reader(source, kExplicitLittle);
  while (reader.Next().problem == host::DataSetProblem::kNone) {
  }
  EXPECT_EQ(
      reader.ProblemSentence(),
      "At byte 20, 0040,0275[1].0040,0007: its length of 40 bytes goes 38 "
      "bytes past the end of what it is in.");
  EXPECT_EQ(reader.event().value_at, 28u);
  EXPECT_EQ(reader.event().available, 2u);
}

TEST(DataSetReaderTest, ReadsDeepAndWide) {
  const Writer w(kImplicitLittle);
  const Bytes level = w.Element(0x00081140, "SQ", {}, kUndefined) +
                      w.Tag(0xFFFEE000) + w.Long(kUndefined);
  const Bytes sibling = w.Element(0x00280010, "US", w.Word(1));
  Bytes deep, wide;
  constexpr std::size_t kLevels = 20000, kSiblings = 1000000;
  for (std::size_t i = 0; i < kLevels; ++i) deep += level;
  wide.reserve(kSiblings * sibling.size());
  for (std::size_t i = 0; i < kSiblings; ++i) wide += sibling;
  const DataSetWalk depths(deep, kImplicitLittle);
  EXPECT_EQ(depths.problem, "");
  EXPECT_EQ(depths.deepest, 2 * kLevels - 1);
  while (deep.size() <= level.size() * host::DataSetReader::kMostLevels / 2) {
    deep += level;
  }
  const DataSetWalk too_deep(deep, kImplicitLittle);
  EXPECT_EQ(too_deep.problem, "");
  EXPECT_EQ(too_deep.problems, 1u);
  const DataSetWalk siblings(wide, kImplicitLittle);
  EXPECT_EQ(siblings.problem, "");
  EXPECT_EQ(siblings.events, kSiblings);
}

// Nearly everything that a data set can hold.
Bytes RichDataSet(const Writer& w) {
  const Bytes texts = w.Element(0x00080005, "CS", Text("\\ISO 2022 IR 87 ")) +
                      w.Element(0x00080020, "DA", Text("20261121")) +
                      w.Element(0x0008103E, "LO", Text("\x1B$B;3ED\x1B(B\\x"));
  const Bytes sequence = w.OpenSequence(
      0x00081140, w.Item(w.Element(0x00090010, "LO", Text("GEMS_IDEN_01")) +
                         w.Element(0x00091001, "LO", Text("ab"))) +
                      w.OpenItem(texts));
  return texts + sequence + w.Element(0x00189328, "FD", Repeat(0x40, 8)) +
         w.Element(0x00280010, "US", w.Word(512)) +
         w.OpenSequence(0x7FE00010, w.Item(Little32(0)) + w.Item(Repeat(1, 6)),
                        "OB");
}

TEST(DataSetReaderTest, EveryPrefixAndEveryChangedByteIsReadToItsEnd) {
  for (const Encoding encoding :
       {kImplicitLittle, kExplicitLittle, kExplicitBig}) {
    const Bytes bytes = RichDataSet(Writer(encoding));
    ASSERT_EQ(DataSetWalk(bytes, encoding).problems, 0u)
        << Read(bytes, encoding);
    for (std::size_t at = 0; at < bytes.size(); ++at) {
      SCOPED_TRACE(at);
      EXPECT_EQ(DataSetWalk(bytes.First(at), encoding).problem, "");
      for (const int change : {0x01, 0x80, 0xFF}) {
        const auto byte = static_cast<std::uint8_t>(bytes[at] ^ change);
        EXPECT_EQ(DataSetWalk(bytes.Patched(at, {byte}), encoding).problem, "");
      }
    }
  }
}

Bytes Deflated(const Bytes& bytes) {
  Bytes deflated(bytes.size() + 1000, 0);
  z_stream stream{};
  deflateInit2(&stream, 9, Z_DEFLATED, -15, 9, Z_DEFAULT_STRATEGY);
  stream.next_in = const_cast<Bytef*>(bytes.data());
  stream.avail_in = bytes.Length();
  stream.next_out = deflated.data();
  stream.avail_out = deflated.Length();
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  deflateEnd(&stream);
  return deflated.First(stream.total_out);
}

TEST(InflatedSourceTest, ReadsForwardsAndBackInPieces) {
  Bytes bytes;
  while (bytes.size() < 300000) bytes += Little32(bytes.Length() * 2654435761u);
  const Bytes deflated = Deflated(bytes);
  host::MemorySource source(deflated);
  host::InflatedSource inflated(source);
  EXPECT_EQ(inflated.size(), bytes.size());
  EXPECT_EQ(inflated.problem(), "");
  for (const std::size_t at : {0, 70000, 65530, 299990, 5, 300000, 400000}) {
    Bytes read(100, 0);
    read.resize(inflated.Read(at, read));
    EXPECT_EQ(read, at < bytes.size() ? bytes.Part(at, 100) : Bytes()) << at;
  }
}

TEST(InflatedSourceTest, WhatIsWrongIsToldAndWhatIsBeforeItRead) {
  const Bytes bytes = RichDataSet(kLittle);
  const Bytes deflated = Deflated(bytes);
  const struct {
    Bytes stream;
    std::string problem;
  } cases[] = {
      {deflated.First(deflated.size() - 5),
       "the deflated stream ends too early"},
      {deflated.Patched(0, {0xFF}), "the deflated stream is damaged"},
      {{}, "the deflated stream ends too early"},
  };
  for (const auto& c : cases) {
    host::MemorySource source(c.stream);
    host::InflatedSource inflated(source);
    EXPECT_TRUE(inflated.problem().starts_with(c.problem)) << c.problem;
    Bytes read(static_cast<std::size_t>(inflated.size()), 0);
    EXPECT_EQ(inflated.Read(0, read), read.size());
    EXPECT_EQ(read, bytes.First(read.size()));
  }
}

TEST(ChooseEncodingTest, TheBytesDecideWhereTheyAreSure) {
  using Origin = host::EncodingOrigin;
  const char* const kImplicit = "implicit VR little endian";
  const char* const kExplicit = "explicit VR little endian";
  const char* const kBig = "explicit VR big endian";
  const char* const kInflate = "deflated explicit VR little endian";
  const std::string kImplicitUid = "1.2.840.10008.1.2",
                    kDeflatedUid = "1.2.840.10008.1.2.1.99",
                    kJpegUid = "1.2.840.10008.1.2.4.50";
  const Bytes plain = RichDataSet(kLittle);
  const Bytes level = kLittle.Element(0x00080052, "CS", Text("STUDY "));
  const struct {
    const char* what;
    std::string negotiated;
    Bytes bytes;
    const char* encoding;
    Origin origin;
  } cases[] = {
      {"as negotiated", kJpegUid, plain, kExplicit, Origin::kNegotiated},
      {"padded", kImplicitUid + '\0', RichDataSet(Writer(kImplicitLittle)),
       kImplicit, Origin::kNegotiated},
      {"not as negotiated", kImplicitUid, plain, kExplicit,
       Origin::kContradicts},
      {"one short element", kImplicitUid, level, kExplicit,
       Origin::kContradicts},
      {"deflated", kDeflatedUid, Deflated(plain), kInflate,
       Origin::kNegotiated},
      {"not deflated", kDeflatedUid, plain, kExplicit, Origin::kContradicts},
      {"deflated, unasked", kImplicitUid, Deflated(plain), kInflate,
       Origin::kContradicts},
      {"nothing known", "", RichDataSet(Writer(kExplicitBig)), kBig,
       Origin::kGuessed},
      {"a syntax of somebody's own", "1.2.3", plain, kExplicit,
       Origin::kGuessed},
      {"noise says nothing", kImplicitUid, Repeat(0x5A, 300), kImplicit,
       Origin::kNegotiated},
      {"an empty data set", kJpegUid, {}, kExplicit, Origin::kNegotiated},
  };
  for (const auto& c : cases) {
    host::MemorySource source(c.bytes);
    const host::ChosenEncoding chosen =
        host::ChooseEncoding(source, c.negotiated);
    EXPECT_EQ(host::EncodingText(chosen.encoding), c.encoding) << c.what;
    EXPECT_EQ(chosen.origin, c.origin) << c.what;
  }
}

}  // namespace
}  // namespace dicom::testing
