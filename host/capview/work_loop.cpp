#include "host/capview/work_loop.h"

#include <exception>
#include <new>
#include <utility>

namespace host {
namespace {

constexpr UINT kTimerMilliseconds = 40;

TimeIsUp After(DWORD milliseconds) {
  const DWORD begin = GetTickCount();
  return [=] { return GetTickCount() - begin >= milliseconds; };
}

}  // namespace

WorkLoop::WorkLoop(HWND window, CaptureDocument& document, StatusLine& status)
    : window_(window), document_(document), status_(status) {}

bool WorkLoop::Slice(DWORD milliseconds) {
  bool more = false;
  inside_ = true;
  try {
    more = Work(milliseconds);
  } catch (const std::bad_alloc&) {
    document_.Stop();
    status_.Say(
        "The capture does not fit into memory; what was read is shown.");
  } catch (const std::exception& failure) {
    status_.Say(failure.what());
  }
  inside_ = false;
  const bool was_busy = std::exchange(busy_, more);
  UpdateTimer();
  RunWaiting();
  return was_busy || more;
}

bool WorkLoop::Work(DWORD milliseconds) {
  const TimeIsUp time_is_up = After(milliseconds);
  if (document_.Work(time_is_up)) return true;
  if (!job_) return false;
  // A failing display has the module loaded again: then it lists first.
  if (WorkAtJob(time_is_up) || !document_.IsListed()) return true;
  StopJob();
  return false;
}

bool WorkLoop::WorkAtJob(const TimeIsUp& time_is_up) {
  try {
    return job_->Work(document_, time_is_up);
  } catch (const std::exception&) {
    job_.reset();
    throw;
  }
}

void WorkLoop::UpdateTimer() const {
  if (busy_) {
    SetTimer(window_, kTimer, kTimerMilliseconds, nullptr);
  } else {
    KillTimer(window_, kTimer);
  }
}

std::optional<unsigned> WorkLoop::Percent() const {
  if (!busy_) return {};
  return job_ && document_.IsListed() ? job_->Percent() : document_.Percent();
}

void WorkLoop::RunOutside(std::function<void()> action) {
  if (!inside_) return action();
  waiting_.push_back(std::move(action));
}

// An action may work at a slice itself.
void WorkLoop::RunWaiting() {
  for (const auto& action : std::exchange(waiting_, {})) action();
}

void WorkLoop::StartJob(std::unique_ptr<Job> job) {
  job_ = std::move(job);
  Start();
}

bool WorkLoop::StopJob() {
  if (!job_) return false;
  const auto ended = std::move(job_);
  status_.Say(ended->Finish());
  return true;
}

}  // namespace host
