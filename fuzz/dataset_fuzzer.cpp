// The host's reader of data sets. The first byte says how the others are
// encoded, or that this is to be judged from them.
#include "fuzz/fuzz_input.h"
#include "host/dataset/inflated_source.h"
#include "host/dataset/transfer_syntax.h"
#include "tests/data_set_walk.h"

namespace dicom::fuzz {
namespace {

// The whole stream, when it is short.
testing::Bytes Inflated(const testing::Bytes& bytes) {
  host::MemorySource source(bytes);
  host::InflatedSource inflated(source);
  testing::Bytes data_set(static_cast<std::size_t>(
      std::min<std::uint64_t>(inflated.size(), 65536)));
  Require(inflated.Read(0, data_set) == data_set.size(), "it reads its size");
  return data_set;
}

void Run(FuzzInput& input) {
  constexpr host::Encoding kEncodings[] = {host::kImplicitLittle,
                                           host::kExplicitLittle,
                                           host::kExplicitBig, host::kDeflated};
  const std::uint8_t kind = input.Byte();
  testing::Bytes bytes = input.Rest();
  host::MemorySource source(bytes);
  host::Encoding encoding = kEncodings[kind % 4];
  if (kind >= 128) encoding = host::JudgeEncoding(source).encoding;
  if (encoding.deflated) bytes = Inflated(bytes);
  const testing::DataSetWalk walk(bytes, encoding);
  Require(walk.problem.empty(), walk.problem.c_str());
}

}  // namespace
}  // namespace dicom::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  if (size > 1 << 16) return 0;
  dicom::fuzz::FuzzInput input(data, size);
  dicom::fuzz::Run(input);
  return 0;
}
