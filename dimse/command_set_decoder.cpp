#include "dimse/command_set_decoder.h"

#include "dimse/value_format.h"
#include "tracking/number_text.h"
#include "tracking/saturating_sum.h"

namespace dicom {

CommandSetDecoder::CommandSetDecoder(const ByteArrayView& command_set,
                                     const DicomDictionary& dictionary,
                                     DecodeTreeWriter& writer,
                                     const std::string& caption_suffix,
                                     std::uint32_t& position)
    : bytes_(command_set),
      dictionary_(dictionary),
      writer_(writer),
      position_(position) {
  position_ = 0;
  writer_.AddLine("DICOM - Command Set: " + caption_suffix, LevelStep::kSection,
                  0, bytes_.Length());
  std::uint32_t next = 0;
  for (CommandElement element; NextCommandElement(bytes_, next, element);) {
    DecodeElement(element);
    position_ = next;
  }
}

void CommandSetDecoder::DecodeElement(const CommandElement& element) {
  const std::string tag = TagTextOf(element.group, element.element);
  dictionary_.LookupDataElement(tag, entry_);

  // Deliberate: kOpenAtLevel1, where an element of a data set has kOpen.
  writer_.AddLine(tag + " - " + entry_.name, LevelStep::kOpenAtLevel1,
                  position_, SaturatingSum(element.value_length, 8));
  // Deliberate: the name again, not the VR.
  writer_.AddLine("Value Type: " + entry_.name, LevelStep::kLine, position_, 4);
  position_ += 4;
  writer_.AddLine(
      "Value Length: " + LongHexAndDecimal(bytes_, position_, kLittleEndian),
      LevelStep::kLine, position_, 4);
  position_ += 4;
  DecodeValue(element);
}

void CommandSetDecoder::DecodeValue(const CommandElement& element) {
  const std::uint32_t length = element.value_length;
  if (element.Is(0x0000, 0x0100)) {
    writer_.AddLine("Value Field: " + CommandFieldText(), LevelStep::kLine,
                    position_, length);
    return;
  }
  const std::string value =
      ValueText(bytes_, position_, length, kLittleEndian, entry_.vrCode);
  if (entry_.vrCode != kVrUi) {
    writer_.AddLine("Value Field: " + value, LevelStep::kLine, position_,
                    length);
    return;
  }
  writer_.AddLine("Value Field: " + value, LevelStep::kOpen, position_, length);
  writer_.AddLine("UID description: " + dictionary_.LookupUidDescription(value),
                  LevelStep::kLastLineOfTwo, position_, length);
}

// Deliberate: two bytes are read whatever the value length says.
std::string CommandSetDecoder::CommandFieldText() const {
  std::string text = WordHex(bytes_, position_, kLittleEndian);
  text += " - ";
  text += CommandName(bytes_.WordAt(position_, kLittleEndian));
  return text;
}

}  // namespace dicom
