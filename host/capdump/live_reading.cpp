#include "host/capdump/live_reading.h"

#include <chrono>
#include <thread>

#include "host/capture/capture_source.h"
#include "host/capture/pipe_wait.h"

namespace host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenLooks{200};

// Reads what is there now; false when nothing will follow.
bool ReadOn(CaptureLoader& loader, bool is_pipe) {
  if (is_pipe && !loader.IsNextThere() &&
      StandardInputHasMore(kBetweenLooks) == false) {
    loader.connections().Update();
    return true;
  }
  const auto end = Clock::now() + kBetweenLooks;
  const auto state = loader.Read([&] {
    // What came is shown before reading on has to wait for more.
    const bool may_wait =
        is_pipe && !loader.IsNextThere() && StandardInputHasMore({}) != true;
    return may_wait || Clock::now() >= end;
  });
  if (state != CaptureLoader::State::kFollowing) return true;
  if (is_pipe || !loader.Damage().empty()) return false;
  std::this_thread::sleep_for(kBetweenLooks);
  return true;
}

}  // namespace

bool IsPiped(const Options& options) {
  return options.captures.front() == kStandardInput;
}

void ReadLive(CaptureLoader& loader, bool is_pipe,
              const std::function<void()>& look) {
  while (ReadOn(loader, is_pipe)) look();
  loader.End();
}

}  // namespace host
