#include "dimse/command_set_decoder.h"

#include "dimse/value_format.h"
#include "tracking/saturating_sum.h"

namespace dicom {

using enum LevelStep;

CommandSetDecoder::CommandSetDecoder(const MessageParts& message,
                                     const DicomDictionary& dictionary,
                                     DecodeTreeWriter& writer)
    : ElementCursor({message.bytes.Part(0, message.command_length), 0,
                     kLittleEndian, writer},
                    dictionary),
      caption_suffix_(message.caption_suffix) {}

void CommandSetDecoder::Decode() {
  ShowHere("DICOM - Command Set: " + caption_suffix_, kSection,
           Bytes().Length());
  while (const auto element = CommandElementAt(Bytes(), Position())) {
    DecodeElement(*element);
  }
}

// Tag, 32-bit length, value; the VR is the dictionary's.
void CommandSetDecoder::DecodeElement(const CommandElement& element) {
  const std::uint32_t length = element.value_length;
  // Deliberate: kOpenAtLevel1, where an element of a data set has kOpen.
  const DataElementEntry entry =
      ShowElement(kOpenAtLevel1, SaturatingSum(length, 8));
  Show("Value Length: " + LongHexAndDecimal(Long()), kLine, 4);
  if (!element.Is(0x0000, 0x0100)) {
    return ShowValue(kLine, length, entry.vr_code);
  }
  // Deliberate: two bytes are read whatever the value length says.
  Show("Value Field: " + WordHex(Word()) + " - " + CommandName(Word()), kLine,
       length);
}

}  // namespace dicom
