#ifndef DIMSE_DICOM_DICTIONARY_H_
#define DIMSE_DICOM_DICTIONARY_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace dicom {

// Deliberate: the module's own list of VRs in its own order. FL comes before
// FD, VS is no VR of the standard, UN and the VRs that came later are unknown.
enum VrCode : std::int32_t {
  kVrUnknown = -1,  // any other text
  kVrAe = 0,        // Application Entity
  kVrAs = 1,        // Age String
  kVrAt = 2,        // Attribute Tag
  kVrCs = 3,        // Code String
  kVrDa = 4,        // Date
  kVrDs = 5,        // Decimal String
  kVrDt = 6,        // Date Time
  kVrFl = 7,        // Floating Point Single
  kVrFd = 8,        // Floating Point Double
  kVrIs = 9,        // Integer String
  kVrLo = 10,       // Long String
  kVrLt = 11,       // Long Text
  kVrOb = 12,       // Other Byte
  kVrOw = 13,       // Other Word
  kVrPn = 14,       // Person Name
  kVrSh = 15,       // Short String
  kVrSl = 16,       // Signed Long
  kVrSq = 17,       // Sequence of Items
  kVrSs = 18,       // Signed Short
  kVrSt = 19,       // Short Text
  kVrTm = 20,       // Time
  kVrUi = 21,       // Unique Identifier
  kVrUl = 22,       // Unsigned Long
  kVrUs = 23,       // Unsigned Short
  kVrUt = 24,       // Unlimited Text
  kVrVs = 25,       // not of the standard, no value is shown
};

// The code of a two-letter VR text, kVrUnknown for any other text.
std::int32_t VrCodeOf(std::string_view vr_text);

// What the dictionary says of one data element. The name is what the element is
// shown by; the VR code says how its value is, where the stream does not.
struct DataElementEntry {
  std::int32_t vr_code;  // column 3 of Data.dic
  std::string name;      // column 2
};

// The two text dictionaries of the host's current directory, read once on
// construction and only read from then on.
class DicomDictionary {
 public:
  // Reads ".\Data.dic", then ".\Uid.dic". Malformed lines are dropped. Throws
  // ErrorWhileOpenFile when one of them cannot be opened.
  DicomDictionary();
  DicomDictionary(const DicomDictionary&) = delete;
  DicomDictionary& operator=(const DicomDictionary&) = delete;

  // `tag_text` has the form (gggg,eeee), upper case. An unknown tag has the VR
  // code kVrUnknown and the name "Unknown Tag". Groups 50gg and 60gg are looked
  // up as 50xx and 60xx.
  DataElementEntry LookupDataElement(const std::string& tag_text) const;

  // The description of a UID, "- Undefined UID" for an unknown one. The text is
  // not trimmed.
  std::string LookupUidDescription(std::string_view uid_text) const;

 private:
  // One line of either file, as parts of its text: thousands of lines are read
  // while a host waits for the module to load, so none is copied.
  struct ElementLine {
    std::string_view key;  // the tag without parentheses
    std::string_view name;
    std::int32_t vr_code;
  };
  struct UidLine {
    std::string_view key;
    std::string_view description;
  };

  // Each takes a line of its file, without the line's end, if it has the form:
  // TAG;NAME;VR or TAG;NAME;VR;EXTRA TEXT, of which the last is for people who
  // read the file, and UID;DESCRIPTION.
  void AddDataElement(std::string_view line);
  void AddUid(std::string_view line);

  std::vector<char> data_text_;
  std::vector<char> uid_text_;
  // Both ascending by key, no key twice.
  std::vector<ElementLine> data_elements_;
  std::vector<UidLine> uids_;
};

}  // namespace dicom

#endif  // DIMSE_DICOM_DICTIONARY_H_
