#include "host/streams/note_text.h"

#include "host/text/number_text.h"

namespace host {

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
