#include "dimse/message_decoder.h"

#include <exception>

#include "dimse/command_set_decoder.h"
#include "dimse/data_set_decoder.h"
#include "dimse/value_format.h"
#include "errors/errors.h"
#include "tracking/saturating_sum.h"

namespace dicom {
namespace {

// Runs `decode` with a position that it moves; what fails becomes a line with
// that position, counted from `base_offset`. The tree's own limit does not: no
// line would be right then.
template <typename Decode>
void DecodeOrShowPosition(DecodeTreeWriter& writer, std::uint32_t base_offset,
                          Decode decode) {
  std::uint32_t position = 0;
  try {
    decode(position);
  } catch (const WrongTreeDepth&) {
    throw;
  } catch (const std::exception&) {
    const std::uint32_t offset = SaturatingSum(base_offset, position);
    writer.AddLine("ERROR - Could not decode further at Position: " +
                       HexAndDecimal(offset),
                   LevelStep::kSection, offset, 1);
  }
}

}  // namespace

void MessageDecoder::DecodeMessage(const MessageParts& message) {
  DecodeOrShowPosition(writer_, 0, [&](std::uint32_t& position) {
    CommandSetDecoder(message.bytes.Part(0, message.command_length),
                      dictionary_, writer_, message.caption_suffix, position);
  });
  if (message.data_length == 0) return;
  const std::uint32_t base_offset = message.command_length;
  DecodeOrShowPosition(writer_, base_offset, [&](std::uint32_t& position) {
    DataSetDecoder(message.bytes.Part(base_offset, message.data_length),
                   dictionary_, writer_, contexts_,
                   message.presentation_context_id, base_offset, position);
  });
}

}  // namespace dicom
