#include "host/capdump/options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "host/capdump/help_text.h"
#include "host/capdump/option_table.h"

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
  EXPECT_EQ(options.captures, std::vector<std::string>{"a b.pcap"});
  EXPECT_EQ(options.row, 11U);
  EXPECT_EQ(options.connection, 1U);
  EXPECT_EQ(options.save_file, "out.txt");
  EXPECT_TRUE(options.as_captured);
  EXPECT_EQ(options.Lists(), std::vector{ListKind::kMessages});
}

TEST(OptionsTest, LittleNeedsToBeSaid) {
  const std::vector both = {ListKind::kPdus, ListKind::kMessages};
  EXPECT_EQ(ParseOptions({"a"}).Lists(), both);
  EXPECT_EQ(ParseOptions({"a", "--messages", "--pdus"}).Lists(), both);
  EXPECT_EQ(ParseOptions({"--pdus", "a"}).Lists(),
            std::vector{ListKind::kPdus});
  const std::vector<std::string> captures = {"a", "--tree"};
  EXPECT_EQ(ParseOptions({"a", "--", "--tree"}).captures, captures);
  EXPECT_EQ(ParseOptions({"-"}).captures, std::vector<std::string>{"-"});
  const CapturePart part = ParseOptions({"a", "--part", "2/4"}).part;
  EXPECT_EQ(std::pair(part.index, part.count), std::pair(1u, 4u));
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
      {{"a", "--part", "3/2"},
       "The option --part wants a part as 2/4, of which the first number is "
       "not the greater one, not \"3/2\"."},
      {{"a", "-"},
       "Standard input is read alone: name no other capture beside -."},
      {{"a", "--timing", "--csv", "--json"},
       "The options --csv and --json do not go together: leave out one of "
       "them."},
      {{"a", "--pdus", "--contexts"},
       "The options --pdus and --contexts do not go together: leave out one "
       "of them."},
      {{"a", "--dump", "--row", "5", "--as-captured"},
       "The options --dump and --as-captured do not go together: leave out "
       "one of them."},
      {{"a", "--follow", "--report", "b"},
       "The options --follow and --report do not go together: leave out one "
       "of them."},
      {{"a", "--export-identifiers"},
       "The option --export-identifiers says nothing without --export: add "
       "that, or leave it out."}};
  for (const auto& [arguments, sentence] : mistakes) {
    EXPECT_EQ(ErrorOf(arguments), sentence);
  }
}

std::string TextOf(const std::string& name) {
  std::ifstream file(SOURCE_DIR "/" + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(OptionTableTest, EveryPlaceThatNamesTheOptionsAgrees) {
  std::string table = "| option | |\n|---|---|\n", in_shell;
  std::string_view group;
  for (const OptionRow& option : OptionTable()) {
    if (option.group != group) {
      table += "| **" + std::string(option.group) + "** | |\n";
    }
    group = option.group;
    const std::string name(option.name);
    table += "| `" + name + (option.TakesValue() ? " " : "") +
             std::string(option.value) + "`" +
             (option.letter.empty() ? "" : ", `") + std::string(option.letter) +
             (option.letter.empty() ? "" : "`") + " | " +
             std::string(option.help) + " |\n";
    if (option.TakesValue()) in_shell += (in_shell.empty() ? "" : " | ") + name;
  }
  EXPECT_NE(TextOf("docs/capdump.md").find(table + "\n"), std::string::npos)
      << "docs/capdump.md needs this table:\n\n"
      << table;
  EXPECT_NE(TextOf("run.sh").find("      " + in_shell + ")\n"),
            std::string::npos)
      << "run.sh has to know the options with a value:\n\n"
      << in_shell;
  EXPECT_NE(HelpText().find("\n"
                            "  --tree               the decode tree of each "
                            "row, each line with its bytes as\n"
                            "                       [offset+length]\n"),
            std::string::npos)
      << HelpText();
}

}  // namespace
}  // namespace host
