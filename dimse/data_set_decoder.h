#ifndef DIMSE_DATA_SET_DECODER_H_
#define DIMSE_DATA_SET_DECODER_H_

#include <cstdint>
#include <string>

#include "dimse/dicom_dictionary.h"
#include "dimse/element_cursor.h"
#include "dimse/message_parts.h"
#include "tracking/presentation_context_table.h"

namespace dicom {

// Writes the data set of a message as a section "DICOM - Data Set", read as its
// presentation context agreed. Values of undefined length are walked item by
// item where the explicit long form announces them; what is inside an item is
// not decoded.
class DataSetDecoder : private ElementCursor {
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
  // `vr_code` is the stream's. A value that is not read may pass the end, and
  // so ends the data set; any other throws.
  void DecodeImplicitElement();
  void DecodeExplicitElement();
  void DecodeShortForm(std::int32_t vr_code);
  void DecodeLongForm(std::int32_t vr_code);
  // The same for an item or a delimiter below an element of undefined length
  // with that VR. Answers whether another may follow.
  bool DecodeItem(std::int32_t enclosing_vr_code);

  // The value line, which closes the element; moves past the value.
  void ShowLastValue(std::uint32_t length, std::int32_t vr_code);

  const PresentationContextTable& contexts_;
  const std::uint8_t context_id_;
  LevelStep element_step_ = LevelStep::kOpen;  // of the next element's line
};

}  // namespace dicom

#endif  // DIMSE_DATA_SET_DECODER_H_
