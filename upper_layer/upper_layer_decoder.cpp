#include "upper_layer/upper_layer_decoder.h"

#include <exception>

#include "dimse/value_format.h"

namespace dicom {

using enum LevelStep;

namespace {

struct PduHeading {
  const char* title;
  const char* caption;
  bool has_ten_bytes;
};

// By PDU type, from 01h on.
constexpr PduHeading kHeadings[] = {
    {"DICOM - Upper Layer Protokoll: A-ASSOCIATE-RQ PDU (01h)",
     "PDU-Type: A-ASSOCIATE-RQ (01h)", false},
    {"DICOM - Upper Layer Protokoll: A-ASSOCIATE-AC PDU (02h)",
     "PDU-Type: A-ASSOCIATE-AC (02h)", false},
    {"DICOM - Upper Layer Protokoll: A-ASSOCIATE-RJ PDU (03h)",
     "PDU-Type: A-ASSOCIATE-RJ (03h)", true},
    {"DICOM - Upper Layer Protokoll: P-DATA-TF PDU (04h)",
     "PDU-Type: P-DATA-TF (04h)", false},
    {"DICOM - Upper Layer Protokoll: A-RELEASE-RQ PDU (05h)",
     "PDU-Type: A-RELEASE-RQ (05h)", true},
    {"DICOM - Upper Layer Protokoll: A-RELEASE-RP PDU (06h)",
     "PDU-Type: A-RELEASE-RP (06h)", true},
    // Deliberate: an abort carries the release request's title and type.
    {"DICOM - Upper Layer Protokoll: A-RELEASE-RQ PDU (05h)",
     "PDU-Type: A-RELEASE-RQ (05h)", true},
};

}  // namespace

void UpperLayerDecoder::DecodePdu() {
  try {
    DecodeByType();
  } catch (const std::exception&) {
    ShowFailurePosition();
  }
}

void UpperLayerDecoder::DecodeByType() {
  switch (Byte()) {
    case 0x01:
      return DecodeAssociate(kRequestForm);
    case 0x02:
      return DecodeAssociate(kAcceptForm);
    case 0x03:
      return DecodeReject();
    case 0x04:
      return DecodeData();
    case 0x05:
    case 0x06:
      return DecodeRelease();
    case 0x07:
      return DecodeAbort();
  }
  // Deliberate: byte 54 of the packet is marked, not the type byte at 0.
  Writer().AddLine("Error - Unknown Pdu Number " + ByteHex(Byte()), kSection,
                   54, 1);
}

void UpperLayerDecoder::ShowCommonHeader() {
  const PduHeading& heading = kHeadings[Byte() - 0x01];
  const std::uint32_t length = Bytes().Length();
  // Deliberate: covers the buffer, not what the length field claims.
  ShowHere(heading.title, kSection, length);
  Show(heading.caption, kLine, 1);
  Show("Reserved: " + ByteHex(Byte()), kLine, 1);
  // Deliberate: a PDU of 10 bytes has to have 10; 11 with a length field of 5
  // agree and are marked all the same. The sum wraps in 32 bits, as the length
  // field itself does.
  const bool differs =
      Long() + 6 != length || (heading.has_ten_bytes && length != 10);
  Show("PDU-Length: " + LongHexAndDecimal(Long()) +
           (differs ? " ERROR - Pdu length differs from Packet Length!" : ""),
       kLine, 4);
}

}  // namespace dicom
