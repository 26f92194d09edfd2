#include "dimse/dicom_dictionary.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>

#include "errors/errors.h"
#include "tests/test_dictionary.h"

namespace dicom::testing {
namespace {

using namespace std::string_literals;

constexpr char kUnknown[] = "-1 Unknown Tag";

// "CODE NAME".
std::string Element(const DicomDictionary& dictionary, const std::string& tag) {
  const DataElementEntry entry = dictionary.LookupDataElement(tag);
  return std::to_string(entry.vr_code) + " " + entry.name;
}

// What a Data.dic of this one line holds under `tag`.
std::string ElementOf(const std::string& line, const std::string& tag) {
  return Element(TestDictionary("", line + "\n").Get(), tag);
}

std::string ShippedFile(const std::string& name) {
  return FileBytes(SHIPPED_DATA_DIR "/" + name);
}

TEST(DataDicTest, LinesWithThreeOrFourColumnsAreKept) {
  const struct {
    const char *line, *entry;
  } cases[] = {
      {"0008,0016;SOP Class UID;UI", "21 SOP Class UID"},
      {"0008,0016;Curve Data;OB;retired", "12 Curve Data"},
      {"0008,0016;Name;US;a;b#; c", "23 Name"},
      {"0008,0016; a # b ;UN", "-1  a # b "},
      {"0008,0016;Name;us", "-1 Name"},
      {"0008,0016;One;UI;x\n0008,0016;Two;US", "21 One"},  // the first wins
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ElementOf(c.line, "(0008,0016)"), c.entry);
  }
  EXPECT_EQ(ElementOf("00080,016;Comma anywhere;US", "(00080,016)"),
            "23 Comma anywhere");
}

TEST(DataDicTest, MalformedLinesAreDroppedAndReadingGoesOn) {
  for (const std::string tag_and_line :
       {"0008,0016|", "0008,0016|0008,0016", "0008,0016|0008,0016;Name",
        "0008,0016|0008,0016;;UI", "0008,0016|0008,0016;Name;",
        "0008,0016|0008,0016;Name;U", "0008,0016|0008,0016;Name;UID",
        "0008,0016|0008,0016;Name;UI;", "0008,0016|0008,0016;Name;U;I",
        "0008,0016|0008,0016;Name;;UI", "0008,0016|(0008,0016);Name;UI",
        "0008,0016|0008 0016;Name;UI", "(0008,0016)|(0008,0016);Name;UI",
        "0008,00a0|0008,00a0;Name;UI", "0008,016|0008,016;Name;UI",
        "0008 0016|0008 0016;Name;UI", "0008,0016|#0008,0016;Name;UI",
        "0008,0016|# 0008,0016;Name;UI", "0008,0016| #0008,0016;Name;UI"}) {
    SCOPED_TRACE(tag_and_line);
    const std::size_t bar = tag_and_line.find('|');
    const TestDictionary dictionary(
        "", tag_and_line.substr(bar + 1) + "\n0010,0010;Next;PN\n");
    EXPECT_EQ(
        Element(dictionary.Get(), "(" + tag_and_line.substr(0, bar) + ")"),
        kUnknown);
    EXPECT_EQ(Element(dictionary.Get(), "(0010,0010)"), "14 Next");
  }
}

TEST(DataDicTest, CrLfIsALineFeedAndTheLastLineNeedsNone) {
  const TestDictionary dictionary("1.2;UID\r\n1.3;Last",
                                  "0008,0016;One;UI\r\n\r\n0008,0018;Two;UI");
  EXPECT_EQ(Element(dictionary.Get(), "(0008,0016)"), "21 One");
  EXPECT_EQ(Element(dictionary.Get(), "(0008,0018)"), "21 Two");
  EXPECT_EQ(dictionary.Get().LookupUidDescription("1.2"), "UID");
  EXPECT_EQ(dictionary.Get().LookupUidDescription("1.3"), "Last");
}

TEST(DataDicTest, LineOf120CharactersEndsTheFile) {
  const std::string start = "0008,0001;";  // and ";US" at the end
  const std::string longest = start + std::string(119 - 13, 'n') + ";US";
  const std::string data_dic = "\n0008,0002;Behind;US\n";
  for (const std::string line_end : {"", "\r"}) {
    const TestDictionary kept("", longest + line_end + data_dic);
    EXPECT_NE(Element(kept.Get(), "(0008,0001)"), kUnknown);
    EXPECT_EQ(Element(kept.Get(), "(0008,0002)"), "23 Behind");
  }
  const TestDictionary cut(
      "1.2;UID\n1.3;" + std::string(116, 'd') + "\n1.4;Behind",
      "0008,0000;Before;US\n#" + longest + data_dic);
  EXPECT_EQ(Element(cut.Get(), "(0008,0000)"), "23 Before");
  EXPECT_EQ(Element(cut.Get(), "(0008,0002)"), kUnknown);
  EXPECT_EQ(cut.Get().LookupUidDescription("1.2"), "UID");
  EXPECT_EQ(cut.Get().LookupUidDescription("1.4"), "- Undefined UID");
}

TEST(DataDicTest, FileIsReadInTextMode) {
  const struct {
    std::string file;
    const char *first, *second;  // the elements 0008,0001 and 0008,0002
  } cases[] = {
      {"0008,0001;One;UI\x1A\n0008,0002;Two;UI\n", "21 One", kUnknown},
      {"0008,0001;O\x1Ane;UI\n0008,0002;Two;UI\n", kUnknown, kUnknown},
      {"0008,0001;O\0ne;UI\n0008,0002;Two;UI\0;x\n"s, kUnknown, "21 Two"},
      {"0008,0001;O\rne;UI\n0008,0002;Two;UI\r", "21 O\rne", kUnknown},
      {"0008,0001;One;UI\r0008,0002;Two;UI\n", kUnknown, kUnknown}};
  for (const auto& c : cases) {
    const TestDictionary dictionary("", c.file);
    EXPECT_EQ(Element(dictionary.Get(), "(0008,0001)"), c.first) << c.file;
    EXPECT_EQ(Element(dictionary.Get(), "(0008,0002)"), c.second) << c.file;
  }
}

// More than 256 KB, each tag twice, the last one first.
TEST(DataDicTest, LongDisorderedFileKeepsTheFirstOfEqualLines) {
  std::string text;
  const std::string last = "0009,0001;First;UI\n";
  for (int i = 8'000; i > 0; --i) {
    char line[48];
    std::snprintf(line, sizeof(line), "%04X,0008;", static_cast<unsigned>(i));
    text += line + std::string("First;UI\n") + line + "Second;US\n";
  }
  const TestDictionary dictionary("", text + last);
  for (const char* tag : {"(1F40,0008)", "(0FA0,0008)", "(0001,0008)"}) {
    EXPECT_EQ(Element(dictionary.Get(), tag), "21 First");
  }
  EXPECT_EQ(Element(dictionary.Get(), "(0009,0001)"), "21 First");
  // A piece that ends with the file, or one byte before or behind its end.
  for (const std::size_t whole : {(3u << 18) - 1, 3u << 18, (3u << 18) + 1}) {
    const TestDictionary cut("", std::string(whole - last.size(), '\n') + last);
    EXPECT_EQ(Element(cut.Get(), "(0009,0001)"), "21 First") << whole;
  }
}

TEST(DataDicTest, FileThatCannotBeOpenedIsAnError) {
  for (const char* missing : {kDataDicPath, kUidDicPath}) {
    SCOPED_TRACE(missing);
    TestDictionary("", "");
    std::remove(missing);
    EXPECT_THROW(DicomDictionary(), ErrorWhileOpenFile);
  }
}

TEST(LookupDataElementTest, OnlyGroups50And60Fold) {
  const TestDictionary dictionary("",
                                  "50xx,0005;Curve;US\n60xx,0010;Overlay;US\n"
                                  "5000,0005;Unreachable;UL\n51xx,0005;x;US\n"
                                  "5100,0005;Own;US\n7Fxx,0010;x;OW\n");
  for (const char* tag : {"(5000,0005)", "(5012,0005)", "(50FF,0005)"}) {
    EXPECT_EQ(Element(dictionary.Get(), tag), "23 Curve");
  }
  EXPECT_EQ(Element(dictionary.Get(), "(6001,0010)"), "23 Overlay");
  EXPECT_EQ(Element(dictionary.Get(), "(5100,0005)"), "23 Own");
  EXPECT_EQ(Element(dictionary.Get(), "(5102,0005)"), kUnknown);
  EXPECT_EQ(Element(dictionary.Get(), "(7F02,0010)"), kUnknown);
}

TEST(VrCodeTest, CodesFollowTheModulesOrder) {
  const char* const kVrs[] = {"AE", "AS", "AT", "CS", "DA", "DS", "DT",
                              "FL", "FD", "IS", "LO", "LT", "OB", "OW",
                              "PN", "SH", "SL", "SQ", "SS", "ST", "TM",
                              "UI", "UL", "US", "UT", "VS"};
  int code = 0;
  for (const char* vr : kVrs) EXPECT_EQ(VrCodeOf(vr), code++) << vr;
  for (const char* vr : {"XX", "UN", "OF", "UC", "UR", "OD", "ob", "O", ""}) {
    EXPECT_EQ(VrCodeOf(vr), kVrUnknown) << vr;
  }
}

TEST(UidDicTest, UidIsAtMost64DigitsAndDotsAndTheRestItsDescription) {
  const std::string longest(64, '1'), none = "- Undefined UID";
  const struct {
    std::string line, uid, description;
  } cases[] = {{"1.2;Verification SOP Class", "1.2", "Verification SOP Class"},
               {"1.2; a;b; ", "1.2", " a;b; "},
               {"1.2;", "1.2", ""},
               {";No UID", "", "No UID"},
               {"1.2;One\n1.2;Two", "1.2", "One"},
               {longest + ";Longest", longest, "Longest"},
               {longest + "1;Bad", longest + "1", none},
               {"1.2 ;Bad", "1.2 ", none},
               {"1.2a;Bad", "1.2a", none},
               {"#1.2;Bad", "#1.2", none},
               {"1.2", "1.2", none},
               {"1.2;Exact", "1.2 ", none},
               {"1.2;Exact", std::string("1.2\0", 4), none}};
  for (const auto& [line, uid, description] : cases) {
    EXPECT_EQ(TestDictionary(line + "\n").Get().LookupUidDescription(uid),
              description)
        << line;
  }
}

// The shipped files, through the reader that they are for.
class ShippedDictionaryTest : public ::testing::Test {
 protected:
  // Calls `check` with the columns before and behind the first ";" of every
  // line and answers how many there are.
  template <typename Check>
  int ForEachLine(const std::string& text, Check check) {
    std::istringstream lines(text);
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("#")) continue;
      ++count;
      const std::size_t end = line.find(';');
      check(line.substr(0, end), line.substr(end + 1));
    }
    return count;
  }

  const std::string data_dic_ = ShippedFile("Data.dic");
  const std::string uid_dic_ = ShippedFile("Uid.dic");
  const TestDictionary dictionary_{uid_dic_, data_dic_};
};

TEST_F(ShippedDictionaryTest, EveryLineIsKept) {
  const int elements = ForEachLine(
      data_dic_, [&](const std::string& tag, const std::string& rest) {
        const DataElementEntry entry =
            dictionary_.Get().LookupDataElement("(" + tag + ")");
        EXPECT_TRUE(rest.starts_with(entry.name + ";")) << tag << rest;
      });
  EXPECT_GE(elements, 4900);
  const int uids = ForEachLine(
      uid_dic_, [&](const std::string& uid, const std::string& description) {
        EXPECT_EQ(dictionary_.Get().LookupUidDescription(uid), description);
      });
  EXPECT_GE(uids, 400);
}

TEST_F(ShippedDictionaryTest, HoldsWellKnownEntriesOfEveryKind) {
  const struct {
    const char *tag, *entry;
  } elements[] = {
      {"(0000,0001)", "22 Command Length to End"},
      {"(0008,0000)", "22 Group Length"},
      {"(0008,0016)", "21 SOP Class UID"},
      {"(0008,0420)", "17 Inventory Access End Points Sequence"},  // newer
      {"(0010,0010)", "14 Patient's Name"},
      {"(0012,0022)", "10 Issuer of Clinical Trial Protocol ID"},  // newest
      {"(0020,3104)", "3 Source Image IDs"},
      {"(0028,0106)", "23 Smallest Image Pixel Value"},          // US or SS
      {"(0028,3006)", "13 LUT Data"},                            // US or OW
      {"(5012,3000)", "13 Curve Data"},                          // OB or OW
      {"(300A,067B)", "17 Radiation Generation Mode Sequence"},  // mended
      {"(6002,0010)", "23 Overlay Rows"},
      {"(7FE0,0003)", "-1 Encapsulated Pixel Data Value Total Length"},
      {"(7FE0,0010)", "13 Pixel Data"},
      {"(FFFC,FFFC)", "12 Data Set Trailing Padding"},
      {"(FFFE,E000)", "-1 Item"},
  };
  for (const auto& [tag, entry] : elements) {
    EXPECT_EQ(Element(dictionary_.Get(), tag), entry) << tag;
  }
  const struct {
    const char *uid, *description;
  } uids[] = {
      {"1.2.840.10008.1.1", "Verification SOP Class"},
      {"1.2.840.10008.1.2.2", "Explicit VR Big Endian (Retired)"},
      {"1.2.840.10008.5.1.4.1.1.201.1", "Inventory Storage"},
      {"1.2.840.10008.5.1.4.1.1.40", "MR Image Storage Zero Padded (Retired)"},
  };
  for (const auto& [uid, description] : uids) {
    EXPECT_EQ(dictionary_.Get().LookupUidDescription(uid), description);
  }
}

}  // namespace
}  // namespace dicom::testing
