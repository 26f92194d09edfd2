#ifndef HOST_DATASET_VALUE_TEXT_H_
#define HOST_DATASET_VALUE_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "host/dataset/character_set.h"
#include "host/dataset/data_set_reader.h"

namespace host {

// A value as a line of text for people.
struct ShownValue {
  // As it was sent, in characters: "20261121", "1.2.840.10008.1.2", "1\2\3",
  // the first bytes of a stream as "00 01 02". Control characters are escaped.
  std::string text;
  // What that says, where it does not say it itself: "2026-11-21", "Implicit VR
  // Little Endian", "family Buc, given Jerome", "300 ms". Empty when it does.
  std::string meaning;
  // What is wrong with it, a phrase; empty when all is well.
  std::string finding;
};

// How many bytes of a value are enough to show it. What is longer ends in
// "...".
constexpr std::size_t kShownBytes = 256;

// `bytes` are the first of the event's value, best as many as above.
ShownValue ShowValue(const DataSetEvent& event,
                     std::span<const std::uint8_t> bytes,
                     const CharacterSet& characters);

}  // namespace host

#endif  // HOST_DATASET_VALUE_TEXT_H_
