#ifndef HOST_PAGE_LADDER_H_
#define HOST_PAGE_LADDER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/findings/finding.h"
#include "host/findings/scene.h"

namespace host {

// One rung between the two sides of a connection: what one of them sent, or
// several equal things behind each other.
struct Rung {
  // Since the connection's first packet, by the clock that never goes back.
  Nanoseconds begin = 0;
  Nanoseconds end = 0;
  std::uint32_t begin_frame = 0;  // by which rungs are ordered
  bool from_client = false;       // from the side that opened the connection
  bool is_sent = true;  // false: nobody sent it, it only has to be known
  std::string text;     // UTF-8, no full stop
  // As findings are: a rejection is a fault, what went well a note.
  Severity severity = Severity::kNote;
  std::uint32_t first_frame = 0;  // 0: not captured
  std::uint32_t last_frame = 0;
};

// What went over a connection in the order in which it began. Requests of one
// command and SOP class behind each other are one rung, and their answers
// another, however many they are: "42 x C-STORE CT Image Storage", "42 answers,
// 0 failed". Holds nothing of a data set. Behind `most` rungs the middle is
// left out. Linear in the messages.
std::vector<Rung> LadderOf(const SceneConnection& at, std::size_t most);

}  // namespace host

#endif  // HOST_PAGE_LADDER_H_
