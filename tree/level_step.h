#ifndef TREE_LEVEL_STEP_H_
#define TREE_LEVEL_STEP_H_

#include <cstdint>

namespace dicom {

// Where a line goes in the tree and what stays open after it.
enum class LevelStep : std::uint32_t {
  kSection = 0,        // a new top line; ends the section before it
  kLine = 1,           // a leaf at the current level
  kOpen = 2,           // a line that later lines nest under
  kLastLine = 3,       // a leaf; closes the current level
  kLastLineOfTwo = 4,  // a leaf; closes the current level and the one above
  kLineAtLevel1 = 5,   // back to level 1, a leaf there
  kLineAtLevel2 = 6,   // back to level 2, a leaf there
  kOpenAtLevel1 = 7,   // back to level 1, opens a level there
  kOpenAtLevel2 = 8,   // back to level 2, opens a level there
};

}  // namespace dicom

#endif  // TREE_LEVEL_STEP_H_
