#ifndef HOST_PAGE_LADDER_DRAWING_H_
#define HOST_PAGE_LADDER_DRAWING_H_

#include <string>
#include <vector>

#include "host/findings/scene.h"
#include "host/page/ladder.h"

namespace host {

// The rungs between the two sides of the connection, as drawings that follow
// each other and of which each fits on a printed page. Where nothing was sent
// for half a second or more, the time stands in the gap.
std::string DrawLadder(const SceneConnection& at,
                       const std::vector<Rung>& rungs);

// Who a side of a connection is: "STORESCU" and "192.0.2.1:104" below it; the
// title is empty where it is not known.
struct SideName {
  std::string title;
  std::string address;
};
SideName NameOf(const SceneConnection& at, std::uint32_t direction);

}  // namespace host

#endif  // HOST_PAGE_LADDER_DRAWING_H_
