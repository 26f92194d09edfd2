#include "upper_layer/upper_layer_decoder.h"

#include <exception>

#include "dimse/value_format.h"
#include "errors/errors.h"
#include "tracking/saturating_sum.h"

namespace dicom {

using enum LevelStep;

UpperLayerDecoder::UpperLayerDecoder(const std::uint8_t* bytes,
                                     std::uint32_t length,
                                     DecodeTreeWriter& tree_writer,
                                     const DicomDictionary& dictionary)
    : ByteArrayView(bytes, length),
      tree_writer_(tree_writer),
      dictionary_(dictionary) {}

void UpperLayerDecoder::DecodePdu() {
  try {
    DecodeByType();
  } catch (const std::exception&) {
    ShowHere("ERROR - Could not decode further at Position: " +
                 HexAndDecimal(position_),
             kSection, 1);
  }
}

void UpperLayerDecoder::DecodeByType() {
  switch (ByteAt(0)) {
    case 0x01:
      return DecodeAssociate(kRequestForm);
    case 0x02:
      return DecodeAssociate(kAcceptForm);
    case 0x03:
      return DecodeReject();
    case 0x04:
      return DecodeData();
    case 0x05:
      return DecodeRelease(
          "DICOM - Upper Layer Protokoll: A-RELEASE-RQ PDU (05h)",
          "PDU-Type: A-RELEASE-RQ (05h)");
    case 0x06:
      return DecodeRelease(
          "DICOM - Upper Layer Protokoll: A-RELEASE-RP PDU (06h)",
          "PDU-Type: A-RELEASE-RP (06h)");
    case 0x07:
      return DecodeAbort();
  }
  // Deliberate: byte 54 of the packet is marked, not the type byte at 0.
  tree_writer_.AddLine("Error - Unknown Pdu Number " + ByteHex(), kSection, 54,
                       1);
}

void UpperLayerDecoder::ShowCommonHeader(const char* title, const char* caption,
                                         PduSize size) {
  // Deliberate: covers the buffer, not what the length field claims.
  ShowHere(title, kSection, Length());
  Show(caption, kLine, 1);
  Show("Reserved: " + ByteHex(), kLine, 1);
  // Deliberate: a PDU of 10 bytes has to have 10; 11 with a length field of 5
  // agree and are marked all the same. The sum wraps in 32 bits, as the length
  // field itself does.
  const std::uint32_t claimed = LongAt(position_, kBigEndian) + 6;
  const bool differs =
      claimed != Length() || (size == PduSize::kTenBytes && Length() != 10);
  Show("PDU-Length: " + LongHexAndDecimal() +
           (differs ? " ERROR - Pdu length differs from Packet Length!" : ""),
       kLine, 4);
}

void UpperLayerDecoder::Show(const std::string& text, LevelStep step,
                             std::uint32_t bytes) {
  ShowHere(text, step, bytes);
  Advance(bytes);
}

void UpperLayerDecoder::ShowHere(const std::string& text, LevelStep step,
                                 std::uint32_t bytes) {
  tree_writer_.AddLine(text, step, position_, bytes);
}

void UpperLayerDecoder::Advance(std::uint32_t bytes) {
  previous_position_ = position_;
  position_ = PositionAfter(bytes);
}

void UpperLayerDecoder::SetPosition(std::uint32_t position) {
  if (position > Length()) throw OutOfRange();
  previous_position_ = position_;
  position_ = position;
}

std::uint32_t UpperLayerDecoder::PositionAfter(std::uint32_t bytes) const {
  return SaturatingSum(position_, bytes);
}

std::string UpperLayerDecoder::ByteHex(std::uint32_t distance) const {
  return dicom::ByteHex(*this, PositionAfter(distance));
}

std::string UpperLayerDecoder::ByteDecimal() const {
  return dicom::ByteDecimal(*this, position_);
}

std::string UpperLayerDecoder::WordHex() const {
  return dicom::WordHex(*this, position_, kBigEndian);
}

std::string UpperLayerDecoder::WordHexAndDecimal() const {
  return dicom::WordHexAndDecimal(*this, position_, kBigEndian);
}

std::string UpperLayerDecoder::LongHex() const {
  return dicom::LongHex(*this, position_, kBigEndian);
}

std::string UpperLayerDecoder::LongHexAndDecimal() const {
  return dicom::LongHexAndDecimal(*this, position_, kBigEndian);
}

// Deliberate: zero bytes are kept; the tree shows the text up to the first.
std::string UpperLayerDecoder::Characters(std::uint32_t count) const {
  return std::string(CharactersAt(position_, count));
}

std::string UpperLayerDecoder::UidText(std::uint32_t length,
                                       std::uint32_t distance) const {
  std::string text(CharactersAt(PositionAfter(distance), length));
  // Deliberate: without a last character the string's own error is thrown, and
  // the decode ends at the item whose UID is empty.
  if (text.at(text.size() - 1) == '\0') text.pop_back();
  return text;
}

std::string UpperLayerDecoder::CodeText(const char* caption, CodeRows rows,
                                        const std::string& other) const {
  const std::uint8_t code = ByteAt(position_);
  for (const CodeRow& row : rows) {
    if (row.first <= code && code <= row.last) {
      return caption + ByteDecimal() + row.text;
    }
  }
  return caption + other;
}

}  // namespace dicom
