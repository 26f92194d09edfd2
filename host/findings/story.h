#ifndef HOST_FINDINGS_STORY_H_
#define HOST_FINDINGS_STORY_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/findings/scene.h"

namespace host {

// One thing that happened in a connection, or several equal ones behind each
// other.
struct StoryStep {
  // From the connection's first packet on, by the clock that never goes back.
  Nanoseconds since_begin = 0;
  std::uint32_t frame = 0;  // by which steps are ordered
  std::string text;         // UTF-8, no full stop
};

struct Story {
  std::vector<StoryStep> steps;
  // Stories of the same shape: the same peers, and the same was done with the
  // same outcome. The client's port, times and sizes do not count.
  std::string shape;
};

// What happened in a connection, step by step; linear in its messages. Behind
// `most` steps the middle is left out.
Story StoryOf(const SceneConnection& at, std::size_t most);

}  // namespace host

#endif  // HOST_FINDINGS_STORY_H_
