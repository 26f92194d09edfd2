// The registries in the program: that every line of them can be found, and what
// stands for more than one element.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "host/dataset/registry.h"

namespace {

using host::FindElement;
using host::FindPrivateElement;
using host::FindUid;
using host::Tag;

constexpr char kElements[] =
#include "host/dataset/registry_elements.inc"
    ;
constexpr char kPrivate[] =
#include "host/dataset/registry_private.inc"
    ;
constexpr char kUids[] =
#include "host/dataset/registry_uids.inc"
    ;

template <class Check>
int ForEachLine(const char* text, Check check) {
  std::istringstream lines(text + 1);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) check(line);
  return count;
}

// `digit` for each x.
Tag TagOf(std::string text, char digit) {
  for (char& c : text) c = c == 'x' ? digit : c;
  const auto number = [&](std::size_t at) {
    return static_cast<std::uint16_t>(std::stoul(text.substr(at, 4), {}, 16));
  };
  return {number(0), number(5)};
}

std::string Element(const std::optional<host::ElementEntry>& entry) {
  if (!entry) return "-";
  std::string text(entry->vr);
  return text.append(" ").append(entry->vm).append(" ").append(entry->name) +
         (entry->retired ? ", retired" : "");
}

TEST(RegistryTest, EveryLineIsFound) {
  const int elements = ForEachLine(kElements, [](const std::string& line) {
    const auto entry = FindElement(TagOf(line.substr(0, 9), '2'));
    ASSERT_TRUE(entry) << line;
    EXPECT_NE(line.find('\t' + std::string(entry->name)), line.npos) << line;
  });
  EXPECT_GE(elements, 5189 + 88);
  std::string creator;
  int creators = 0;
  const int lines = ForEachLine(kPrivate, [&](const std::string& line) {
    if (line[0] == '=') {
      creator = line.substr(1);
      ++creators;
      return;
    }
    const auto entry = FindPrivateElement(creator, TagOf(line, '1'));
    ASSERT_TRUE(entry) << creator << ' ' << line;
    EXPECT_EQ(line.substr(10, entry->vr.size()), entry->vr) << line;
  });
  EXPECT_GE(creators, 448);
  EXPECT_GE(lines - creators, 10500);
  const int uids = ForEachLine(kUids, [](const std::string& line) {
    const std::string uid = line.substr(0, line.find('\t'));
    const auto entry = FindUid(uid);
    ASSERT_TRUE(entry) << line;
    EXPECT_EQ(line.substr(uid.size() + 1, entry->name.size()), entry->name);
  });
  EXPECT_GE(uids, 490);
}

TEST(RegistryTest, GroupsAndBlocksThatRepeat) {
  const struct {
    Tag tag;
    const char* entry;
  } elements[] = {
      {{0x0008, 0x0018}, "UI 1 SOP Instance UID"},
      {{0x0008, 0x0000}, "UL 1 Group Length, retired"},
      {{0x0002, 0x0000}, "UL 1 File Meta Information Group Length"},
      {{0x6012, 0x0010}, "US 1 Overlay Rows"},
      {{0x6013, 0x0010}, "LO 1 Private Creator"},
      {{0x6013, 0x1010}, "-"},
      {{0x0020, 0x3145}, "CS 1-n Source Image IDs, retired"},
      {{0x0009, 0x0001}, "-"},
      {{0x0008, 0x0017}, "UI 1 Acquisition UID"},
      {{0x0008, 0x00FF}, "-"},
      {{0xFFFF, 0xFFFF}, "-"},
  };
  for (const auto& [tag, entry] : elements) {
    EXPECT_EQ(Element(FindElement(tag)), entry) << TagText(tag);
  }
  const struct {
    const char* creator;
    Tag tag;
    const char* entry;
  } privates[] = {
      {"GEMS_IDEN_01", {0x0009, 0x1002}, "SH 1 Suite id"},
      {"GEMS_IDEN_01", {0x0009, 0xFF02}, "SH 1 Suite id"},
      {"GEMS_IDEN_01", {0x000B, 0x1002}, "-"},
      {"GEMS_IDEN", {0x0009, 0x1002}, "-"},
      {"", {0x0009, 0x1002}, "-"},
      // One block has an entry of its own.
      {"ELSCINT1", {0x01F1, 0x1032}, "CS 1 View Convention"},
      {"ELSCINT1", {0x01F1, 0x1132}, "CS 1 Image View Convention"},
  };
  for (const auto& [creator, tag, entry] : privates) {
    EXPECT_EQ(Element(FindPrivateElement(creator, tag)), entry)
        << creator << TagText(tag);
  }
  EXPECT_FALSE(FindUid("1.2.840.10008.1"));
  EXPECT_TRUE(FindUid("1.2.840.10008.1.2.2")->retired);
}

}  // namespace
