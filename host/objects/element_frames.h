#ifndef HOST_OBJECTS_ELEMENT_FRAMES_H_
#define HOST_OBJECTS_ELEMENT_FRAMES_H_

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "host/dataset/data_set_reader.h"
#include "host/dialogue/dialogue.h"

namespace host {

// Writes the frames `first` to `last` of the capture, which are not 0, as they
// are to stand beside an element. Null: they are not wanted.
using FrameText =
    std::function<std::string(std::uint32_t first, std::uint32_t last)>;

// Finds the frames that brought the elements of one part of a message, which
// are asked for in their order. Looks them up where the stream has them: a step
// for each fragment and each packet of what is asked for, and no memory.
class ElementFrames {
 public:
  enum class Part { kCommandSet, kDataSet };

  // The dialogue must outlive it.
  ElementFrames(const Dialogue& dialogue, const DialogueMessage& message,
                Part part);
  // Of what is not read from the wire as it stands there: finds none.
  ElementFrames() = default;

  // The frames with the event's header and its value; of sequences and items,
  // and of encapsulated values, with the header only. Both are 0 when nothing
  // of it was captured, or its bytes are not those of the wire.
  FrameRange Of(const DataSetEvent& event);
  // The same as `text` has it; empty for frames 0 and without `text`.
  std::string TextOf(const DataSetEvent& event, const FrameText& text);

 private:
  using Pieces = std::span<const PdvPiece>;

  const StreamAssembler* stream_ = nullptr;  // null: nothing can be found
  Pieces pieces_;             // from the one that was looked at last
  std::uint64_t offset_ = 0;  // of its first byte
};

}  // namespace host

#endif  // HOST_OBJECTS_ELEMENT_FRAMES_H_
