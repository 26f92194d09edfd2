#include "dimse/data_set_decoder.h"

#include <utility>

#include "dimse/value_format.h"
#include "tracking/saturating_sum.h"

namespace dicom {

using enum LevelStep;

namespace {

constexpr std::uint32_t kUndefinedLength = 0xFFFFFFFF;

// Deliberate: OB, OW and SQ alone have the long form in explicit VR; UT, UN and
// OF are read in the short form. Nor is the value of these three shown.
bool IsBulk(std::int32_t vr_code) {
  return vr_code == kVrOb || vr_code == kVrOw || vr_code == kVrSq;
}

// What the hex window shows up to the end of the data set.
ByteArrayView UpToItsEnd(const MessageParts& message) {
  return message.bytes.Part(
      0, SaturatingSum(message.command_length, message.data_length));
}

}  // namespace

DataSetDecoder::DataSetDecoder(const MessageParts& message,
                               const PresentationContextTable& contexts,
                               const DicomDictionary& dictionary,
                               DecodeTreeWriter& writer)
    : ElementCursor(
          {UpToItsEnd(message), message.command_length, kLittleEndian, writer},
          dictionary),
      contexts_(contexts),
      context_id_(message.presentation_context_id) {}

void DataSetDecoder::Decode() {
  const bool big_endian = contexts_.IsBigEndian(context_id_);
  const bool explicit_vr = contexts_.IsExplicitVr(context_id_);
  // Deliberate: nothing at all, not even the section line.
  if (big_endian && !explicit_vr) return;

  if (big_endian) SetOrder(kBigEndian);
  ShowHere("DICOM - Data Set", kSection, Rest().Length());
  while (!AtEnd()) {
    explicit_vr ? DecodeExplicitElement() : DecodeImplicitElement();
  }
}

// Deliberate: here an undefined length is a length like any other, it passes
// the end. Tag, 32-bit length, value; the VR is the dictionary's.
void DataSetDecoder::DecodeImplicitElement() {
  const std::uint32_t length = Long(4);
  // Deliberate: kOpen; an element of the command set returns to level 1.
  const DataElementEntry entry = ShowElement(kOpen, SaturatingSum(length, 8));
  Show("Value Length: " + LongHexAndDecimal(Long()), kLine, 4);
  ShowLastValue(length, entry.vr_code);
}

// Tag and two VR letters, then one of two forms, chosen by the letters; the
// dictionary has no say.
void DataSetDecoder::DecodeExplicitElement() {
  const std::int32_t vr_code = VrCodeOf(Characters(2, 4));
  IsBulk(vr_code) ? DecodeLongForm(vr_code) : DecodeShortForm(vr_code);
}

// Tag, VR, 16-bit length, value.
void DataSetDecoder::DecodeShortForm(std::int32_t vr_code) {
  const std::uint32_t length = Word(6);
  // Deliberate: two bytes more than the element has.
  ShowElement(std::exchange(element_step_, kOpen), length + 10);
  Show("Value Representation: " + Characters(2), kLine, 2);
  Show("Value Length: " + WordHexAndDecimal(Word()), kLine, 2);
  ShowLastValue(length, vr_code);
}

// Tag, VR, reserved word, 32-bit length, value or items.
void DataSetDecoder::DecodeLongForm(std::int32_t vr_code) {
  const std::uint32_t length = Long(8);
  ShowElement(std::exchange(element_step_, kOpen), SaturatingSum(length, 12));
  Show("Value Representation: " + Characters(2), kLine, 2);
  Show("Reserved: " + WordHex(Word()), kLine, 2);
  Show("Value Length: " + LongHexAndDecimal(Long()), kLine, 4);
  if (length != kUndefinedLength) return ShowLastValue(length, vr_code);
  while (DecodeItem(vr_code)) {
  }
  // No line of an item closes the enclosing element: the next one has to.
  element_step_ = kOpenAtLevel1;
}

// Tag, 32-bit length, value.
bool DataSetDecoder::DecodeItem(std::int32_t enclosing_vr_code) {
  if (AtEnd()) return false;
  const std::string tag = Tag();
  const std::uint32_t length = Long(4);
  // Deliberate: a sequence's item has no value line and is skipped whole, and
  // the caption has its colon only where it is empty. The last line, whichever
  // it is, returns to the enclosing element's children.
  const bool has_value_line = length == 0 || enclosing_vr_code != kVrSq;
  ShowElement(kOpen, SaturatingSum(length, 8));
  Show("Value Length: " + LongHexAndDecimal(Long()),
       has_value_line ? kLine : kLastLine, 4);
  if (has_value_line) {
    ShowHere(length == 0 ? "Value Field: " : "Value Field", kLastLine, length);
  }
  Advance(length);
  // Deliberate: any other tag ends the value, not only the delimiter's.
  return tag == "(FFFE,E000)";
}

void DataSetDecoder::ShowLastValue(std::uint32_t length, std::int32_t vr_code) {
  if (IsBulk(vr_code)) {
    // Deliberate: without a colon.
    return Show("Value Field", kLastLine, length);
  }
  ShowValue(kLastLine, length, vr_code);
}

}  // namespace dicom
