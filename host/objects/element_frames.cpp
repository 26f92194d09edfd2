#include "host/objects/element_frames.h"

#include <algorithm>

namespace host {
namespace {

using Kind = DataSetEvent::Kind;

// Behind the last byte that Of() speaks of.
std::uint64_t EndOf(const DataSetEvent& event) {
  const bool has_value =
      event.kind == Kind::kElement || event.kind == Kind::kFragment;
  return event.value_at + (has_value ? event.available : 0);
}

}  // namespace

ElementFrames::ElementFrames(const Dialogue& dialogue,
                             const DialogueMessage& message, Part part)
    : stream_(dialogue.streams[message.direction]) {
  const Pieces all(message.pieces);
  pieces_ = part == Part::kDataSet
                ? all.last(message.data_pieces)
                : all.first(all.size() - message.data_pieces);
}

FrameRange ElementFrames::Of(const DataSetEvent& event) {
  FrameRange frames;
  if (stream_ == nullptr || event.header_at < offset_) return frames;
  while (!pieces_.empty() &&
         event.header_at - offset_ >= pieces_.front().length) {
    offset_ += pieces_.front().length;
    pieces_ = pieces_.subspan(1);
  }
  const std::uint64_t end = EndOf(event);
  std::uint64_t begin = offset_;
  for (const PdvPiece& piece : pieces_) {
    if (begin >= end) break;
    const std::uint64_t from = std::max(event.header_at, begin) - begin;
    const std::uint64_t to = std::min<std::uint64_t>(end - begin, piece.length);
    frames.Include(
        stream_->Frames(piece.position + static_cast<StreamPosition>(from),
                        piece.position + static_cast<StreamPosition>(to)));
    begin += piece.length;
  }
  return frames;
}

std::string ElementFrames::TextOf(const DataSetEvent& event,
                                  const FrameText& text) {
  if (!text) return {};
  const FrameRange frames = Of(event);
  return frames.first == 0 ? "" : text(frames.first, frames.last);
}

}  // namespace host
