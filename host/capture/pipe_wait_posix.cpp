#include <poll.h>
#include <unistd.h>

#include "host/capture/pipe_wait.h"

namespace host {

std::optional<bool> StandardInputHasMore(std::chrono::milliseconds most) {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return ::poll(&input, 1, static_cast<int>(most.count())) != 0;
}

}  // namespace host
