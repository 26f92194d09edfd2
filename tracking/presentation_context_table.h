#ifndef TRACKING_PRESENTATION_CONTEXT_TABLE_H_
#define TRACKING_PRESENTATION_CONTEXT_TABLE_H_

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "tracking/byte_array_view.h"

namespace dicom {

// How data sets are encoded on one presentation context. The UID text is kept
// as the wire carried it, a pad byte included.
class TransferSyntax {
 public:
  // Never fails: what is not one of the three uncompressed syntaxes is explicit
  // VR little endian.
  explicit TransferSyntax(std::string uid_text);

  bool IsBigEndian() const { return big_endian_; }
  bool IsExplicitVr() const { return explicit_vr_; }

 private:
  bool Classify(std::string_view text);

  std::string uid_text_;
  bool big_endian_ = false;
  bool explicit_vr_ = true;
};

// The accepted presentation contexts of one host context: context ID to
// transfer syntax. Filled from A-ASSOCIATE-AC PDUs; rejected contexts are never
// entered.
class PresentationContextTable {
 public:
  // Reads one whole A-ASSOCIATE-AC PDU (from its type byte). What is wrong in
  // it ends the reading quietly; contexts entered before stay.
  void AddAcceptedContexts(const ByteArrayView& pdu);

  // Throws DoublePresentationContextId when the ID is taken.
  void AddPresentationContext(std::uint8_t id, std::string uid_text);

  // Both throw PresentationContextDoesNotExist for an ID that was not accepted.
  bool IsBigEndian(std::uint8_t id) const;
  bool IsExplicitVr(std::uint8_t id) const;

 private:
  const TransferSyntax& Find(std::uint8_t id) const;

  std::map<std::uint8_t, TransferSyntax> contexts_;
};

}  // namespace dicom

#endif  // TRACKING_PRESENTATION_CONTEXT_TABLE_H_
