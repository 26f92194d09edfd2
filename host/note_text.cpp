#include "host/note_text.h"

namespace host {

std::string NumberText(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) {
    at -= 3;
    text.insert(at, ",");
  }
  return text;
}

std::string BytesText(std::uint64_t count) {
  return NumberText(count) + (count == 1 ? " byte" : " bytes");
}

std::string FilledText(std::uint64_t lost) {
  return NumberText(lost) +
         (lost == 1 ? " lost byte was" : " lost bytes were") +
         " filled with zero";
}

std::string PduTypeText(std::uint8_t type) {
  static constexpr const char* kNames[] = {
      "A-ASSOCIATE-RQ", "A-ASSOCIATE-AC", "A-ASSOCIATE-RJ", "P-DATA-TF",
      "A-RELEASE-RQ",   "A-RELEASE-RP",   "A-ABORT"};
  if (type < 1 || type > 7) return "a PDU of type " + std::to_string(type);
  const std::string name = kNames[type - 1];
  return (name[0] == 'A' ? "an " : "a ") + name + " PDU";
}

void AppendNote(const std::string& part, std::string* note) {
  if (!note->empty()) *note += "; ";
  *note += part;
}

}  // namespace host
