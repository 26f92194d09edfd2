#ifndef DIMSE_COMMAND_SET_DECODER_H_
#define DIMSE_COMMAND_SET_DECODER_H_

#include <string>

#include "dimse/dicom_dictionary.h"
#include "dimse/element_cursor.h"
#include "dimse/message_parts.h"
#include "tracking/command_set_walk.h"

namespace dicom {

// Writes the command set of a message as a section "DICOM - Command Set: " with
// an item for each element. Always reads implicit VR little endian, whatever
// the presentation context agreed.
class CommandSetDecoder : private ElementCursor {
 public:
  // What is passed in stays the caller's and outlives the decoder.
  CommandSetDecoder(const MessageParts& message,
                    const DicomDictionary& dictionary,
                    DecodeTreeWriter& writer);

  // Writes all lines. Throws OutOfRange where the end cuts a tag, a length or a
  // value that is read, and WrongTreeDepth; the lines before it stay.
  void Decode();

  // After a failure: the line that says where the decode stood.
  using LineCursor::ShowFailurePosition;

 private:
  // `element` is the one at the cursor, which moves past it.
  void DecodeElement(const CommandElement& element);

  const std::string& caption_suffix_;
};

}  // namespace dicom

#endif  // DIMSE_COMMAND_SET_DECODER_H_
