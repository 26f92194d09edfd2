#ifndef DIMSE_ELEMENT_CURSOR_H_
#define DIMSE_ELEMENT_CURSOR_H_

#include <cstdint>

#include "dimse/dicom_dictionary.h"
#include "dimse/line_cursor.h"

namespace dicom {

// What the decoders of command sets and data sets have in common: how an
// element begins and how its value is shown.
class ElementCursor : public LineCursor {
 public:
  // Begins where `lines` stands. The dictionary stays the caller's and outlives
  // the cursor.
  ElementCursor(const LineCursor& lines, const DicomDictionary& dictionary)
      : LineCursor(lines), dictionary_(dictionary) {}

  // An element's first two lines, the first over `length` bytes with the step
  // that opens it; moves past the tag. Answers what the dictionary says of it.
  DataElementEntry ShowElement(LevelStep step, std::uint32_t length);

  // The line of a value whose text its VR code makes, and below a UID its
  // description; moves past the value. `step` is that of a line with nothing
  // below it: kLastLine closes the element, behind a UID it is closed anyway.
  void ShowValue(LevelStep step, std::uint32_t length, std::int32_t vr_code);

 private:
  const DicomDictionary& dictionary_;
};

}  // namespace dicom

#endif  // DIMSE_ELEMENT_CURSOR_H_
