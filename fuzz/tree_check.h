#ifndef FUZZ_TREE_CHECK_H_
#define FUZZ_TREE_CHECK_H_

#include <cstddef>

#include "tests/test_host.h"

namespace dicom::fuzz {

// What holds for every tree: no more lines than a small multiple of the bytes
// they describe, and no range that reaches behind what a host can mark.
void CheckTree(const testing::TestHost& host, std::size_t bytes);

}  // namespace dicom::fuzz

#endif  // FUZZ_TREE_CHECK_H_
