#ifndef HOST_DATASET_COMMAND_VALUES_H_
#define HOST_DATASET_COMMAND_VALUES_H_

#include <cstdint>
#include <string>

#include "host/dataset/tag.h"

namespace host {

// What a number in a command set stands for: "C-STORE-RQ" of a Command Field,
// "medium" of a Priority, "no data set" of a Command Data Set Type, "A700h" of
// a Status. Empty for others. DICOM PS3.7 annex E.
std::string CommandValueText(Tag tag, std::uint64_t value);

}  // namespace host

#endif  // HOST_DATASET_COMMAND_VALUES_H_
