// Any two files are dictionaries; what is found in them is what a reader finds
// that takes them literally, line by line.
#include <map>
#include <string>

#include "dimse/dicom_dictionary.h"
#include "fuzz/fuzz_input.h"
#include "tests/test_dictionary.h"

namespace {

using dicom::fuzz::Require;
using Entries = std::map<std::string, std::string>;

bool ConsistsOf(const std::string& text, const char* characters) {
  return text.find_first_not_of(characters) == text.npos;
}

void AddElement(const std::string& line, Entries& entries) {
  const std::size_t tag_end = line.find(';');
  const std::size_t name_end = line.find(';', tag_end + 1);
  if (tag_end != 9 || name_end == line.npos || name_end == 10) return;
  if (!ConsistsOf(line.substr(0, 9), "0123456789ABCDEFx,")) return;
  const std::string vr = line.substr(name_end + 1);
  if (std::min(vr.find(';'), vr.size()) != 2 || vr.size() == 3) return;
  entries.emplace("(" + line.substr(0, 9) + ")",
                  std::to_string(dicom::VrCodeOf(vr.substr(0, 2))) +
                      line.substr(10, name_end - 10));
}

void AddUid(const std::string& line, Entries& entries) {
  const std::size_t end = line.find(';');
  if (end > 64 || !ConsistsOf(line.substr(0, end), "0123456789.")) return;
  entries.emplace(line.substr(0, end), line.substr(end + 1));
}

Entries Read(std::string text, void (*add)(const std::string&, Entries&)) {
  Entries entries;
  text = text.substr(0, text.find('\x1A'));
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string line = text.substr(0, end);
    if (end < text.size() && line.ends_with('\r')) line.pop_back();
    if (line.size() > 119) break;
    line = line.c_str();
    if (!line.empty() && line[0] != '#') add(line, entries);
    text.erase(0, end + 1);
  }
  return entries;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  // Then Uid.dic begins.
  const std::size_t first = std::min(text.find('\xFF'), size);
  const std::string elements = text.substr(0, first);
  const std::string uids = text.substr(std::min(first + 1, size));
  const dicom::testing::TestDictionary dictionary(uids, elements);
  for (const auto& [tag, entry] : Read(elements, AddElement)) {
    // Nothing finds a repeating group that is written out.
    if (tag.starts_with("(50") || tag.starts_with("(60")) {
      if (tag.substr(3, 2) != "xx") continue;
    }
    const dicom::DataElementEntry found =
        dictionary.Get().LookupDataElement(tag);
    Require(std::to_string(found.vr_code) + found.name == entry,
            "an element is that of its first line");
  }
  for (const auto& [uid, description] : Read(uids, AddUid)) {
    Require(dictionary.Get().LookupUidDescription(uid) == description,
            "a description is that of its first line");
  }
  const std::string line = elements.substr(0, elements.find('\n'));
  const std::string tag = "(" + line.substr(0, 9) + ")";
  Require(Read(elements, AddElement).contains(tag) || line.starts_with("50") ||
              line.starts_with("60") ||
              dictionary.Get().LookupDataElement(tag).name == "Unknown Tag",
          "an element comes from a line");
  return 0;
}
