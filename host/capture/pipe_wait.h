#ifndef HOST_CAPTURE_PIPE_WAIT_H_
#define HOST_CAPTURE_PIPE_WAIT_H_

#include <chrono>
#include <optional>

namespace host {

// Whether standard input has bytes, or has ended, so that reading does not wait
// for long; waits for that at most as long as it is told. None where the system
// cannot say.
std::optional<bool> StandardInputHasMore(std::chrono::milliseconds most);

}  // namespace host

#endif  // HOST_CAPTURE_PIPE_WAIT_H_
