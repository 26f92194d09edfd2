#ifndef HOST_CAPVIEW_PART_BRUSHES_H_
#define HOST_CAPVIEW_PART_BRUSHES_H_

#include <windows.h>

#include <array>
#include <cstddef>

#include "host/capview/owned_handles.h"
#include "host/timing/time_parts.h"

namespace host {

// Draws the parts of a time as boxes: see PartLook.
class PartBrushes {
 public:
  // For a screen of so many dots per inch. Throws Failure.
  explicit PartBrushes(unsigned dpi);

  // With the part's letter in the middle, in the device's font, where there is
  // room for it.
  void Draw(HDC device, const RECT& box, TimePart part) const;

 private:
  std::array<Brush, kTimeParts> brushes_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_PART_BRUSHES_H_
