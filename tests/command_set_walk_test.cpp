#include "tracking/command_set_walk.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>

#include "errors/errors.h"

namespace dicom {
namespace {

TEST(CommandNameTest, NamesKeepTheirOddSpellingAndCompareAllSixteenBits) {
  EXPECT_EQ(CommandName(0x0001), "C-SEND-RQ");
  EXPECT_EQ(CommandName(0x8001), "C-SEND-RSP");
  EXPECT_EQ(CommandName(0x0100), "C-EVENT-REPORT-RQ");
  EXPECT_EQ(CommandName(0x8100), "C-EVENT_REPORT-RSP");
  EXPECT_EQ(CommandName(0x0FFF), "C-CANCEL-RQ");
  EXPECT_EQ(CommandName(0x8150), "N-DELETE-RSP");
  using Field = std::uint16_t;
  for (Field field :
       std::initializer_list<Field>{0, 2, 0x8000, 0x8101, 0x8FFF, 0xFFFF}) {
    SCOPED_TRACE(field);
    EXPECT_EQ(CommandName(field), "Unknown Type");
  }
}

TEST(NextCommandElementTest, StepsBehindEachValueUntilTheEnd) {
  constexpr std::uint8_t kBytes[] = {
      0x00, 0x00, 0x00, 0x01, 2, 0, 0, 0, 0x30, 0x00,  // (0000,0100)
      0x08, 0x10, 0xFE, 0xFF, 0, 0, 0, 0,              // (1008,FFFE), empty
  };
  const ByteArrayView bytes(kBytes, sizeof(kBytes));
  std::uint32_t position = 0;
  CommandElement element;
  ASSERT_TRUE(NextCommandElement(bytes, position, element));
  EXPECT_TRUE(element.Is(0x0000, 0x0100));
  EXPECT_EQ(element.value_offset, 8u);
  EXPECT_EQ(element.value_length, 2u);
  ASSERT_TRUE(NextCommandElement(bytes, position, element));
  EXPECT_TRUE(element.Is(0x1008, 0xFFFE));
  EXPECT_EQ(position, 18u);
  EXPECT_FALSE(NextCommandElement(bytes, position, element));
}

// FFFFFFF8h would come back to the same element for ever if it wrapped.
TEST(NextCommandElementTest, LengthThatWouldWrapEndsTheWalk) {
  constexpr std::uint8_t kBytes[] = {0, 0, 0, 0, 0xF8, 0xFF, 0xFF, 0xFF, 0};
  std::uint32_t position = 0;
  CommandElement element;
  ASSERT_TRUE(NextCommandElement({kBytes, 9}, position, element));
  EXPECT_EQ(position, 0xFFFFFFFFu);
  EXPECT_FALSE(NextCommandElement({kBytes, 9}, position, element));
}

TEST(NextCommandElementTest, CutTagOrLengthThrowsAndStaysAtTheElement) {
  constexpr std::uint8_t kBytes[8] = {};
  for (std::uint32_t length = 1; length < 8; ++length) {
    SCOPED_TRACE(length);
    std::uint32_t position = 0;
    CommandElement element;
    EXPECT_THROW(NextCommandElement({kBytes, length}, position, element),
                 OutOfRange);
    EXPECT_EQ(position, 0u);
  }
}

}  // namespace
}  // namespace dicom
