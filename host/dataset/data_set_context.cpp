#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "host/dataset/data_set_reader.h"
#include "host/dataset/element_bytes.h"

namespace host {
namespace {

constexpr Tag kCharacterSetTag{0x0008, 0x0005};
constexpr Tag kPixelRepresentationTag{0x0028, 0x0103};
constexpr std::size_t kMostCharacterSetBytes = 256;
constexpr std::size_t kMostCreatorBytes = 64;

std::string_view TextOf(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::uint32_t BlockKey(Tag tag, unsigned block) {
  return std::uint32_t{tag.group} << 8 | block;
}

}  // namespace

void DataSetReader::LookUp() {
  const Tag tag = event_.tag;
  const unsigned block = tag.element >> 8u;
  if (!tag.IsPrivate() || block == 0) {
    event_.entry = FindElement(tag);
    return;
  }
  const auto found = creators_.find({frames_.size(), BlockKey(tag, block)});
  if (found == creators_.end()) return;
  event_.creator = found->second;
  event_.entry = FindPrivateElement(event_.creator, tag);
}

// What the element says of those that follow.
void DataSetReader::TakeContext() {
  Frame& item = frames_.back();
  if (event_.tag == kCharacterSetTag) {
    const std::string_view declared = TextOf(Value(kMostCharacterSetBytes));
    item.characters = std::make_shared<const CharacterSet>(declared);
  } else if (event_.tag == kPixelRepresentationTag) {
    const Bytes value = Value(2);
    item.pixels_are_signed =
        value.size() == 2 && NumberAt(value, 2, event_.order) == 1;
  } else if (event_.tag.IsPrivateCreator()) {
    KeepCreator();
  }
}

void DataSetReader::KeepCreator() {
  if (creators_.size() >= kMostCreators) return;
  const std::string_view value = TextOf(Value(kMostCreatorBytes));
  const std::size_t end = value.find_last_not_of(std::string_view("\0 ", 2));
  creators_.insert_or_assign(
      {frames_.size(), BlockKey(event_.tag, event_.tag.element)},
      std::string(value.substr(0, end + 1)));
}

}  // namespace host
