// Texts in the character sets of DICOM. Names and bytes of the first test are
// those of the standard's examples, PS3.5 annexes H to K.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/dataset/character_set.h"

namespace {

using host::CharacterSet;
using host::TextForm;

std::string Name(const std::string& declared, const std::string& bytes) {
  const host::DecodedText text =
      CharacterSet(declared).Decode(bytes, TextForm::kName);
  return text.values.front() +
         (text.finding.empty() ? "" : " !" + text.finding);
}

TEST(CharacterSetTest, NamesInEveryDeclaredSet) {
  const struct {
    const char *declared, *bytes, *name;
  } cases[] = {
      {"", "Adams^John", "Adams^John"},
      {"ISO_IR 100", "Buc^J\xE9r\xF4me", "Buc^Jérôme"},
      {"ISO_IR 100",
       "\xC4neas^R\xFC"
       "diger",
       "Äneas^Rüdiger"},
      {"ISO_IR 101", "Wa\xB3\xEAsa", "Wałęsa"},
      {"ISO_IR 109", "\xC6icpar", "Ĉicpar"},
      {"ISO_IR 110", "B\xE7rzi\xF2\xB9", "Bįrziōš"},
      {"ISO_IR 126", "\xC4\xE9\xEF\xED\xF5\xF3\xE9\xEF\xF2", "Διονυσιος"},
      {"ISO_IR 127", "\xE2\xC8\xC7\xE6\xEA^\xE4\xE6\xD2\xC7\xD1",
       "قباني^لنزار"},
      {"ISO_IR 138", "\xF9\xF8\xE5\xEF^\xE3\xE1\xE5\xF8\xE4", "שרון^דבורה"},
      {"ISO_IR 144", "\xBB\xEEk\xDC\xD5\xDC\xD1yp\xD3", "Люkмембypг"},
      {"ISO_IR 148", "\xDDnan\xFE", "İnanş"},
      {"ISO_IR 203", "\xBC\xA4", "Œ€"},
      {"ISO_IR 166", "\xB9\xD2\xC2\xCA\xC1\xAA\xD2\xC2", "นายสมชาย"},
      {"ISO_IR 13", "\xD4\xCF\xC0\xDE^\xC0\xDB\xB3", "ﾔﾏﾀﾞ^ﾀﾛｳ"},
      {"\\ISO 2022 IR 87",
       "Yamada^Tarou=\x1B$B;3ED\x1B(B^\x1B$BB@O:\x1B(B="
       "\x1B$B$d$^$@\x1B(B^\x1B$B$?$m$&\x1B(B",
       "Yamada^Tarou=山田^太郎=やまだ^たろう"},
      {"ISO 2022 IR 13\\ISO 2022 IR 87",
       "\xD4\xCF\xC0\xDE^\xC0\xDB\xB3=\x1B$B;3ED\x1B(J^\x1B$BB@O:\x1B(J",
       "ﾔﾏﾀﾞ^ﾀﾛｳ=山田^太郎"},
      {"\\ISO 2022 IR 159", "\x1B$(D0!\x1B(B", "丂"},
      {"\\ISO 2022 IR 149",
       "Hong^Gildong=\x1B$)C\xFB\xF3^\x1B$)C\xD1\xCE\xD4\xD7="
       "\x1B$)C\xC8\xAB^\x1B$)C\xB1\xE6\xB5\xBF",
       "Hong^Gildong=洪^吉洞=홍^길동"},
      {"\\ISO 2022 IR 58",
       "Zhang^XiaoDong=\x1B$)A\xD5\xC5^\x1B$)A\xD0\xA1\xB6\xAB",
       "Zhang^XiaoDong=张^小东"},
      {"ISO_IR 192", "Wang^XiaoDong=\xE7\x8E\x8B^\xE5\xB0\x8F\xE6\x9D\xB1",
       "Wang^XiaoDong=王^小東"},
      {"GB18030", "Wang^XiaoDong=\xCD\xF5^\xD0\xA1\xB6\xAB",
       "Wang^XiaoDong=王^小东"},
      {"GBK", "Wang^XiaoDong=\xCD\xF5^\xD0\xA1\xB6\xAB",
       "Wang^XiaoDong=王^小东"},
      {"GB18030", "\x81\x30\x81\x30\x84\x31\xA4\x37\x90\x30\x81\x30",
       "\xC2\x80\xEF\xBF\xBD\xF0\x90\x80\x80"},  // both planes
      {"ISO 2022 IR 100\\ISO 2022 IR 144", "J\xE9r\xF4me^\x1B-L\xBB\xEE=J\xE9",
       "Jérôme^Лю=Jé"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Name(c.declared, c.bytes), c.name) << c.declared;
  }
}

TEST(CharacterSetTest, OnlyABackslashOfItsOwnSeparates) {
  using Values = std::vector<std::string>;
  const struct {
    const char *declared, *bytes;
    Values values;
  } cases[] = {
      {"GBK", "\x81\\\\x", {"乗", "x"}},
      {"GB18030", "\x81\\\\x", {"乗", "x"}},
      {"ISO_IR 192", "\xE4\xB9\x97\\x", {"乗", "x"}},
      {"\\ISO 2022 IR 87", "\x1B$B\\\\\x1B(B\\x", {"樛", "x"}},
      {"ISO_IR 13", "\x83\\\\x", {"ソ", "x"}},  // as Shift JIS has it
  };
  for (const auto& c : cases) {
    const CharacterSet set(c.declared);
    EXPECT_EQ(set.Decode(c.bytes, TextForm::kValues).values, c.values)
        << c.declared;
  }
  EXPECT_EQ(CharacterSet().Decode("a\\b", TextForm::kLong).values,
            Values{"a\\b"});
}

// What an escape switches to ends with the line, the page and the value; in
// names with the component too.
TEST(CharacterSetTest, EscapesEndWhereTheStandardSays) {
  const CharacterSet set("ISO 2022 IR 100\\ISO 2022 IR 144");
  const std::string cyrillic = "\x1B-L\xE1";
  for (const char end : {'\r', '\n', '\f', '\t'}) {
    EXPECT_EQ(set.Decode(cyrillic + end + '\xE1', TextForm::kLong).values[0],
              std::string("с") + end + "á");
  }
  EXPECT_EQ(set.Decode(cyrillic + "\\\xE1", TextForm::kValues).values[1], "á");
  for (const char end : {'^', '='}) {
    EXPECT_EQ(set.Decode(cyrillic + end + '\xE1', TextForm::kName).values[0],
              std::string("с") + end + "á");
    EXPECT_EQ(set.Decode(cyrillic + end + '\xE1', TextForm::kValues).values[0],
              std::string("с") + end + "с");
  }
}

TEST(CharacterSetTest, WhatDoesNotFitTheDeclarationIsTold) {
  const std::string kBad = "\xEF\xBF\xBD";
  const struct {
    const char *declared, *bytes;
    std::string name;
  } cases[] = {
      {"", "J\xE9r\xF4me",
       "Jérôme !holds bytes above 7Fh, but no character set for them is "
       "declared"},
      {"", "J\xC3\xA9r\xC3\xB4me",
       "JÃ©rÃ´me !holds bytes above 7Fh, but no character set for them is "
       "declared; they look like UTF-8"},
      {"ISO_IR 100", "J\xC3\xA9r\xC3\xB4me",
       "JÃ©rÃ´me !declared ISO_IR 100, looks like UTF-8"},
      {"ISO_IR 100", "\xCD\xF5^\xD0\xA1\xB6\xAB",
       "Íõ^Ð¡¶« !declared ISO_IR 100, looks like GBK or KS X 1001"},
      {"ISO_IR 100",
       "Fr\xE9"
       "d\xE9ric",
       "Frédéric"},
      {"ISO_IR 100", "\x8E\x52\x93\x63",
       kBad + "R" + kBad +
           "c !holds bytes that are not of ISO_IR 100; they look like "
           "Shift JIS"},
      {"ISO_IR 192", "J\xE9r\xF4me",
       "J" + kBad + "r" + kBad + "me !holds bytes that are not of ISO_IR 192"},
      {"ISO_IR 192", "\xCD\xF5^\xD0\xA1\xB6\xAB",
       kBad + kBad + "^С" + kBad + kBad +
           " !holds bytes that are not of ISO_IR 192; they look like "
           "GBK or KS X 1001"},
      {"ISO_IR 13", "\x83\\", "ソ !declared ISO_IR 13, looks like Shift JIS"},
      {"ISO 2022 IR 6", "\x1B$B;3\x1B(B",
       "山 !switches to ISO 2022 IR 87, which is not declared"},
      {"", "a\x1Bzb", "a\x1Bzb !holds an escape sequence that is not of DICOM"},
      {"GB18030", "\xCD", kBad + " !holds bytes that are not of GB18030"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Name(c.declared, c.bytes), c.name) << c.declared;
  }
  // Not what is wrong: a letter that is cut.
  const auto cut =
      CharacterSet("ISO_IR 192").Decode("a\xE7\x8E", TextForm::kLong, true);
  EXPECT_EQ(cut.values.front() + cut.finding, "a");
}

TEST(CharacterSetTest, WrongDeclarationsAreTold) {
  const struct {
    const char *declared, *problem;
  } cases[] = {
      {"ISO 2022 IR 6\\ISO 2022 IR 87 ", ""},
      {"ISO_IR 999", "ISO_IR 999 is no character set of DICOM"},
      {"UTF-8", "UTF-8 is no character set of DICOM"},
      {"ISO-IR 100", "ISO-IR 100 is misspelt"},
      {"ISO_IR 100\\ISO_IR 192", "ISO_IR 192 must be declared alone"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CharacterSet(c.declared).problem(), c.problem);
  }
  EXPECT_EQ(Name("ISO-IR 100", "\xE9"), "é");
}

}  // namespace
