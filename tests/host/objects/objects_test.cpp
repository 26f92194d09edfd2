#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "host/dialogue/dialogue_reader.h"
#include "host/objects/data_set_dump.h"
#include "host/objects/dicom_json.h"
#include "host/objects/element_values.h"
#include "host/objects/object_export.h"
#include "host/objects/sha256.h"
#include "host/rows/hex_layout.h"
#include "host/rows/message_outline.h"
#include "host/text/failure.h"
#include "tests/wire_builder.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using dicom::testing::CommandSet;
using dicom::testing::ExplicitElement;
using dicom::testing::ImplicitElement;
using dicom::testing::Little16;
using dicom::testing::Repeat;
using dicom::testing::Text;
using dicom::testing::Uid;

// "abc" and 448 bits are the examples of FIPS 180-4; the third crosses blocks.
TEST(Sha256Test, KnowsItsExamples) {
  const auto hash = [](const Bytes& bytes, std::size_t step) {
    Sha256 sha;
    for (std::size_t at = 0; at < bytes.size(); at += step) {
      sha.Add(bytes.Part(at, step));
    }
    return sha.Finish();
  };
  EXPECT_EQ(hash(Text("abc"), 3),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  const Bytes two_blocks =
      Text("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq");
  for (const std::size_t step : {1, 55, 56}) {
    EXPECT_EQ(
        hash(two_blocks, step),
        "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  }
  EXPECT_EQ(hash(Repeat('a', 1'000'000), 4097),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(SafeFileNameTest, FitsEverySystem) {
  const struct {
    std::string text, name;
  } kCases[] = {{"1.2.840.10008", "1.2.840.10008"},
                {"../../etc/passwd", "_.._.._etc_passwd"},
                {"C:\\x*?\"<>|", "C__x______"},
                {"", "_"},
                {"1.2.", "1.2_"},
                {"nul.1", "_nul.1"},
                {"COM7", "_COM7"},
                {"COMA", "COMA"},
                {std::string(300, '1'), std::string(100, '1')}};
  for (const auto& one : kCases) EXPECT_EQ(SafeFileName(one.text), one.name);
}

class ObjectsTest : public testing::Test {
 protected:
  ObjectsTest()
      : folder_(
            fs::temp_directory_path() /
            ("objects_test" +
             std::to_string(testing::UnitTest::GetInstance()->random_seed()) +
             testing::UnitTest::GetInstance()->current_test_info()->name())) {
    fs::remove_all(folder_);
  }
  ~ObjectsTest() override { fs::remove_all(folder_); }

  // A C-STORE request; `last` is the control byte of its data set.
  void Store(const std::string& uid, const Bytes& data,
             std::uint8_t last = kLastData) {
    const Bytes command = CommandSet(
        ImplicitElement(0, 0x0002, Uid("1.2.840.10008.5.1.4.1.1.7")) +
        ImplicitElement(0, 0x0100, Little16(1)) +
        ImplicitElement(0, 0x0110, Little16(++messages_)) +
        ImplicitElement(0, 0x0800, Little16(0)) +
        ImplicitElement(0, 0x1000, Uid(uid)));
    const std::size_t half = data.size() / 2;
    using dicom::testing::Pdv;
    wire_.SendAll(0, {PData(Pdv(1, kLastCommand, command) +
                            Pdv(1, kData, data.Part(0, half))),
                      PData(Pdv(1, last, data.Part(half, data.size())))});
  }
  const Dialogue& Read() {
    wire_.Close();
    connections_ =
        Connect(wire_.segments, HandOver::kCleanStreams, ReadDialogues());
    return *DialogueOf(connections_.at(0));
  }
  std::string FileText(const std::string& name) const {
    std::ifstream file(folder_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  const fs::path folder_;
  std::uint16_t messages_ = 0;
  Wire wire_;
  std::vector<Connection> connections_;
};

// A worklist's item: a name in Latin 1, a sequence, numbers, bytes.
Bytes DataSet() {
  const Bytes item = ExplicitElement(0x0040, 0x0007, "LO", Text("CT THORAX "));
  return ExplicitElement(0x0008, 0x0005, "CS", Text("ISO_IR 100")) +
         ExplicitElement(0x0010, 0x0010, "PN", Text("M\xFCller^Eva")) +
         ExplicitElement(0x0028, 0x0010, "US", Little16(512)) +
         ExplicitElement(0x0040, 0x0275, "SQ",
                         ImplicitElement(0xFFFE, 0xE000, item)) +
         ExplicitElement(0x7FE0, 0x0010, "OB", Bytes{1, 2, 3, 4});
}

TEST_F(ObjectsTest, ShowsWhatAMessageCarries) {
  wire_.Begin();
  Store("1.2.3", DataSet());
  const Dialogue& dialogue = Read();
  const DialogueMessage& message = dialogue.messages.at(0);
  std::string dump;
  DumpMessage(dialogue, message, [&](std::string_view line) { dump += line; });
  for (const char* line :
       {"  data set, 100 bytes, Explicit VR Little Endian (guessed)\n",
        "       18  0010,0010            PN        10  Patient's Name: "
        "Müller^Eva",
        "       66  0040,0275[1].0040,0007 LO        10  Scheduled Procedure "
        "Step "
        "Description: CT THORAX\n"}) {
    EXPECT_PRED_FORMAT2(testing::IsSubstring, line, dump);
  }

  const auto json = [&](std::uint64_t most_inline) {
    std::string text;
    DicomJson([&](std::string_view part) { text += part; }, most_inline)
        .Write(dialogue, message);
    return text.substr(text.find("\"data_set\""));
  };
  const std::string kUpToPixels =
      R"("data_set":{"00080005":{"vr":"CS","Value":["ISO_IR 100"]},)"
      R"("00100010":{"vr":"PN","Value":[{"Alphabetic":"Müller^Eva"}]},)"
      R"("00280010":{"vr":"US","Value":[512]},"00400275":{"vr":"SQ",)"
      R"("Value":[{"00400007":{"vr":"LO","Value":["CT THORAX"]}}]},)"
      R"("7FE00010":{"vr":"OB",)";
  EXPECT_EQ(json(4), kUpToPixels + R"("InlineBinary":"AQIDBA=="}})");
  EXPECT_EQ(json(3),
            kUpToPixels + R"("BulkDataURI":"data_set?offset=96&length=4"}})");

  EXPECT_EQ(FindValues(dialogue, message,
                       {*ParseElementPath("0040,0275.00400007"),
                        *ParseElementPath("0000,1000"),
                        *ParseElementPath("0010,0020")}),
            (std::vector<std::string>{"CT THORAX", "1.2.3", ""}));
  for (const char* none :
       {"", "0010", "0010,002g", "0010,0020.", ".00100020"}) {
    EXPECT_FALSE(ParseElementPath(none)) << none;
  }
}

// Bytes of any length, fragments, and sequences that call themselves UN.
TEST_F(ObjectsTest, WritesBytesIntoJson) {
  const Bytes item = ImplicitElement(
      0xFFFE, 0xE000, ImplicitElement(0x0010, 0x0020, Text("ID")));
  const Bytes head = ExplicitElement(0x0008, 0x0060, "CS", Text("CT"));
  const auto bytes = [](std::uint16_t group, const char* vr,
                        std::uint32_t length, const Bytes& value) {
    return Little16(group) + Little16(0x0010) + Text(vr) + Little16(0) +
           dicom::testing::Little32(length) + value;
  };
  const Bytes end = ImplicitElement(0xFFFE, 0xE0DD, {});
  const Bytes fragments = ImplicitElement(0xFFFE, 0xE000, {}) +
                          ImplicitElement(0xFFFE, 0xE000, Bytes{1, 2});
  wire_.Begin();
  Store("1.2.3", head + bytes(0x0018, "UN", 0xFFFFFFFF, item + end) +
                     bytes(0x0020, "UN", 8, item.First(4) + Bytes(4)) +
                     bytes(0x0054, "OB", 30000, Bytes(30000)) +
                     bytes(0x7FE0, "OB", 0xFFFFFFFF, fragments + end));
  const Dialogue& dialogue = Read();
  std::string text;
  DicomJson([&](std::string_view part) { text += part; }, 30000)
      .Write(dialogue, dialogue.messages.at(0));
  EXPECT_EQ(text.substr(text.find("\"data_set\"")),
            R"("data_set":{"00080060":{"vr":"CS","Value":["CT"]},)"
            R"("00180010":{"vr":"SQ","Value":[{"00100020":)"
            R"({"vr":"LO","Value":["ID"]}}]},)"
            R"("00200010":{"vr":"UN","InlineBinary":"/v8A4AAAAAA="},)"
            R"("00540010":{"vr":"OB","InlineBinary":")" +
                std::string(40000, 'A') +
                R"("},"7FE00010":{"vr":"OB","InlineBinary":")"
                R"(/v8A4AAAAAD+/wDgAgAAAAEC"}})");
}

// A name whose header and value came in two frames, before a sequence.
TEST_F(ObjectsTest, FindsTheFramesOfAnElement) {
  wire_.Begin();
  wire_.segment_bytes = 68;
  Store("1.2.3", DataSet());
  const auto frame_with = [this](const std::string& text) {
    std::size_t at = 0;
    const auto holds = [&text](const Bytes& bytes) {
      return std::string(bytes.begin(), bytes.end()).find(text) != text.npos;
    };
    while (!holds(wire_.segments.at(at).payload)) ++at;
    return std::to_string(at + 1);
  };
  const Dialogue& dialogue = Read();
  const auto text = [](std::uint32_t first, std::uint32_t last) {
    return std::to_string(first) + "-" + std::to_string(last);
  };
  std::string dump;
  DumpMessage(
      dialogue, dialogue.messages.at(0),
      [&](std::string_view line) { dump += line; }, text);
  ASSERT_NE(frame_with("PN"), frame_with("Eva"));
  const std::string blanks(10, ' ');
  for (const std::string& line :
       {frame_with("PN") + "-" + frame_with("Eva") + blanks + "0010,0010",
        frame_with("SQ") + "-" + frame_with("SQ") + blanks + "0040,0275",
        frame_with("1.2.3") + "-" + frame_with("1.2.3") + blanks +
            "0000,1000"}) {
    EXPECT_PRED_FORMAT2(testing::IsSubstring, line, dump);
  }
}

// A sequence of 1,200 items, each with one element, and one behind it.
TEST_F(ObjectsTest, AnOutlineIsReadWhereItIsLookedAt) {
  Bytes items;
  for (int i = 0; i < 1200; ++i) {
    const std::string value = "V" + std::to_string(1000 + i) + " ";
    items = items +
            ImplicitElement(0xFFFE, 0xE000,
                            ExplicitElement(0x0008, 0x0100, "SH", Text(value)));
  }
  const Bytes data = ExplicitElement(0x0010, 0x0020, "LO", Text("ID")) +
                     ExplicitElement(0x0032, 0x1064, "SQ", items) +
                     ExplicitElement(0x0040, 0x1001, "SH", Text("END "));
  wire_.Begin();
  Store("1.2.3", data);
  wire_.Send(1, PData(dicom::testing::Pdv(
                    1, kLastCommand,
                    CommandSet(ImplicitElement(0, 0x0100, Little16(0x8001)) +
                               ImplicitElement(0, 0x0120, Little16(1)) +
                               ImplicitElement(0, 0x0800, Little16(0x0101))))));
  const Dialogue& dialogue = Read();
  MessageOutline outline(dialogue, dialogue.messages.at(0));
  EXPECT_EQ(outline.Parts(), 2u);
  EXPECT_EQ(MessageOutline(dialogue, dialogue.messages.at(1)).Parts(), 1u);
  const auto always = [] { return true; };

  OutlineCursor cursor = outline.PartAt(MessageOutline::kDataSet);
  std::vector<std::string> lines;
  std::optional<OutlineCursor> below;
  while (cursor.Next(always).value_or(false)) {
    if (cursor.level() > 0) continue;
    lines.push_back(cursor.Line().text);
    if (cursor.Line().opens) below.emplace(cursor.Below());
  }
  EXPECT_EQ(lines, (std::vector<std::string>{
                       "(0010,0020) LO Patient ID: ID",
                       "(0032,1064) SQ Requested Procedure Code Sequence",
                       "(0040,1001) SH Requested Procedure ID: END"}));
  ASSERT_TRUE(below);
  std::size_t children = 0;
  while (below->Next(always).value_or(false)) children += below->level() == 0;
  EXPECT_EQ(children, 1200u);

  const OutlinePath kLast{MessageOutline::kDataSet, 1, 1199, 0};
  EXPECT_EQ(outline.Find("v2199", {}, false, always), kLast);
  EXPECT_EQ(outline.Find("code VALUE: v", {0}, true, always), kLast);
  EXPECT_EQ(outline.Find("code VALUE: v", kLast, true, always),
            (OutlinePath{MessageOutline::kDataSet, 1, 1198, 0}));
  EXPECT_EQ(outline.Find("code VALUE: v", kLast, false, always),
            (OutlinePath{MessageOutline::kDataSet, 1, 0, 0}));
  const std::uint64_t end = outline.size();
  EXPECT_EQ(outline.LineAt(end - 1, always),
            (OutlinePath{MessageOutline::kDataSet, 2}));
  EXPECT_EQ(outline.LineAt(end - 13, always), kLast);
  const auto is_time_up = [] { return false; };
  EXPECT_EQ(outline.Find("v2199", {}, false, is_time_up), std::nullopt);

  std::vector<std::uint8_t> bytes(100);
  EXPECT_EQ(outline.Copy(end - 4, bytes), 4u);
  EXPECT_EQ(bytes[0], 'E');
  // Addresses of 8 digits where 4 are too few for the last one.
  EXPECT_EQ(DumpText(std::span(bytes).first(2), 0x10000),
            "00010000  45 4E" + std::string(47, ' ') + "EN\r\n");
}

TEST_F(ObjectsTest, SavesEachObjectOnce) {
  wire_.Begin();
  Store("1.2.3", DataSet());
  Store("1.2.3", DataSet());
  wire_.segments.pop_back();  // nobody has acknowledged what is lost next
  Store("1.2.4", DataSet() + Repeat(0x20, 3000));
  wire_.segments.erase(wire_.segments.end() - 2);
  Store("1.2.5", DataSet());
  Store("1.2.6", DataSet(), kData);
  const Dialogue& dialogue = Read();
  ObjectExport files(folder_, {});
  fs::create_directories(folder_ / "1.2.5.dcm");  // taken already
  for (std::size_t i = 0; i < dialogue.messages.size(); ++i) {
    files.Add({0, i, i}, dialogue);
  }
  files.WriteManifest();

  const Bytes data = DataSet();
  const std::string sent(data.begin(), data.end());
  const std::string whole = FileText("1.2.3.dcm");
  EXPECT_EQ(whole.substr(0, 132), std::string(128, '\0') + "DICM");
  EXPECT_TRUE(whole.ends_with(sent));
  EXPECT_EQ(FileText("1.2.3-2.dcm"), whole);
  EXPECT_TRUE(FileText("1.2.5-2.dcm").ends_with(sent));
  EXPECT_TRUE(FileText("1.2.6.partial").ends_with(sent));
  const auto& objects = files.Objects();
  ASSERT_EQ(objects.size(), 5u);
  EXPECT_EQ(objects[1].same_content_as, "1.2.3.dcm");
  EXPECT_EQ(objects[2].file, "1.2.4.partial");
  EXPECT_FALSE(objects[2].filled.empty());
  EXPECT_EQ(objects[3].incomplete, "");
  std::size_t there = 0;
  for (const auto& entry : fs::directory_iterator(folder_)) {
    there += entry.path().filename().string()[0] != '.';
  }
  EXPECT_EQ(there, 5u + 1 + 2);  // with the folder, and the manifests
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "1.2.3-2.dcm,yes,,1,2,C-STORE-RQ,",
                      FileText("manifest.csv"));

  std::ofstream(folder_ / "file");
  EXPECT_THROW(ObjectExport(folder_ / "file" / "below", {}), Failure);
}

}  // namespace
}  // namespace host
