#include "dimse/command_set_decoder.h"

#include "dimse/value_format.h"
#include "tracking/number_text.h"
#include "tracking/saturating_sum.h"

namespace dicom {

using enum LevelStep;

CommandSetDecoder::CommandSetDecoder(const MessageParts& message,
                                     const DicomDictionary& dictionary,
                                     DecodeTreeWriter& writer)
    : LineCursor(message.bytes.Part(0, message.command_length), 0,
                 kLittleEndian, writer),
      caption_suffix_(message.caption_suffix),
      dictionary_(dictionary) {}

void CommandSetDecoder::Decode() {
  ShowHere("DICOM - Command Set: " + caption_suffix_, kSection,
           Bytes().Length());
  while (const auto element = CommandElementAt(Bytes(), Position())) {
    DecodeElement(*element);
  }
}

// Tag, 32-bit length, value; the VR is the dictionary's.
void CommandSetDecoder::DecodeElement(const CommandElement& element) {
  const std::string tag = TagText(element.group, element.element);
  const DataElementEntry entry = dictionary_.LookupDataElement(tag);
  // Deliberate: kOpenAtLevel1, where an element of a data set has kOpen.
  ShowHere(tag + " - " + entry.name, kOpenAtLevel1,
           SaturatingSum(element.value_length, 8));
  // Deliberate: the name again, not the VR.
  Show("Value Type: " + entry.name, kLine, 4);
  Show("Value Length: " + LongHexAndDecimal(Long()), kLine, 4);
  DecodeValue(element, entry.vr_code);
}

void CommandSetDecoder::DecodeValue(const CommandElement& element,
                                    std::int32_t vr_code) {
  const std::uint32_t length = element.value_length;
  if (element.Is(0x0000, 0x0100)) {
    // Deliberate: two bytes are read whatever the value length says.
    return Show("Value Field: " + WordHex(Word()) + " - " + CommandName(Word()),
                kLine, length);
  }
  const std::string value = Value(length, vr_code);
  if (vr_code != kVrUi) return Show("Value Field: " + value, kLine, length);
  ShowHere("Value Field: " + value, kOpen, length);
  Show("UID description: " + dictionary_.LookupUidDescription(value),
       kLastLineOfTwo, length);
}

}  // namespace dicom
