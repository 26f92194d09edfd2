#ifndef TRACKING_PRESENTATION_CONTEXT_TABLE_H_
#define TRACKING_PRESENTATION_CONTEXT_TABLE_H_

#include <cstdint>
#include <map>
#include <string_view>

#include "tracking/byte_array_view.h"

namespace dicom {

// How data sets are encoded on one presentation context.
struct TransferSyntax {
  bool big_endian;
  bool explicit_vr;
};

// `uid_text` is the UID as the wire carried it, a pad byte included. Never
// fails: what is not one of the three uncompressed syntaxes is explicit VR
// little endian.
TransferSyntax TransferSyntaxOf(std::string_view uid_text);

// The accepted presentation contexts of one host context: context ID to
// transfer syntax. Filled from A-ASSOCIATE-AC PDUs; rejected contexts are never
// entered.
class PresentationContextTable {
 public:
  // Reads one whole A-ASSOCIATE-AC PDU (from its type byte). What is wrong in
  // it ends the reading quietly; contexts entered before stay.
  void AddAcceptedContexts(const ByteArrayView& pdu);

  // Throws DoublePresentationContextId when the ID is taken.
  void AddPresentationContext(std::uint8_t id, std::string_view uid_text);

  // Both throw PresentationContextDoesNotExist for an ID that was not accepted.
  bool IsBigEndian(std::uint8_t id) const;
  bool IsExplicitVr(std::uint8_t id) const;

 private:
  // With the same exception.
  const TransferSyntax& SyntaxOf(std::uint8_t id) const;

  std::map<std::uint8_t, TransferSyntax> contexts_;
};

}  // namespace dicom

#endif  // TRACKING_PRESENTATION_CONTEXT_TABLE_H_
