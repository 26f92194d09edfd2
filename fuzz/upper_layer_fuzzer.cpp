// Any bytes decode as a PDU to the end, and as an accept are read to the end:
// nothing is thrown, and the lines are bounded by the input.
#include "fuzz/fuzz_input.h"
#include "fuzz/tree_check.h"
#include "tests/test_dictionary.h"
#include "tests/test_module.h"
#include "tracking/presentation_context_table.h"
#include "tree/decode_tree_writer.h"
#include "upper_layer/upper_layer_decoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  static dicom::testing::TestHost host;
  static const dicom::testing::TestDictionary dictionary(
      "1.2.840.10008.1.2;Implicit\n");
  // The first byte is the host's: whether it shows message data.
  if (size == 0 || size > 1 << 17) return 0;
  host.SetState(DICOM_STATE_SHOW_MESSAGE_DATA, std::uint32_t{data[0]} & 1);
  const auto length = static_cast<std::uint32_t>(size - 1);
  {
    dicom::DecodeTreeWriter writer({host.Window(), host.Tree(), host.Images()},
                                   0);
    dicom::UpperLayerDecoder({data + 1, length}, dictionary.Get(), writer)
        .DecodePdu();
  }
  dicom::PresentationContextTable contexts;
  contexts.AddAcceptedContexts({data + 1, length});
  dicom::fuzz::CheckTree(host, length);
  dicom::testing::Clear(host);
  return 0;
}
