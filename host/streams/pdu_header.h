#ifndef HOST_STREAMS_PDU_HEADER_H_
#define HOST_STREAMS_PDU_HEADER_H_

#include <cstdint>
#include <span>
#include <string>

#include "host/streams/stream_assembler.h"

namespace host {

// What the host knows of PDUs and PDV items, DICOM PS3.8 section 9.3: types,
// names, lengths, and what looks right. The module reads them by itself.

enum PduType : std::uint8_t {
  kAssociateRq = 1,
  kAssociateAc = 2,
  kAssociateRj = 3,
  kPDataTf = 4,
  kReleaseRq = 5,
  kReleaseRp = 6,
  kAbort = 7,
};

// "a P-DATA-TF PDU", "an A-ABORT PDU"; other types are "a PDU of type 9".
std::string PduTypeText(std::uint8_t type);

inline constexpr std::uint32_t kPduHeaderBytes = 6;

// The first bytes of every PDU. Parsing refuses nothing: what looks right is
// asked separately.
struct PduHeader {
  std::uint8_t type = 0;  // a PduType, or another number
  std::uint8_t reserved = 0;
  std::uint32_t length = 0;  // of what follows the header, in bytes

  static PduHeader Parse(std::span<const std::uint8_t, kPduHeaderBytes> bytes);

  bool HasKnownType() const { return type >= kAssociateRq && type <= kAbort; }
  // Whether a PDU of this type may be so long; false for unknown types.
  bool HasPossibleLength() const;
};

// Of a type that is not known only this much is taken for a PDU, behind others.
inline constexpr std::uint32_t kMostBytesOfUnknownType = 1u << 20;

// Whether the bytes begin with a header of a known type and possible length;
// false for fewer bytes than a header has.
bool BeginsLikePdu(std::span<const std::uint8_t> bytes);

inline constexpr std::uint32_t kPdvLengthBytes = 4;  // the field that is first
inline constexpr std::uint32_t kPdvHeaderBytes = 6;

// The first bytes of every PDV item in a P-DATA-TF PDU.
struct PdvHeader {
  std::uint32_t length = 0;  // of what follows the length field
  std::uint8_t context = 0;
  std::uint8_t control = 0;

  static PdvHeader Parse(std::span<const std::uint8_t, kPdvHeaderBytes> bytes);

  // A part of a command set, else of a data set; the last part of it.
  bool IsCommand() const { return (control & 1) != 0; }
  bool IsLast() const { return (control & 2) != 0; }
  // Whether all three fields have values that the standard allows.
  bool IsPlausible() const;
};

// The header at a position of a stream; lost bytes of it read as zero.
PduHeader PduHeaderAt(const StreamAssembler& stream, StreamPosition at);
PdvHeader PdvHeaderAt(const StreamAssembler& stream, StreamPosition at);

}  // namespace host

#endif  // HOST_STREAMS_PDU_HEADER_H_
