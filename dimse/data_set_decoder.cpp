#include "dimse/data_set_decoder.h"

#include <utility>

#include "dimse/value_format.h"
#include "tracking/saturating_sum.h"

namespace dicom {
namespace {

constexpr std::uint32_t kUndefinedLength = 0xFFFFFFFF;

// Deliberate: OB, OW and SQ alone have the long form in explicit VR; UT, UN and
// OF are read in the short form. Nor is the value of these three shown.
bool IsBulk(std::int32_t vr_code) {
  return vr_code == kVrOb || vr_code == kVrOw || vr_code == kVrSq;
}

}  // namespace

DataSetDecoder::DataSetDecoder(const ByteArrayView& data_set,
                               const DicomDictionary& dictionary,
                               DecodeTreeWriter& writer,
                               const PresentationContextTable& contexts,
                               std::uint8_t presentation_context_id,
                               std::uint32_t base_offset,
                               std::uint32_t& position)
    : bytes_(data_set),
      dictionary_(dictionary),
      writer_(writer),
      base_offset_(base_offset),
      position_(position) {
  position_ = 0;
  const bool big_endian = contexts.IsBigEndian(presentation_context_id);
  const bool explicit_vr = contexts.IsExplicitVr(presentation_context_id);
  // Deliberate: nothing at all, not even the section line.
  if (big_endian && !explicit_vr) return;

  if (big_endian) order_ = kBigEndian;
  ShowHere("DICOM - Data Set", LevelStep::kSection, bytes_.Length());
  while (position_ < bytes_.Length()) {
    explicit_vr ? DecodeExplicitElement() : DecodeImplicitElement();
  }
}

// Deliberate: here an undefined length is a length like any other, it passes
// the end. Tag, 32-bit length, value; the VR is the dictionary's.
void DataSetDecoder::DecodeImplicitElement() {
  const std::string tag = TagText(bytes_, position_, order_);
  const std::uint32_t length = bytes_.LongAt(position_ + 4, order_);
  // Deliberate: kOpen; an element of the command set returns to level 1.
  ShowElement(tag, LevelStep::kOpen, SaturatingSum(length, 8));
  Show("Value Length: " + LongHexAndDecimal(bytes_, position_, order_),
       LevelStep::kLine, 4);
  ShowValue(length, entry_.vrCode);
}

// Tag and two VR letters, then one of two forms, chosen by the letters; the
// dictionary has no say.
void DataSetDecoder::DecodeExplicitElement() {
  const std::int32_t vr_code = VrCodeOf(bytes_.CharactersAt(position_ + 4, 2));
  IsBulk(vr_code) ? DecodeLongForm(vr_code) : DecodeShortForm(vr_code);
}

// Tag, VR, 16-bit length, value.
void DataSetDecoder::DecodeShortForm(std::int32_t vr_code) {
  const std::string tag = TagText(bytes_, position_, order_);
  const std::string vr(bytes_.CharactersAt(position_ + 4, 2));
  const std::uint32_t length = bytes_.WordAt(position_ + 6, order_);
  // Deliberate: two bytes more than the element has.
  ShowElement(tag, std::exchange(element_step_, LevelStep::kOpen), length + 10);
  Show("Value Representation: " + vr, LevelStep::kLine, 2);
  Show("Value Length: " + WordHexAndDecimal(bytes_, position_, order_),
       LevelStep::kLine, 2);
  ShowValue(length, vr_code);
}

// Tag, VR, reserved word, 32-bit length, value or items.
void DataSetDecoder::DecodeLongForm(std::int32_t vr_code) {
  const std::string tag = TagText(bytes_, position_, order_);
  const std::string vr(bytes_.CharactersAt(position_ + 4, 2));
  const std::uint32_t length = bytes_.LongAt(position_ + 8, order_);
  ShowElement(tag, std::exchange(element_step_, LevelStep::kOpen),
              SaturatingSum(length, 12));
  Show("Value Representation: " + vr, LevelStep::kLine, 2);
  Show("Reserved: " + WordHex(bytes_, position_, order_), LevelStep::kLine, 2);
  Show("Value Length: " + LongHexAndDecimal(bytes_, position_, order_),
       LevelStep::kLine, 4);
  if (length != kUndefinedLength) return ShowValue(length, vr_code);
  while (DecodeItem(vr_code)) {
  }
  // No line of an item closes the enclosing element: the next one has to.
  element_step_ = LevelStep::kOpenAtLevel1;
}

// Tag, 32-bit length, value. Answers whether another item may follow.
bool DataSetDecoder::DecodeItem(std::int32_t enclosing_vr_code) {
  if (position_ >= bytes_.Length()) return false;
  const std::string tag = TagText(bytes_, position_, order_);
  const std::uint32_t length = bytes_.LongAt(position_ + 4, order_);
  // Deliberate: a sequence's item has no value line and is skipped whole, and
  // the caption has its colon only where it is empty. The last line, whichever
  // it is, returns to the enclosing element's children.
  const bool has_value_line = length == 0 || enclosing_vr_code != kVrSq;
  ShowElement(tag, LevelStep::kOpen, SaturatingSum(length, 8));
  Show("Value Length: " + LongHexAndDecimal(bytes_, position_, order_),
       has_value_line ? LevelStep::kLine : LevelStep::kLastLine, 4);
  if (has_value_line) {
    ShowHere(length == 0 ? "Value Field: " : "Value Field",
             LevelStep::kLastLine, length);
  }
  position_ = SaturatingSum(position_, length);
  // Deliberate: any other tag ends the value, not only the delimiter's.
  return tag == "(FFFE,E000)";
}

void DataSetDecoder::ShowElement(const std::string& tag, LevelStep step,
                                 std::uint32_t length) {
  dictionary_.LookupDataElement(tag, entry_);
  ShowHere(tag + " - " + entry_.name, step, length);
  // Deliberate: the name again, not the VR.
  Show("Value Type: " + entry_.name, LevelStep::kLine, 4);
}

// The value line, which closes the element.
void DataSetDecoder::ShowValue(std::uint32_t length, std::int32_t vr_code) {
  if (IsBulk(vr_code)) {
    // Deliberate: without a colon.
    return Show("Value Field", LevelStep::kLastLine, length);
  }
  const std::string value =
      ValueText(bytes_, position_, length, order_, vr_code);
  if (vr_code != kVrUi) {
    return Show("Value Field: " + value, LevelStep::kLastLine, length);
  }
  ShowHere("Value Field: " + value, LevelStep::kOpen, length);
  Show("UID description: " + dictionary_.LookupUidDescription(value),
       LevelStep::kLastLineOfTwo, length);
}

void DataSetDecoder::ShowHere(const std::string& text, LevelStep step,
                              std::uint32_t length) {
  writer_.AddLine(text, step, SaturatingSum(base_offset_, position_), length);
}

void DataSetDecoder::Show(const std::string& text, LevelStep step,
                          std::uint32_t length) {
  ShowHere(text, step, length);
  position_ = SaturatingSum(position_, length);
}

}  // namespace dicom
