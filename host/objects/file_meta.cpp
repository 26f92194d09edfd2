#include "host/objects/file_meta.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace host {
namespace {

constexpr std::size_t kPreambleBytes = 128;
// Made from a random UUID, as ISO/IEC 9834-8 has it.
constexpr std::string_view kImplementationClassUid =
    "2.25.179383206451273918264037219865521940173";
constexpr std::string_view kImplementationVersion = "CAPDUMP_1";

class MetaWriter {
 public:
  void Text(std::uint16_t element, const char* vr, std::string_view value,
            char padding) {
    Header(element, vr);
    const std::size_t padded = value.size() + value.size() % 2;
    Number(padded, 2);
    bytes_.insert(bytes_.end(), value.begin(), value.end());
    if (padded != value.size()) {
      bytes_.push_back(static_cast<std::uint8_t>(padding));
    }
  }
  void Uid(std::uint16_t element, std::string_view uid) {
    Text(element, "UI", uid, '\0');
  }
  // File Meta Information Version 1.
  void Version() {
    Header(0x0001, "OB");
    Number(0, 2);
    Number(2, 4);
    bytes_.insert(bytes_.end(), {0, 1});
  }
  void GroupLength(std::size_t length) {
    Header(0x0000, "UL");
    Number(4, 2);
    Number(length, 4);
  }
  void Append(const MetaWriter& other) {
    bytes_.insert(bytes_.end(), other.bytes_.begin(), other.bytes_.end());
  }
  std::vector<std::uint8_t>& Bytes() { return bytes_; }

 private:
  void Header(std::uint16_t element, const char* vr) {
    Number(0x0002, 2);
    Number(element, 2);
    bytes_.insert(bytes_.end(), vr, vr + 2);
  }
  void Number(std::size_t number, int bytes) {
    for (; bytes > 0; --bytes, number >>= 8) {
      bytes_.push_back(static_cast<std::uint8_t>(number));
    }
  }

  std::vector<std::uint8_t> bytes_;
};

}  // namespace

std::vector<std::uint8_t> FileHead(const FileMeta& meta) {
  MetaWriter elements;
  elements.Version();
  elements.Uid(0x0002, meta.sop_class);
  elements.Uid(0x0003, meta.sop_instance);
  elements.Uid(0x0010, meta.transfer_syntax);
  elements.Uid(0x0012, kImplementationClassUid);
  elements.Text(0x0013, "SH", kImplementationVersion, ' ');
  if (!meta.source_ae_title.empty()) {
    elements.Text(0x0016, "AE", meta.source_ae_title, ' ');
  }
  MetaWriter head;
  head.Bytes().assign(kPreambleBytes, 0);
  head.Bytes().insert(head.Bytes().end(), {'D', 'I', 'C', 'M'});
  head.GroupLength(elements.Bytes().size());
  head.Append(elements);
  return std::move(head.Bytes());
}

}  // namespace host
