#include "host/streams/capture_loader.h"

#include <algorithm>

namespace host {
namespace {

constexpr unsigned kFramesBetweenLooks = 32;  // at the clock

}  // namespace

CaptureLoader::CaptureLoader(const std::filesystem::path& path,
                             HandOver hand_over, bool follow)
    : reader_(path, "",
              follow ? CaptureReader::Mode::kFollow
                     : CaptureReader::Mode::kWholeFile),
      hand_over_(hand_over),
      connections_(hand_over),
      follow_(follow) {}

CaptureLoader::State CaptureLoader::Read(const TimeIsUp& time_is_up) {
  if (state_ == State::kDone) return state_;
  TcpFrame frame;
  for (unsigned frames = 1; reader_.Next(&frame); ++frames) {
    connections_.Add(frame);
    if (frames % kFramesBetweenLooks == 0 && time_is_up()) {
      connections_.Update();
      return state_ = State::kReading;
    }
  }
  if (!follow_) {
    End();
    return state_;
  }
  connections_.Update();
  return state_ = State::kFollowing;
}

void CaptureLoader::End() {
  if (state_ == State::kDone) return;
  connections_.Finish();
  state_ = State::kDone;
}

unsigned CaptureLoader::percent() const {
  const std::uint64_t size = std::max<std::uint64_t>(reader_.file_bytes(), 1);
  return static_cast<unsigned>(
      std::min<std::uint64_t>(reader_.bytes_read() * 100 / size, 100));
}

}  // namespace host
