#include "errors/errors.h"

#include <gtest/gtest.h>

namespace dicom {
namespace {

TEST(ErrorsTest, EachFailureHasItsText) {
  EXPECT_STREQ(OutOfMemory().what(), "Out of Memory");
  EXPECT_STREQ(OutOfRange().what(), "Out of Range");
  EXPECT_STREQ(Unexpected().what(), "Unexpected");
  EXPECT_STREQ(ErrorWhileOpenFile().what(),
               "An Error occured after trying to open a file!");
  EXPECT_STREQ(ArrayTooShort().what(), "Packet too short for Tcp Header!");
  EXPECT_STREQ(WrongTreeDepth().what(),
               "The tree depth has reached the maximum or is too low!");
  EXPECT_STREQ(DoublePresentationContextId().what(),
               "The Presentation context already exist.");
  EXPECT_STREQ(PresentationContextDoesNotExist().what(),
               "The Presentation context does not exist.");
  EXPECT_STREQ(HandleNotSet().what(), "Handle needs to be set!!!");
  EXPECT_STREQ(TransferSyntaxNotExist().what(),
               "The Transfer Syntax does not exist!");
  EXPECT_STREQ(UnableToGetPacketFromTapvane().what(),
               "Unable to get Packet From Tapvane");
}

}  // namespace
}  // namespace dicom
