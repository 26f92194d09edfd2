#ifndef HOST_OBJECTS_DATA_SET_DUMP_H_
#define HOST_OBJECTS_DATA_SET_DUMP_H_

#include <functional>
#include <string_view>

#include "host/dialogue/dialogue.h"
#include "host/objects/element_frames.h"

namespace host {

// Takes lines of UTF-8 with their line ends.
using LineSink = std::function<void(std::string_view)>;

// Writes all elements of a message, first those of its command set, a line
// each: where it is in its part of the message, its path, VR and length, its
// name and its value with what that means; behind the position its frames, if
// `frames` has a text for them. A line that begins with "!" says
// what is wrong with the one before it. Linear in the message, in constant
// memory. Throws Failure when its bytes cannot be read back.
void DumpMessage(const Dialogue& dialogue, const DialogueMessage& message,
                 const LineSink& sink, const FrameText& frames = {});

}  // namespace host

#endif  // HOST_OBJECTS_DATA_SET_DUMP_H_
