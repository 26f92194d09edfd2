#ifndef DIMSE_DATA_SET_DECODER_H_
#define DIMSE_DATA_SET_DECODER_H_

#include <cstdint>
#include <string>

#include "dimse/dicom_dictionary.h"
#include "dimse/line_cursor.h"
#include "dimse/message_parts.h"
#include "tracking/presentation_context_table.h"

namespace dicom {

// Writes the data set of a message as a section "DICOM - Data Set", read as its
// presentation context agreed. Values of undefined length are walked item by
// item where the explicit long form announces them; what is inside an item is
// not decoded.
class DataSetDecoder : private LineCursor {
 public:
  // What is passed in stays the caller's and outlives the decoder.
  DataSetDecoder(const MessageParts& message,
                 const PresentationContextTable& contexts,
                 const DicomDictionary& dictionary, DecodeTreeWriter& writer);

  // Writes all lines. Throws PresentationContextDoesNotExist before any line,
  // OutOfRange where the end cuts something that is read, and WrongTreeDepth;
  // the lines before it stay.
  void Decode();

  // After a failure: the line that says where the decode stood.
  using LineCursor::ShowFailurePosition;

 private:
  // Each begins with the cursor at the tag and leaves it behind the element.
  void DecodeImplicitElement();
  void DecodeExplicitElement();
  void DecodeShortForm(std::int32_t vr_code);
  void DecodeLongForm(std::int32_t vr_code);
  // Answers whether another item may follow.
  bool DecodeItem(std::int32_t enclosing_vr_code);

  // An element's first two lines, the first over `length` bytes; moves past the
  // tag. Answers what the dictionary says of it.
  DataElementEntry ShowElement(LevelStep step, std::uint32_t length);
  // The value line, which closes the element; moves past the value.
  void ShowValue(std::uint32_t length, std::int32_t vr_code);

  const PresentationContextTable& contexts_;
  const std::uint8_t context_id_;
  const DicomDictionary& dictionary_;
  LevelStep element_step_ = LevelStep::kOpen;  // of the next element's line
};

}  // namespace dicom

#endif  // DIMSE_DATA_SET_DECODER_H_
