#include "tracking/byte_array_view.h"

#include <gtest/gtest.h>

#include "errors/errors.h"

namespace dicom {
namespace {

constexpr std::uint8_t kBytes[] = {0x01, 0x80, 0x03, 0xFF, 0x00};

TEST(ByteArrayViewTest, EveryOrderCodeButOneIsLittleEndian) {
  const ByteArrayView view(kBytes, 5);
  EXPECT_EQ(view.WordAt(0, 1), 0x0180);
  EXPECT_EQ(view.LongAt(0, 1), 0x018003FFu);
  for (std::uint32_t order : {0u, 2u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(order);
    EXPECT_EQ(view.WordAt(0, order), 0x8001);
    EXPECT_EQ(view.LongAt(0, order), 0xFF038001u);
  }
}

TEST(ByteArrayViewTest, ReadsEndAtTheLastByteWhateverTheOffset) {
  const ByteArrayView view(kBytes, 5);
  EXPECT_EQ(view.ByteAt(4), 0);
  EXPECT_EQ(view.CharactersAt(3, 2), std::string_view("\xFF\0", 2));
  for (std::uint32_t offset : {5u, 6u, 0x7FFFFFFFu, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
    SCOPED_TRACE(offset);
    EXPECT_THROW(view.ByteAt(offset), OutOfRange);
    EXPECT_THROW(view.WordAt(offset, 1), OutOfRange);
    EXPECT_THROW(view.LongAt(offset, 1), OutOfRange);
    EXPECT_THROW(view.CharactersAt(offset, 4), OutOfRange);
  }
  EXPECT_THROW(view.WordAt(4, 0), OutOfRange);
  EXPECT_THROW(view.LongAt(2, 0), OutOfRange);
  EXPECT_THROW(view.CharactersAt(1, 0xFFFFFFFF), OutOfRange);
  EXPECT_THROW(ByteArrayView().ByteAt(0), OutOfRange);
}

}  // namespace
}  // namespace dicom
