#ifndef HOST_CAPVIEW_TIME_BAR_DRAWING_H_
#define HOST_CAPVIEW_TIME_BAR_DRAWING_H_

#include <windows.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/capview/part_brushes.h"
#include "host/timing/time_shares.h"

namespace host {

// The parts that took any time, the longest first.
std::vector<TimePart> PartsOf(const AssociationTiming& times);
// "transferring 64.0 %".
std::string ShareOfPart(TimePart part, const AssociationTiming& times);

// What the time bar looks like: a bar along an association, a mark above it, a
// legend below. The device has the font for all texts.
class TimeBarDrawing {
 public:
  // For a screen of so many dots per inch. Throws Failure.
  explicit TimeBarDrawing(unsigned dpi) : dpi_(dpi), brushes_(dpi) {}

  // What all of it takes, in pixels.
  int Height() const;
  // Where in the area the bar is, without its frame: a pixel is a column.
  RECT BarIn(const RECT& area) const;

  struct Marks {
    std::optional<Microseconds> row;    // when it was there
    std::optional<std::size_t> column;  // of a run that is marked: its first
    bool has_focus = false;
  };
  void Draw(HDC device, const RECT& area, const AssociationTiming& times,
            const Marks& marks) const;

 private:
  void DrawBar(HDC device, const RECT& bar, const AssociationTiming& times,
               const Marks& marks) const;
  void DrawRowMark(HDC device, const RECT& bar, const AssociationTiming& times,
                   Microseconds at) const;
  void DrawLegend(HDC device, const RECT& bar,
                  const AssociationTiming& times) const;

  unsigned dpi_;
  PartBrushes brushes_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_TIME_BAR_DRAWING_H_
