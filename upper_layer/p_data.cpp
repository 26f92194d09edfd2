#include "dimse/value_format.h"
#include "tree/hex_dump.h"
#include "upper_layer/upper_layer_decoder.h"

namespace dicom {

using enum LevelStep;

// Deliberate: only the PDV at byte 6 is taken apart, as if it filled the PDU; a
// second one makes its length differ and lies in the dump.
void UpperLayerDecoder::DecodeData() {
  ShowCommonHeader();
  // Deliberate: marks 5 bytes of a header of 6; the control byte has a section
  // of its own.
  ShowHere("PDV Header", kSection, 5);
  // The sum wraps in 32 bits, like that of the PDU length.
  const bool differs = Long() + 10 != Bytes().Length();
  Show("PDV Length: " + LongHexAndDecimal(Long()) +
           (differs ? " ERROR - Pdv length differs from Packet Length!" : ""),
       kLine, 4);
  Show("Presentation Context ID: " + ByteHex(Byte()), kLine, 1);
  ShowHere("Message Control Header: " + ByteHex(Byte()), kSection, 1);
  const std::uint8_t control = Byte();
  ShowHere(control & 2 ? ".... ..1. = last fragment"
                       : ".... ..0. = not the last fragment",
           kLine, 1);
  Show(control & 1 ? ".... ...1 = Message Command information"
                   : ".... ...0 = Message Data Set information",
       kLine, 1);
  // Deliberate: past the writer, whose section count the dump leaves alone.
  const ByteArrayView rest = Rest();
  AddHexDumpSection(Writer().Target(), {rest.Bytes(), rest.Length()},
                    Position(), "DICOM Message Data");
}

}  // namespace dicom
