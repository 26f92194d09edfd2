#include "dimse/message_decoder.h"

#include <exception>

#include "dimse/command_set_decoder.h"
#include "dimse/data_set_decoder.h"
#include "errors/errors.h"

namespace dicom {
namespace {

// What fails becomes a line with the position. The tree's own limit does not:
// no line would be right then.
template <typename Decoder>
void DecodeOrShowPosition(Decoder decoder) {
  try {
    decoder.Decode();
  } catch (const WrongTreeDepth&) {
    throw;
  } catch (const std::exception&) {
    decoder.ShowFailurePosition();
  }
}

}  // namespace

void MessageDecoder::DecodeMessage(const MessageParts& message) {
  DecodeOrShowPosition(CommandSetDecoder(message, dictionary_, writer_));
  if (message.data_length == 0) return;
  DecodeOrShowPosition(
      DataSetDecoder(message, contexts_, dictionary_, writer_));
}

}  // namespace dicom
