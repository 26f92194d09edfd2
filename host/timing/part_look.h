#ifndef HOST_TIMING_PART_LOOK_H_
#define HOST_TIMING_PART_LOOK_H_

#include <cstdint>
#include <span>

#include "host/timing/time_parts.h"

namespace host {

// How a part of the time is drawn, wherever it is: a ground with strokes on it,
// which repeat. Parts can be told apart in grey as well, by their strokes,
// their brightness and their letters.
struct PartLook {
  struct Stroke {
    int x1, y1, x2, y2;  // inside of the tile
  };

  std::uint32_t ground;  // as 0xRRGGBB
  std::uint32_t ink;     // of the strokes
  int width;             // of the strokes
  int tile;              // width and height of what repeats
  std::span<const Stroke> strokes;
};
const PartLook& LookOf(TimePart part);

}  // namespace host

#endif  // HOST_TIMING_PART_LOOK_H_
