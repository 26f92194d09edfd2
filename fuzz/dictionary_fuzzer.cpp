// Any two files are dictionaries; what is found in them came from a line of
// them.
#include <string>

#include "dimse/dicom_dictionary.h"
#include "fuzz/fuzz_input.h"
#include "tests/test_dictionary.h"

using dicom::fuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::size_t first =
      std::min(text.find('\xFF'), size);  // then Uid.dic begins
  const std::string elements = text.substr(0, first);
  const std::string uids = text.substr(std::min(first + 1, size));
  const dicom::testing::TestDictionary dictionary(uids, elements);
  for (std::size_t line = 0; line < elements.size(); ++line) {
    const std::string tag = elements.substr(line, 9);
    const dicom::DataElementEntry entry =
        dictionary.Get().LookupDataElement("(" + tag + ")");
    if (entry.name != "Unknown Tag") {
      Require(!entry.name.empty(), "an element has a name");
      Require(entry.vr_code >= -1 && entry.vr_code <= 25,
              "a VR code is one of the list");
      Require(elements.find(entry.name) != elements.npos ||
                  elements.find('\r') != elements.npos,
              "a name is a part of the file");
    }
    line = std::min(elements.find('\n', line), elements.size());
  }
  const std::string description =
      dictionary.Get().LookupUidDescription(uids.substr(0, uids.find(';')));
  Require(description.size() < 120, "a description is a part of a line");
  return 0;
}
