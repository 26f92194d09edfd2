#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/dialogue/dialogue_reader.h"
#include "host/page/data_section.h"
#include "host/page/ladder.h"
#include "host/page/markup.h"
#include "host/streams/capture_loader.h"

namespace host {
namespace {

TEST(MarkupTest, NoTextOfACaptureMeansAnythingToABrowser) {
  EXPECT_EQ(Markup("<img src=\"x\" alt='&'>"),
            "&lt;img src=&quot;x&quot; alt=&#39;&amp;&#39;&gt;");
  // No control, nothing that turns a text round, nothing that is no UTF-8.
  for (const char* unfit : {"\x1B", "\x7F", "\xC2\x85", "\xE2\x80\xAE",
                            "\xE2\x81\xA7", "\xEF\xBF\xBF", "\xFF"}) {
    EXPECT_EQ(Markup(std::string("a") + unfit + "<"), "a\xEF\xBF\xBD&lt;");
  }
  EXPECT_EQ(Markup("\xC3\xBC\xE2\x80\xA6\t\n"), "\xC3\xBC\xE2\x80\xA6\t\n");
  EXPECT_EQ(Shortened("\xC3\xBC\xC3\xBC<", 2), "\xC3\xBC\xC3\xBC\xE2\x80\xA6");
  EXPECT_EQ(Shortened("\xC3\xBC\xC3\xBC", 2), "\xC3\xBC\xC3\xBC");
}

// Forty-two objects are stored, of which one is refused.
TEST(LadderTest, WhatIsAlikeIsOneRungAndAFailureShows) {
  constexpr std::uint32_t kObjects = 42;
  Dialogue dialogue;
  dialogue.associations.resize(1);
  dialogue.associations[0].end_message = 2 * kObjects;
  for (std::uint32_t i = 0; i < kObjects; ++i) {
    DialogueMessage request;
    request.has_command_field = request.command_complete = true;
    request.command_field = kCStoreRq;
    request.sop_class = "1.2.840.10008.5.1.4.1.1.2";
    request.data_bytes = 100;
    request.first_frame = request.last_frame = 2 * i + 1;
    request.first_time = request.last_time =
        Nanoseconds{1'000'000'000} * (i + 1);
    request.answers = 1;
    request.last_answer = 2 * i + 1;
    DialogueMessage answer = request;
    answer.direction = 1;
    answer.command_field = kCStoreRq | kAnswerBit;
    answer.status = i == 20 ? 0xA700 : 0;
    answer.first_frame = answer.last_frame = 2 * i + 2;
    dialogue.messages.push_back(request);
    dialogue.messages.push_back(answer);
  }
  const Connection connection;
  SceneConnection at;
  at.connection = &connection;
  at.dialogue = &dialogue;
  const std::vector<Rung> rungs = LadderOf(at, 10);
  ASSERT_EQ(rungs.size(), 2u);
  EXPECT_EQ(rungs[0].text,
            "42 x C-STORE CT Image Storage, 4,200 bytes in 41 s");
  EXPECT_TRUE(rungs[0].from_client);
  EXPECT_EQ(rungs[1].text,
            "42 answers, 1 failed (first A700h Refused: Out of resources)");
  EXPECT_EQ(rungs[1].severity, Severity::kFault);
  EXPECT_EQ(rungs[1].last_frame, 84u);

  std::vector<std::string> classes;
  for (std::uint32_t i = 0; i < kObjects; ++i) {
    classes.push_back("1.2." + std::to_string(i));
  }
  for (std::size_t i = 0; i < dialogue.messages.size(); ++i) {
    dialogue.messages[i].sop_class = classes[i / 2];
  }
  const std::vector<Rung> many = LadderOf(at, 10);
  ASSERT_EQ(many.size(), 10u);
  EXPECT_EQ(many[6].text, "75 more steps left out here");
  EXPECT_FALSE(many[6].is_sent);
  EXPECT_EQ(many[9].last_frame, 84u);
}

TEST(DataSectionTest, WhatIsAskedForIsShownWithoutMeaningAnything) {
  CaptureLoader loader(SOURCE_DIR "/samples/find_worklist.pcapng",
                       {.observe = ReadDialogues()});
  loader.Read([] { return false; });
  const auto connections = loader.connections().Take();
  const Scene scene({&connections.at(0)}, {});
  const std::string section = DataSection(scene.connections()[0]);
  EXPECT_NE(section.find("<h4>C-FIND-RQ, message ID 1, frame 8-10</h4>"),
            std::string::npos);
  EXPECT_NE(section.find("Patient&#39;s Name: Worklist*\n"), std::string::npos)
      << section;
}

}  // namespace
}  // namespace host
