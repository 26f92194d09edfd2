#include "host/objects/message_data.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace host {
namespace {

std::string_view SyntaxOf(Encoding encoding) {
  if (encoding.deflated) return "1.2.840.10008.1.2.1.99";
  if (!encoding.explicit_vr) return "1.2.840.10008.1.2";
  return encoding.order == ByteOrder::kBig ? "1.2.840.10008.1.2.2"
                                           : "1.2.840.10008.1.2.1";
}

std::span<const PdvPiece> DataPieces(const DialogueMessage& message) {
  return std::span(message.pieces).last(message.data_pieces);
}

}  // namespace

MessageData::MessageData(const Dialogue& dialogue,
                         const DialogueMessage& message)
    : sent_(dialogue.DataSetOf(message)),
      chosen_(ChooseEncoding(*sent_, dialogue.TransferSyntaxOf(message))),
      transfer_syntax_(chosen_.origin == EncodingOrigin::kNegotiated
                           ? dialogue.TransferSyntaxOf(message)
                           : SyntaxOf(chosen_.encoding)) {}

ByteSource& MessageData::Readable() {
  if (!chosen_.encoding.deflated) return *sent_;
  if (!inflated_) inflated_ = std::make_unique<InflatedSource>(*sent_);
  return *inflated_;
}

std::string_view MessageData::OriginText() const {
  switch (chosen_.origin) {
    case EncodingOrigin::kNegotiated:
      return "negotiated";
    case EncodingOrigin::kGuessed:
      return "guessed";
    case EncodingOrigin::kContradicts:
      return "not the negotiated one";
  }
  return "";
}

std::string MessageData::Problem() const {
  return inflated_ ? inflated_->problem() : "";
}

std::vector<DataRange> LostRanges(const Dialogue& dialogue,
                                  const DialogueMessage& message) {
  std::vector<DataRange> lost;
  const StreamAssembler* const stream = dialogue.streams[message.direction];
  if (stream == nullptr) return lost;
  std::uint64_t offset = 0;
  for (const PdvPiece& piece : DataPieces(message)) {
    const StreamPosition end = piece.position + piece.length;
    for (StreamPosition at = piece.position; at < end;) {
      const StreamPosition hole = std::min(stream->PresentUntil(at), end);
      // Behind the last byte on the wire nothing is present any more.
      const StreamPosition next = std::min(stream->NextPresent(hole), end);
      const StreamPosition hole_end = next > hole ? next : end;
      if (hole < end) {
        const auto from =
            offset + static_cast<std::uint64_t>(hole - piece.position);
        const auto length = static_cast<std::uint64_t>(hole_end - hole);
        if (!lost.empty() && lost.back().offset + lost.back().length == from) {
          lost.back().length += length;
        } else {
          lost.push_back({from, length});
        }
      }
      at = hole_end;
    }
    offset += piece.length;
  }
  return lost;
}

std::vector<std::uint8_t> CommandBytes(const Dialogue& dialogue,
                                       const DialogueMessage& message) {
  std::vector<std::uint8_t> bytes;
  const StreamAssembler* const stream = dialogue.streams[message.direction];
  if (stream == nullptr) return bytes;
  const std::size_t pieces = message.pieces.size() - message.data_pieces;
  for (const PdvPiece& piece : std::span(message.pieces).first(pieces)) {
    const std::size_t at = bytes.size();
    bytes.resize(at + piece.length);
    stream->Copy(piece.position, std::span(bytes).subspan(at));
  }
  return bytes;
}

}  // namespace host
