#ifndef DIMSE_MESSAGE_DECODER_H_
#define DIMSE_MESSAGE_DECODER_H_

#include "dimse/dicom_dictionary.h"
#include "dimse/message_parts.h"
#include "tracking/presentation_context_table.h"
#include "tree/decode_tree_writer.h"

namespace dicom {

// Decodes the command set and then, if there is one, the data set of a message,
// the counterpart of UpperLayerDecoder: what fails in either ends in a line
// with the position, and a failing command set does not keep the data set from
// being shown. What is passed in stays the caller's and outlives the decoder.
class MessageDecoder {
 public:
  MessageDecoder(const DicomDictionary& dictionary,
                 const PresentationContextTable& contexts,
                 DecodeTreeWriter& writer)
      : dictionary_(dictionary), contexts_(contexts), writer_(writer) {}

  // Throws WrongTreeDepth: behind it no line would be right.
  void DecodeMessage(const MessageParts& message);

 private:
  const DicomDictionary& dictionary_;
  const PresentationContextTable& contexts_;
  DecodeTreeWriter& writer_;
};

}  // namespace dicom

#endif  // DIMSE_MESSAGE_DECODER_H_
