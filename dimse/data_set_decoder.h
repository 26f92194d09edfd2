#ifndef DIMSE_DATA_SET_DECODER_H_
#define DIMSE_DATA_SET_DECODER_H_

#include <cstdint>
#include <string>

#include "dimse/dicom_dictionary.h"
#include "tracking/byte_array_view.h"
#include "tracking/presentation_context_table.h"
#include "tree/decode_tree_writer.h"

namespace dicom {

// Writes one data set as a section "DICOM - Data Set", read as its presentation
// context agreed. Values of undefined length are walked item by item where the
// explicit long form announces them; what is inside an item is not decoded.
class DataSetDecoder {
 public:
  // Decodes at once; nothing passed in is needed afterwards. `base_offset` is
  // where the data set starts in the hex window's bytes. `position` starts at
  // 0, counts from the start of the data set and is left where the decode
  // stands when an exception ends it: PresentationContextDoesNotExist before
  // any line, OutOfRange where the end cuts something that is read,
  // WrongTreeDepth from `writer`.
  DataSetDecoder(const ByteArrayView& data_set,
                 const DicomDictionary& dictionary, DecodeTreeWriter& writer,
                 const PresentationContextTable& contexts,
                 std::uint8_t presentation_context_id,
                 std::uint32_t base_offset, std::uint32_t& position);

 private:
  void DecodeImplicitElement();
  void DecodeExplicitElement();
  void DecodeShortForm(std::int32_t vr_code);
  void DecodeLongForm(std::int32_t vr_code);
  bool DecodeItem(std::int32_t enclosing_vr_code);

  // An element's first two lines; advances over the tag.
  void ShowElement(const std::string& tag, LevelStep step,
                   std::uint32_t length);
  void ShowValue(std::uint32_t length, std::int32_t vr_code);
  // A line over the `length` bytes at the position; the first does not advance.
  void ShowHere(const std::string& text, LevelStep step, std::uint32_t length);
  void Show(const std::string& text, LevelStep step, std::uint32_t length);

  const ByteArrayView bytes_;
  const DicomDictionary& dictionary_;
  DecodeTreeWriter& writer_;
  const std::uint32_t base_offset_;
  std::uint32_t& position_;
  std::uint32_t order_ = kLittleEndian;
  LevelStep element_step_ = LevelStep::kOpen;  // of the next element's line
  DataElementEntry entry_;                     // of the element at hand
};

}  // namespace dicom

#endif  // DIMSE_DATA_SET_DECODER_H_
