#ifndef DIMSE_MESSAGE_DECODER_H_
#define DIMSE_MESSAGE_DECODER_H_

#include <cstdint>
#include <string>

#include "dimse/dicom_dictionary.h"
#include "tracking/byte_array_view.h"
#include "tracking/presentation_context_table.h"
#include "tree/decode_tree_writer.h"

namespace dicom {

// One DIMSE message as the display driver hands it over: the gathered bytes and
// what the list knows of them.
struct MessageParts {
  ByteArrayView bytes;           // command set, then data set
  std::uint32_t command_length;  // bytes; may be more than were gathered
  std::uint32_t data_length;     // bytes; 0: no data set
  std::string caption_suffix;    // the message's first text
  std::uint8_t presentation_context_id;
};

// Decodes the command set and then, if there is one, the data set of a message,
// the counterpart of UpperLayerDecoder::DecodePdu: what fails in either ends in
// a line with the position, and a failing command set does not keep the data
// set from being shown. WrongTreeDepth is passed on.
class MessageDecoder {
 public:
  MessageDecoder(const DicomDictionary& dictionary,
                 const PresentationContextTable& contexts,
                 DecodeTreeWriter& writer)
      : dictionary_(dictionary), contexts_(contexts), writer_(writer) {}

  void DecodeMessage(const MessageParts& message);

 private:
  const DicomDictionary& dictionary_;
  const PresentationContextTable& contexts_;
  DecodeTreeWriter& writer_;
};

}  // namespace dicom

#endif  // DIMSE_MESSAGE_DECODER_H_
