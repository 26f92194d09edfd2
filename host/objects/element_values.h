#ifndef HOST_OBJECTS_ELEMENT_VALUES_H_
#define HOST_OBJECTS_ELEMENT_VALUES_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/dataset/tag.h"
#include "host/dialogue/dialogue.h"

namespace host {

// An element by its tag, behind those of the sequences that it is in.
using ElementPath = std::vector<Tag>;

// "0010,0020", "00100020", "0040,0275.0040,0007"; empty when it is none.
std::optional<ElementPath> ParseElementPath(std::string_view text);

// The values that a message has for each path, in their order: those of one
// element between backslashes, those of several items behind "; ". Elements of
// group 0000 are looked for in the command set. One pass over each part of the
// message. Throws Failure when its bytes cannot be read back.
std::vector<std::string> FindValues(const Dialogue& dialogue,
                                    const DialogueMessage& message,
                                    const std::vector<ElementPath>& paths);

}  // namespace host

#endif  // HOST_OBJECTS_ELEMENT_VALUES_H_
