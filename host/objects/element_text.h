#ifndef HOST_OBJECTS_ELEMENT_TEXT_H_
#define HOST_OBJECTS_ELEMENT_TEXT_H_

#include <string>

#include "host/dataset/data_set_reader.h"
#include "host/dialogue/dialogue.h"
#include "host/objects/message_data.h"

namespace host {

// What a reader's event is, for people, as one line of UTF-8: an element's name
// with its value and what that means, "item 3"; empty when the event is nothing
// that has a line, as ends are.
std::string ElementText(DataSetReader& reader);
// The same of an element of this message's command set, whose status is that of
// its service.
std::string CommandElementText(DataSetReader& reader,
                               const DialogueMessage& message);

// "data set, 5,553 bytes, Explicit VR Little Endian (negotiated)", and whether
// its end is missing.
std::string DataSetTitle(const DialogueMessage& message,
                         const MessageData& data);

}  // namespace host

#endif  // HOST_OBJECTS_ELEMENT_TEXT_H_
