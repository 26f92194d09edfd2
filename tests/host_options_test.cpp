#include <gtest/gtest.h>

#include "host/capdump/options.h"

namespace host {
namespace {

std::string ErrorOf(const std::vector<std::string>& arguments) {
  try {
    ParseOptions(arguments);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(OptionsTest, EverythingCanBeAskedForAtOnce) {
  const Options options = ParseOptions(
      {"--tree", "--filter", "port 104", "a b.pcap", "--row=12", "--save",
       "out.txt", "--connection", "2", "--as-captured", "--messages"});
  EXPECT_TRUE(options.tree);
  EXPECT_FALSE(options.hex);
  EXPECT_EQ(options.filter, "port 104");
  EXPECT_EQ(options.capture, "a b.pcap");
  EXPECT_EQ(options.row, 11U);
  EXPECT_EQ(options.connection, 1U);
  EXPECT_EQ(options.save_file, "out.txt");
  EXPECT_TRUE(options.as_captured);
  EXPECT_EQ(options.lists, std::vector{ListKind::kMessages});
}

TEST(OptionsTest, LittleNeedsToBeSaid) {
  const std::vector both = {ListKind::kPdus, ListKind::kMessages};
  EXPECT_EQ(ParseOptions({"a"}).lists, both);
  EXPECT_EQ(ParseOptions({"a", "--messages", "--pdus"}).lists, both);
  EXPECT_EQ(ParseOptions({"--pdus", "a"}).lists, std::vector{ListKind::kPdus});
  EXPECT_EQ(ParseOptions({"--", "--tree"}).capture, "--tree");
  EXPECT_EQ(ParseOptions({"-"}).capture, "-");
  EXPECT_TRUE(ParseOptions({"--help"}).help);
  EXPECT_TRUE(ParseOptions({"--version"}).version);
}

TEST(OptionsTest, MistakesSayWhatToDo) {
  const std::string help = ": capdump --help lists the options.";
  const std::pair<std::vector<std::string>, std::string> mistakes[] = {
      {{}, "Name a capture file to read" + help},
      {{"--row", "0", "a"},
       "The option --row wants a number from 1 on, not \"0\"."},
      {{"a", "--row", "4x"},
       "The option --row wants a number from 1 on, not \"4x\"."},
      {{"a", "--connection"},
       "The option --connection wants a number behind it."},
      {{"a", "--save", ""},
       "The option --save wants the file to write behind it."},
      {{"a", "--trees"}, "There is no option \"--trees\"" + help},
      {{"a", "--tree=yes"}, "The option --tree takes no value" + help},
      {{"a", "b"},
       "Only one capture at a time can be opened, not \"a\" and \"b\"."}};
  for (const auto& [arguments, sentence] : mistakes) {
    EXPECT_EQ(ErrorOf(arguments), sentence);
  }
}

}  // namespace
}  // namespace host
