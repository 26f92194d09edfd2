#ifndef UPPER_LAYER_UPPER_LAYER_DECODER_H_
#define UPPER_LAYER_UPPER_LAYER_DECODER_H_

#include <cstdint>

#include "dimse/dicom_dictionary.h"
#include "tracking/byte_array_view.h"
#include "tree/decode_tree_writer.h"

namespace dicom {

// Decodes one Upper Layer PDU into lines, field by field in wire order. Made
// for one display: the bytes, the writer and the dictionary stay the caller's
// and outlive it. All fields are big-endian.
class UpperLayerDecoder : private ByteArrayView {
 public:
  // `bytes` begins with the PDU-type byte and holds the PDU as far as it was
  // captured.
  UpperLayerDecoder(const std::uint8_t* bytes, std::uint32_t length,
                    DecodeTreeWriter& tree_writer,
                    const DicomDictionary& dictionary);

  // Writes all lines. Whatever fails becomes one last line with the position;
  // throws nothing but what that line's own writing throws.
  void DecodePdu();
};

}  // namespace dicom

#endif  // UPPER_LAYER_UPPER_LAYER_DECODER_H_
