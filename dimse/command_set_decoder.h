#ifndef DIMSE_COMMAND_SET_DECODER_H_
#define DIMSE_COMMAND_SET_DECODER_H_

#include <cstdint>
#include <string>

#include "dimse/dicom_dictionary.h"
#include "tracking/byte_array_view.h"
#include "tracking/command_set_walk.h"
#include "tree/decode_tree_writer.h"

namespace dicom {

// Writes one command set as a section "DICOM - Command Set: " with an item for
// each element. Always reads implicit VR little endian, whatever the
// presentation context agreed. Line offsets count from the first byte of the
// command set, which is also the first byte in the hex window.
class CommandSetDecoder {
 public:
  // Decodes at once; nothing passed in is needed afterwards. `caption_suffix`
  // is what follows "DICOM - Command Set: ". `position` starts at 0 and is left
  // where the decode stands when an exception ends it: OutOfRange where the end
  // cuts a tag, a length or a value that is read, WrongTreeDepth from `writer`.
  CommandSetDecoder(const ByteArrayView& command_set,
                    const DicomDictionary& dictionary, DecodeTreeWriter& writer,
                    const std::string& caption_suffix, std::uint32_t& position);

 private:
  void DecodeElement(const CommandElement& element);
  void DecodeValue(const CommandElement& element);
  std::string CommandFieldText() const;

  const ByteArrayView bytes_;
  const DicomDictionary& dictionary_;
  DecodeTreeWriter& writer_;
  std::uint32_t& position_;
  DataElementEntry entry_;  // of the element at hand
};

}  // namespace dicom

#endif  // DIMSE_COMMAND_SET_DECODER_H_
