#include "dimse/element_cursor.h"

#include <string>

namespace dicom {

using enum LevelStep;

DataElementEntry ElementCursor::ShowElement(LevelStep step,
                                            std::uint32_t length) {
  const std::string tag = Tag();
  DataElementEntry entry = dictionary_.LookupDataElement(tag);
  ShowHere(tag + " - " + entry.name, step, length);
  // Deliberate: the name again, not the VR.
  Show("Value Type: " + entry.name, kLine, 4);
  return entry;
}

void ElementCursor::ShowValue(LevelStep step, std::uint32_t length,
                              std::int32_t vr_code) {
  const std::string value = Value(length, vr_code);
  if (vr_code != kVrUi) return Show("Value Field: " + value, step, length);
  ShowHere("Value Field: " + value, kOpen, length);
  Show("UID description: " + dictionary_.LookupUidDescription(value),
       kLastLineOfTwo, length);
}

}  // namespace dicom
