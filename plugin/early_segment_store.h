#ifndef PLUGIN_EARLY_SEGMENT_STORE_H_
#define PLUGIN_EARLY_SEGMENT_STORE_H_

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>

#include "tracking/segment_history.h"

namespace dicom {

// Segments that came ahead of the expected numbers, by their numbers, first in
// first out among equals.
class EarlySegmentStore {
 public:
  // Throws Unexpected when there is no memory.
  void Add(const TcpSegment& segment);

  // Removes the oldest segment with one of these number pairs and answers its
  // packet number; nothing when there is none.
  std::optional<std::uint32_t> TakeOldest(
      std::initializer_list<NumberPair> fitting);

  bool IsEmpty() const { return segments_.empty(); }
  void Clear() { segments_.clear(); }

 private:
  struct EarlySegment {
    std::uint64_t order;  // of arrival
    std::uint32_t packet_number;
  };

  std::uint64_t added_ = 0;
  std::multimap<NumberPair, EarlySegment> segments_;  // equals keep their order
};

}  // namespace dicom

#endif  // PLUGIN_EARLY_SEGMENT_STORE_H_
