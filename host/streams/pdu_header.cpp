#include "host/streams/pdu_header.h"

#include <array>

#include "host/capture/wire_bytes.h"

namespace host {

std::string PduTypeText(std::uint8_t type) {
  static constexpr const char* kTexts[] = {
      "an A-ASSOCIATE-RQ PDU", "an A-ASSOCIATE-AC PDU", "an A-ASSOCIATE-RJ PDU",
      "a P-DATA-TF PDU",       "an A-RELEASE-RQ PDU",   "an A-RELEASE-RP PDU",
      "an A-ABORT PDU"};
  if (type < kAssociateRq || type > kAbort) {
    return "a PDU of type " + std::to_string(type);
  }
  return kTexts[type - 1];
}

PduHeader PduHeader::Parse(
    std::span<const std::uint8_t, kPduHeaderBytes> bytes) {
  WireReader in(bytes);
  PduHeader header;
  header.type = in.Byte();
  header.reserved = in.Byte();
  header.length = in.Word32();
  return header;
}

bool PduHeader::HasPossibleLength() const {
  switch (type) {
    case kAssociateRq:
    case kAssociateAc:
      return length >= 68 && length <= 1u << 24;
    case kPDataTf:
      return length >= kPdvHeaderBytes && length <= 1u << 29;
    case kAssociateRj:
    case kReleaseRq:
    case kReleaseRp:
    case kAbort:
      return length == 4;
    default:
      return false;
  }
}

bool BeginsLikePdu(std::span<const std::uint8_t> bytes) {
  return bytes.size() >= kPduHeaderBytes &&
         PduHeader::Parse(bytes.first<kPduHeaderBytes>()).HasPossibleLength();
}

PdvHeader PdvHeader::Parse(
    std::span<const std::uint8_t, kPdvHeaderBytes> bytes) {
  WireReader in(bytes);
  PdvHeader header;
  header.length = in.Word32();
  header.context = in.Byte();
  header.control = in.Byte();
  return header;
}

bool PdvHeader::IsPlausible() const {
  return length >= 2 && context % 2 == 1 && control <= 3;
}

PduHeader PduHeaderAt(const StreamAssembler& stream, StreamPosition at) {
  std::array<std::uint8_t, kPduHeaderBytes> bytes;
  stream.Copy(at, bytes);
  return PduHeader::Parse(bytes);
}

PdvHeader PdvHeaderAt(const StreamAssembler& stream, StreamPosition at) {
  std::array<std::uint8_t, kPdvHeaderBytes> bytes;
  stream.Copy(at, bytes);
  return PdvHeader::Parse(bytes);
}

}  // namespace host
