#include "host/dialogue/dialogue.h"

#include <algorithm>
#include <span>

#include "host/dataset/command_values.h"
#include "host/dialogue/command_set.h"
#include "host/dialogue/dialogue_reader.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// The value of some pieces of one stream, behind each other.
class PieceSource final : public ByteSource {
 public:
  PieceSource(const StreamAssembler& stream, std::span<const PdvPiece> pieces)
      : stream_(stream) {
    for (const PdvPiece& piece : pieces) {
      pieces_.push_back({size_, piece.position});
      size_ += piece.length;
    }
  }

  std::uint64_t size() const override { return size_; }

  std::size_t Read(std::uint64_t offset, std::span<std::uint8_t> to) override {
    if (offset >= size_) return 0;
    to = to.first(static_cast<std::size_t>(
        std::min<std::uint64_t>(to.size(), size_ - offset)));
    auto piece = std::prev(
        std::ranges::upper_bound(pieces_, offset, {}, &PlacedPiece::offset));
    for (std::size_t done = 0; done < to.size(); ++piece) {
      const auto next = std::next(piece);
      const std::uint64_t end = next == pieces_.end() ? size_ : next->offset;
      const std::uint64_t at = offset + done;
      const auto count = static_cast<std::size_t>(
          std::min<std::uint64_t>(end - at, to.size() - done));
      stream_.Copy(
          piece->position + static_cast<StreamPosition>(at - piece->offset),
          to.subspan(done, count));
      done += count;
    }
    return to.size();
  }

 private:
  struct PlacedPiece {
    std::uint64_t offset;  // in the value
    StreamPosition position;
  };

  const StreamAssembler& stream_;
  std::vector<PlacedPiece> pieces_;
  std::uint64_t size_ = 0;
};

}  // namespace

std::string CommandFieldText(std::uint16_t command_field) {
  constexpr Tag kCommandField{0x0000, 0x0100};
  const std::string name = CommandValueText(kCommandField, command_field);
  return name.empty() ? "command " + HexText(command_field) : name;
}

CommandSet Dialogue::ReadCommand(const DialogueMessage& message) const {
  const StreamAssembler* const stream = streams[message.direction];
  if (stream == nullptr) return {};
  const std::size_t count = message.pieces.size() - message.data_pieces;
  PieceSource source(*stream, std::span(message.pieces).first(count));
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(
      std::min<std::uint64_t>(source.size(), kMostCommandBytes)));
  source.Read(0, bytes);
  return ReadCommandSet(bytes);
}

std::unique_ptr<ByteSource> Dialogue::DataSetOf(
    const DialogueMessage& message) const {
  const StreamAssembler* const stream = streams[message.direction];
  if (stream == nullptr) {
    return std::make_unique<MemorySource>(std::span<const std::uint8_t>());
  }
  return std::make_unique<PieceSource>(
      *stream, std::span(message.pieces).last(message.data_pieces));
}

const PresentationContext* Dialogue::ContextOf(
    const DialogueMessage& message) const {
  return associations[message.association].FindContext(message.context);
}

std::string_view Dialogue::TransferSyntaxOf(
    const DialogueMessage& message) const {
  const PresentationContext* const context = ContextOf(message);
  if (context == nullptr || !context->IsAccepted()) return {};
  return context->chosen_syntax;
}

WirePlace Dialogue::PlaceOfPdu(std::uint32_t pdu) const {
  const DialoguePdu& one = pdus[pdu];
  return {pdu, one.direction, one.first_frame, one.last_frame, one.time};
}

std::optional<std::uint32_t> Dialogue::AssociationOfPdu(
    std::uint32_t pdu) const {
  const auto found =
      std::ranges::upper_bound(associations, pdu, {}, &Association::first_pdu);
  if (found == associations.begin()) return {};
  return static_cast<std::uint32_t>(found - associations.begin() - 1);
}

const Dialogue* DialogueOf(const Connection& connection) {
  const auto* const reader =
      dynamic_cast<const DialogueReader*>(connection.observer.get());
  return reader == nullptr ? nullptr : &reader->dialogue();
}

}  // namespace host
