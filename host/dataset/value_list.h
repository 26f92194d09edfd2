#ifndef HOST_DATASET_VALUE_LIST_H_
#define HOST_DATASET_VALUE_LIST_H_

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "host/dataset/character_set.h"
#include "host/dataset/data_set_reader.h"

namespace host {

// The values of an element, each as text in UTF-8: texts without their padding,
// numbers in decimal digits ("0.1", "-3", "nan"), tags as "0008,0018". None for
// sequences and streams of bytes.
struct ValueList {
  std::vector<std::string> values;
  bool is_cut = false;  // there are more; of a text the last one may be short
  std::string finding;  // what is wrong with the bytes; empty when all is well
  TextFault text_fault = TextFault::kNone;  // of texts: of what kind that is
};

// `bytes` are the first of the event's value, all of it or not.
ValueList ReadValues(const DataSetEvent& event,
                     std::span<const std::uint8_t> bytes,
                     const CharacterSet& characters);

}  // namespace host

#endif  // HOST_DATASET_VALUE_LIST_H_
