// The decoders against files of bytes and the lines that show them.
//
// A case begins with the decoder (`pdu`, `command:NAME`, `implicit`,
// `explicit`, `big` or `unaccepted` for data sets of such a context,
// `message:COMMAND+DATA:CONTEXT`) and its bytes: hexadecimal digits, "texts",
// 00*32 for a repeated byte, {2 ... } and {4 ... } for what has its big-endian
// length before it, <2 ... > and <4 ... > likewise little-endian, and the names
// of a `let`; ";" begins a comment, and indented lines go on. Then come the
// tree's lines, "depth [offset+length] text", where "..." is any number of
// them, and "threw TEXT". A "|" at the end keeps the blanks before it.
//
// Below `each START` are rows: bytes in the place of the "??", and how the line
// that begins with START then goes on. `cut FIRST-LAST POSITION` says where the
// decode of so many of the bytes fails ("?": somewhere, "-": not at all); the
// lines before that stay. `uid` and `tag` are lines of the dictionaries. A line
// `value:VRS:ORDER:POSITION+LENGTH BYTES = TEXT` is a case of its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "dimse/command_set_decoder.h"
#include "dimse/data_set_decoder.h"
#include "dimse/message_decoder.h"
#include "dimse/value_format.h"
#include "tests/test_dictionary.h"
#include "tests/test_host.h"
#include "upper_layer/upper_layer_decoder.h"

namespace dicom::testing {
namespace {

using Strings = std::vector<std::string>;

constexpr std::uint32_t kDataSetAt = 100;  // in the message
const std::map<std::string, std::uint8_t> kContexts = {
    {"implicit", 1}, {"explicit", 3}, {"big", 5}, {"unaccepted", 7}};

Strings Split(const std::string& text, char separator) {
  Strings parts;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, separator);) {
    parts.push_back(part);
  }
  return parts;
}

std::uint32_t Number(const std::string& digits) {
  return static_cast<std::uint32_t>(std::stoll(digits));
}

struct GoldenCase {
  int line;  // in its file
  Strings decoder;
  std::string bytes;
  Strings expected;
  std::string each;
  Strings rows, cuts;
};

class GoldenFile {
 public:
  explicit GoldenFile(const std::string& name) {
    std::ifstream file(GOLDEN_DIR "/" + name);
    int number = 0;
    for (std::string line; std::getline(file, line);) {
      ++number;
      if (line.empty() || line[0] == '#') continue;
      if (line.ends_with('|')) line.pop_back();
      Read(line, number);
    }
  }

  // `row` is what takes the place of "??".
  Bytes BytesOf(const std::string& text, std::string row) const {
    std::istringstream in(text);
    return BytesUpTo("", in, row);
  }

  std::vector<GoldenCase> cases;
  std::string uids, tags;

 private:
  void Read(const std::string& line, int number) {
    const std::string word = line.substr(0, line.find(' '));
    const std::string rest =
        line.substr(std::min(word.size() + 1, line.size()));
    if (word == "uid") {
      uids += rest + "\n";
    } else if (word == "tag") {
      tags += rest + "\n";
    } else if (word == "let") {
      lets_[rest.substr(0, rest.find(' '))] = rest.substr(rest.find('=') + 1);
    } else if (word.empty()) {
      cases.back().bytes += rest + "\n";
    } else if (word == "each") {
      cases.back().each = rest;
    } else if (word == "cut") {
      cases.back().cuts.push_back(rest);
    } else if (word.ends_with(':')) {
      cases.back().rows.push_back(line);
    } else if (word == "..." || word == "threw" || rest.starts_with('[')) {
      cases.back().expected.push_back(line);
    } else {
      const std::size_t equals = std::min(rest.find("= "), rest.size());
      cases.push_back({number,
                       Split(word, ':'),
                       rest.substr(0, equals) + "\n",
                       {},
                       "",
                       {},
                       {}});
      if (equals < rest.size()) {
        cases.back().expected = {rest.substr(equals + 2)};
      }
    }
  }

  Bytes BytesUpTo(const std::string& end, std::istringstream& in,
                  std::string& row) const {
    Bytes bytes;
    for (std::string token; in >> token && token != end;) {
      bytes += BytesOfToken(token, in, row);
    }
    return bytes;
  }

  Bytes BytesOfToken(std::string token, std::istringstream& in,
                     std::string& row) const {
    if (lets_.contains(token)) return BytesOf(lets_.at(token), "");
    switch (token[0]) {
      case ';':
        std::getline(in, token);
        return {};
      case '"':
        while (token.size() < 2 || token.back() != '"') {
          token += static_cast<char>(in.get());
        }
        return Text(token.substr(1, token.size() - 2));
      case '?': {
        const Bytes bytes = HexBytes(row.substr(0, token.size()));
        row.erase(0, token.size());
        return bytes;
      }
      case '{':
      case '<': {
        const Bytes inside = BytesUpTo(token[0] == '{' ? "}" : ">", in, row);
        const auto length = token == "{2"   ? Big16
                            : token == "{4" ? Big32
                            : token == "<2" ? Little16
                                            : Little32;
        return length(inside.Length()) + inside;
      }
    }
    return HexBytes(token);
  }

  static Bytes HexBytes(const std::string& digits) {
    const std::size_t star = digits.find('*');
    Bytes bytes;
    for (std::size_t i = 0; i < std::min(star, digits.size()); i += 2) {
      bytes.push_back(static_cast<std::uint8_t>(
          std::stoul(digits.substr(i, 2), nullptr, 16)));
    }
    return star == digits.npos
               ? bytes
               : Repeat(bytes[0], Number(digits.substr(star + 1)));
  }

  std::map<std::string, std::string> lets_;
};

// Whether the lines from `line` on are those from `next` on.
bool Match(const Strings& lines, std::size_t line, const Strings& expected,
           std::size_t next) {
  if (next == expected.size()) return line == lines.size();
  if (expected[next] != "...") {
    return line < lines.size() && lines[line] == expected[next] &&
           Match(lines, line + 1, expected, next + 1);
  }
  while (line <= lines.size() && !Match(lines, line, expected, next + 1)) {
    ++line;
  }
  return line <= lines.size();
}

// The first section without the lines that name the number of bytes.
std::string LinesOfFields(const std::string& tree, bool is_pdu) {
  std::size_t begin = 0;
  for (int i = is_pdu ? 4 : 1; i > 0; --i) begin = tree.find('\n', begin) + 1;
  return tree.substr(begin, tree.find("0 [", begin) - begin);
}

// Whether the decode ends in the line that it failed there.
bool FailsAt(const std::string& tree, const std::string& position) {
  const std::string start = "ERROR - Could not decode further at Position: ";
  const std::size_t failure = tree.rfind("\n0 [");
  if (failure == tree.npos || tree.find("] " + start, failure) == tree.npos) {
    return false;
  }
  return position == "?" ||
         tree.find("0 [" + position + "+1] " + start +
                       HexAndDecimal(Number(position)) + "\n",
                   failure) != tree.npos;
}

class GoldenTest : public ::testing::TestWithParam<const char*> {
 protected:
  GoldenTest() {
    contexts_.AddPresentationContext(1, "1.2.840.10008.1.2");
    contexts_.AddPresentationContext(3, "1.2.840.10008.1.2.1");
    contexts_.AddPresentationContext(5, "1.2.840.10008.1.2.2");
    host_.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, std::uint32_t{1});
  }
  ~GoldenTest() override { ClearTree(host_.Tree()); }

  std::string Decode(const Strings& decoder, const Bytes& bytes) {
    ClearTree(host_.Tree());
    std::string outcome;
    try {
      if (decoder[0] == "value") return Value(decoder, bytes);
      DecodeTreeWriter writer({host_.Window(), host_.Tree(), host_.Images()},
                              0);
      DecodeInto(writer, decoder, bytes);
    } catch (const std::exception& failure) {
      outcome = std::string("threw ") + failure.what() + "\n";
    }
    return host_.TreeText() + outcome;
  }

  // Zero bytes as "\0".
  static std::string Value(const Strings& decoder, const Bytes& bytes) {
    std::string all;
    for (const std::string& vr : Split(decoder[1], ',')) {
      const Strings range = Split(decoder.size() > 3 ? decoder[3] : "0", '+');
      const std::string text =
          ValueText(ByteArrayView(bytes), Number(range[0]),
                    range.size() > 1 ? Number(range[1]) : bytes.Length(),
                    decoder.size() > 2 && decoder[2] == "big" ? kBigEndian
                                                              : kLittleEndian,
                    vr.find_first_of("0123456789") == vr.npos
                        ? VrCodeOf(vr)
                        : static_cast<std::int32_t>(Number(vr)));
      std::string line;
      for (char c : text) line += c == '\0' ? "\\0" : std::string(1, c);
      EXPECT_TRUE(all.empty() || all == line + "\n") << vr;
      all = line + "\n";
    }
    return all;
  }

  void DecodeInto(DecodeTreeWriter& writer, const Strings& decoder,
                  const Bytes& bytes) {
    const DicomDictionary& dictionary = dictionary_.Get();
    const ByteArrayView view(bytes);
    if (decoder[0] == "pdu") {
      UpperLayerDecoder(view, dictionary, writer).DecodePdu();
    } else if (decoder[0] == "command") {
      const std::string name = decoder.size() > 1 ? decoder[1] : "";
      Run(CommandSetDecoder({view, view.Length(), 0, name, 0}, dictionary,
                            writer));
    } else if (decoder[0] == "message") {
      const Strings lengths = Split(decoder[1], '+');
      MessageDecoder(dictionary, contexts_, writer)
          .DecodeMessage({view, Number(lengths[0]), Number(lengths[1]),
                          "C-SEND-RQ", kContexts.at(decoder[2])});
    } else {
      const Bytes message = Repeat(0, kDataSetAt) + bytes;
      Run(DataSetDecoder({ByteArrayView(message), kDataSetAt, bytes.Length(),
                          "", kContexts.at(decoder[0])},
                         contexts_, dictionary, writer));
    }
  }

  // For a decoder whose failures are another's to show.
  template <typename Decoder>
  static void Run(Decoder decoder) {
    try {
      decoder.Decode();
    } catch (const std::exception&) {
      decoder.ShowFailurePosition();
      throw;
    }
  }

  void CheckRow(const GoldenCase& c, const std::string& row) {
    const std::size_t colon = row.find(": ");
    const std::string tree =
        Decode(c.decoder, file_.BytesOf(c.bytes, row.substr(0, colon)));
    const std::string line = "\n" + c.each + row.substr(colon + 2) + "\n";
    EXPECT_NE(tree.find(line), tree.npos) << row << "\n" << tree;
  }

  void CheckCut(const GoldenCase& c, const std::string& cut) {
    const bool is_pdu = c.decoder[0] == "pdu";
    const Bytes bytes = file_.BytesOf(c.bytes, "");
    const std::string whole = LinesOfFields(Decode(c.decoder, bytes), is_pdu);
    const Strings words = Split(cut, ' ');
    const Strings range = Split(words[0], '-');
    for (std::uint32_t n = Number(range[0]); n <= Number(range.back()); ++n) {
      const std::string tree = Decode(c.decoder, bytes.First(n));
      EXPECT_EQ(FailsAt(tree, words[1] == "-" ? "?" : words[1]),
                words[1] != "-")
          << n << "\n"
          << tree;
      EXPECT_EQ(tree.ends_with("threw Out of Range\n"),
                words[1] != "-" && !is_pdu);
      if (n < (is_pdu ? 6u : 1u)) continue;
      EXPECT_TRUE(whole.starts_with(LinesOfFields(tree, is_pdu))) << tree;
    }
  }

  TestHost host_;
  PresentationContextTable contexts_;
  const GoldenFile file_{GetParam()};
  TestDictionary dictionary_{file_.uids, file_.tags};
};

TEST_P(GoldenTest, BytesBecomeTheseLines) {
  EXPECT_GT(file_.cases.size(), 5u);
  for (const GoldenCase& c : file_.cases) {
    SCOPED_TRACE(std::string(GetParam()) + ":" + std::to_string(c.line));
    ASSERT_NE(c.expected.empty(), c.each.empty());
    if (c.each.empty()) {
      const std::string tree = Decode(c.decoder, file_.BytesOf(c.bytes, ""));
      EXPECT_TRUE(Match(Split(tree, '\n'), 0, c.expected, 0)) << tree;
    }
    for (const std::string& row : c.rows) CheckRow(c, row);
    for (const std::string& cut : c.cuts) CheckCut(c, cut);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Decoders, GoldenTest,
    ::testing::Values("dimse/command_set_decoder.txt",
                      "dimse/data_set_decoder.txt", "dimse/message_decoder.txt",
                      "upper_layer/upper_layer_decoder.txt",
                      "dimse/value_format.txt"));

}  // namespace
}  // namespace dicom::testing
