// Any bytes decode as a message to the end, whatever its command length and
// transfer syntax are: the only failure that may leave is WrongTreeDepth.
#include "dimse/message_decoder.h"
#include "errors/errors.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/tree_check.h"
#include "tests/test_dictionary.h"
#include "tests/test_module.h"

namespace {

using dicom::PresentationContextTable;

// An element of each VR, so that implicit data sets reach every value's format.
constexpr char kElements[] =
    "0000,0002;Affected SOP Class UID;UI\n"
    "0000,0100;Command Field;US\n"
    "0008,0001;A;AE\n0008,0002;A;AS\n0008,0003;A;AT\n0008,0004;A;CS\n0008,0005;"
    "A;DA\n"
    "0008,0006;A;DS\n0008,0007;A;DT\n0008,0008;A;FL\n0008,0009;A;FD\n0008,000A;"
    "A;IS\n"
    "0008,000B;A;LO\n0008,000C;A;LT\n0008,000D;A;OB\n0008,000E;A;OW\n0008,000F;"
    "A;PN\n"
    "0008,0010;A;SH\n0008,0011;A;SL\n0008,0012;A;SQ\n0008,0013;A;SS\n0008,0014;"
    "A;ST\n"
    "0008,0015;A;TM\n0008,0016;A;UI\n0008,0017;A;UL\n0008,0018;A;US\n0008,0019;"
    "A;UT\n"
    "0008,001A;A;VS\n50xx,0010;A;US\nFFFE,E000;Item;XX\nFFFE,E00D;End;XX\n";

PresentationContextTable MakeContexts() {
  PresentationContextTable contexts;
  contexts.AddPresentationContext(0, "1.2.840.10008.1.2");
  contexts.AddPresentationContext(1, "1.2.840.10008.1.2.1");
  contexts.AddPresentationContext(2, "1.2.840.10008.1.2.2");
  return contexts;  // 3 is none
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  static dicom::testing::TestHost host;
  static const dicom::testing::TestDictionary dictionary(
      "1.2.840.10008.1.2;Implicit\n", kElements);
  static const PresentationContextTable contexts = MakeContexts();
  if (size > 1 << 16) return 0;
  dicom::fuzz::FuzzInput input(data, size);
  const std::uint8_t context = input.Byte() % 4;
  const std::uint32_t command_length = input.Word();
  const dicom::testing::Bytes bytes = input.Rest();
  try {
    dicom::DecodeTreeWriter writer({host.Window(), host.Tree(), host.Images()},
                                   0);
    dicom::MessageDecoder(dictionary.Get(), contexts, writer)
        .DecodeMessage({{bytes.data(), bytes.Length()},
                        command_length,
                        bytes.Length() > command_length
                            ? bytes.Length() - command_length
                            : 1,
                        "C-ECHO-RQ",
                        context});
  } catch (const dicom::WrongTreeDepth&) {
  }
  dicom::fuzz::CheckTree(host, bytes.size());
  dicom::testing::Clear(host);
  return 0;
}
