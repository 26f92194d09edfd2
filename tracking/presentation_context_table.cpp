#include "tracking/presentation_context_table.h"

#include <bitset>
#include <exception>
#include <optional>

#include "errors/errors.h"
#include "tracking/pdu_header.h"

namespace dicom {
namespace {

constexpr std::uint32_t kProtocolVersion = 6;
constexpr std::uint16_t kFirstItem = 74;
constexpr std::uint8_t kContextItem = 0x21;
constexpr std::uint8_t kTransferSyntaxItem = 0x40;
constexpr std::uint16_t kItemHeader = 4;  // type, reserved, length (2)
constexpr std::uint16_t kSubItems = 8;    // behind an item's fixed fields

// There are no more offsets than that, so a longer walk goes in circles.
constexpr std::uint32_t kOffsets = 65536;

struct KnownSyntax {
  std::string_view uid;
  TransferSyntax syntax;
};
constexpr KnownSyntax kKnownSyntaxes[] = {
    {"1.2.840.10008.1.2.1", {.big_endian = false, .explicit_vr = true}},
    {"1.2.840.10008.1.2.2", {.big_endian = true, .explicit_vr = true}},
    {"1.2.840.10008.1.2", {.big_endian = false, .explicit_vr = false}},
};

std::optional<TransferSyntax> KnownSyntaxOf(std::string_view uid_text) {
  for (const KnownSyntax& known : kKnownSyntaxes) {
    if (uid_text == known.uid) return known.syntax;
  }
  return std::nullopt;
}

// Reads the accepted contexts of one A-ASSOCIATE-AC PDU into a table.
//
// Deliberate: offsets that are kept from step to step have 16 bits and wrap.
class AcceptReader {
 public:
  AcceptReader(const ByteArrayView& pdu, PresentationContextTable& table)
      : pdu_(pdu), table_(table) {}

  void Read() {
    // Deliberate: exactly version 1, although the decoder shows any odd one.
    if (pdu_.LongAt(2, kBigEndian) + kPduHeaderLength != pdu_.Length()) return;
    if (pdu_.WordAt(kProtocolVersion, kBigEndian) != 1) return;
    std::uint16_t offset = kFirstItem;
    std::bitset<kOffsets> visited;
    // An offset that comes again has nothing new: its contexts are entered.
    while (offset < pdu_.Length() && !visited[offset]) {
      visited.set(offset);
      const std::uint16_t end = EndOfItem(offset);
      if (pdu_.ByteAt(offset) == kContextItem) ReadContext(offset, end);
      offset = end;
    }
  }

 private:
  std::uint16_t EndOfItem(std::uint16_t offset) const {
    return static_cast<std::uint16_t>(offset + kItemHeader +
                                      pdu_.WordAt(offset + 2u, kBigEndian));
  }

  void ReadContext(std::uint16_t item, std::uint16_t end) {
    // Deliberate: what was proposed does not matter, and no result but 0
    // counts.
    const std::uint8_t id = pdu_.ByteAt(item + 4u);
    const bool accepted = pdu_.ByteAt(item + 6u) == 0;
    auto offset = static_cast<std::uint16_t>(item + kSubItems);
    for (std::uint32_t step = 0; offset < end; ++step) {
      if (step == kOffsets) throw OutOfRange();  // ends the whole reading
      const bool is_syntax = pdu_.ByteAt(offset) == kTransferSyntaxItem;
      const std::uint16_t length = pdu_.WordAt(offset + 2u, kBigEndian);
      if (is_syntax && accepted) {
        table_.AddPresentationContext(id,
                                      pdu_.CharactersAt(offset + 4u, length));
      }
      offset = static_cast<std::uint16_t>(offset + kItemHeader + length);
    }
  }

  const ByteArrayView& pdu_;
  PresentationContextTable& table_;
};

}  // namespace

// Deliberate: a text that is none of the known ones is tried again without its
// last character, whatever that is, and else taken as explicit VR little
// endian.
TransferSyntax TransferSyntaxOf(std::string_view uid_text) {
  std::optional<TransferSyntax> known = KnownSyntaxOf(uid_text);
  if (!known && !uid_text.empty()) {
    known = KnownSyntaxOf(uid_text.substr(0, uid_text.size() - 1));
  }
  return known.value_or(
      TransferSyntax{.big_endian = false, .explicit_vr = true});
}

void PresentationContextTable::AddAcceptedContexts(const ByteArrayView& pdu) {
  try {
    AcceptReader(pdu, *this).Read();
  } catch (const std::exception&) {
    // What was entered so far is kept.
  }
}

void PresentationContextTable::AddPresentationContext(
    std::uint8_t id, std::string_view uid_text) {
  // Deliberate: a taken ID ends the reading of the whole PDU, so a second
  // association that uses the IDs again keeps the first one's syntaxes.
  if (contexts_.contains(id)) throw DoublePresentationContextId();
  contexts_.emplace(id, TransferSyntaxOf(uid_text));
}

bool PresentationContextTable::IsBigEndian(std::uint8_t id) const {
  return SyntaxOf(id).big_endian;
}

bool PresentationContextTable::IsExplicitVr(std::uint8_t id) const {
  return SyntaxOf(id).explicit_vr;
}

const TransferSyntax& PresentationContextTable::SyntaxOf(
    std::uint8_t id) const {
  const auto context = contexts_.find(id);
  if (context == contexts_.end()) throw PresentationContextDoesNotExist();
  return context->second;
}

}  // namespace dicom
