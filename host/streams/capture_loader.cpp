#include "host/streams/capture_loader.h"

#include <utility>

#include "host/streams/file_gaps.h"
namespace host {
namespace {

constexpr unsigned kFramesBetweenLooks = 32;      // at the clock
constexpr std::uint64_t kFramesPerSecond = 4000;  // of a capture at rest

}  // namespace

CaptureLoader::CaptureLoader(const std::vector<CaptureInput>& inputs,
                             const LoadOptions& options)
    : reader_(inputs, options.filter, options.most_temporary),
      connections_(options.hand_over, reader_.store(), options.observe,
                   reader_.names(), options.part),
      follow_(options.follow),
      at_rest_(options.at_rest) {}

// What is at rest is read faster than it came, and its own clock need not go
// forwards: its frames tell the time.
ConnectionBuilder::Clock::time_point CaptureLoader::Now() const {
  using Clock = ConnectionBuilder::Clock;
  if (!at_rest_) return Clock::now();
  return Clock::time_point(
      std::chrono::milliseconds(frames_ * 1000 / kFramesPerSecond));
}

CaptureLoader::State CaptureLoader::Read(const TimeIsUp& time_is_up) {
  if (state_ == State::kDone) return state_;
  unsigned frames = 0;
  while (reader_.Read()) {
    if (const TcpFrame* frame = reader_.segment()) connections_.Add(*frame);
    ++frames;
    ++frames_;
    // Whoever follows a pipe must not read on where that would wait.
    const bool looks = follow_ || frames % kFramesBetweenLooks == 0;
    if (looks && time_is_up()) {
      connections_.Update(Now());
      return state_ = State::kReading;
    }
  }
  if (!follow_) {
    End();
    return state_;
  }
  connections_.Update(Now());
  return state_ = State::kFollowing;
}

void CaptureLoader::End() {
  if (state_ == State::kDone) return;
  connections_.Finish();
  gaps_ = DescribeFileGaps(connections_, *reader_.names());
  state_ = State::kDone;
}

unsigned CaptureLoader::percent() const { return reader_.percent(); }

std::vector<std::string> CaptureLoader::Failures() const {
  const bool grows = state_ == State::kFollowing && reader_.EndsInsideFrame();
  return grows ? std::vector<std::string>() : reader_.Failures();
}

std::string CaptureLoader::Damage() const {
  const std::vector<std::string> failures = Failures();
  return failures.empty() ? std::string() : failures.front();
}

std::vector<std::string> CaptureLoader::Notes() const {
  std::vector<std::string> notes = Failures();
  for (auto& note : reader_.Notes()) notes.push_back(std::move(note));
  notes.insert(notes.end(), gaps_.begin(), gaps_.end());
  return notes;
}

}  // namespace host
