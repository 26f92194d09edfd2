#include "host/streams/capture_loader.h"

#include <algorithm>

#include "host/text/number_text.h"

namespace host {
namespace {

constexpr unsigned kFramesBetweenLooks = 32;  // at the clock

}  // namespace

CaptureLoader::CaptureLoader(const std::filesystem::path& path,
                             const LoadOptions& options)
    : reader_(path, options.filter, options.most_temporary),
      connections_(options.hand_over, reader_.store(), options.observe),
      follow_(options.follow) {}

CaptureLoader::State CaptureLoader::Read(const TimeIsUp& time_is_up) {
  if (state_ == State::kDone) return state_;
  unsigned frames = 0;
  while (const TcpFrame* frame = reader_.Next()) {
    connections_.Add(*frame);
    ++frames;
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

std::string CaptureLoader::Damage() const {
  const bool grows = state_ == State::kFollowing && reader_.EndsInsideFrame();
  return grows ? std::string() : reader_.damage();
}

std::vector<std::string> CaptureLoader::Notes() const {
  std::vector<std::string> notes;
  if (std::string damage = Damage(); !damage.empty()) {
    notes.push_back(std::move(damage));
  }
  if (const std::uint32_t fragments = reader_.fragments(); fragments != 0) {
    notes.push_back(CountText(fragments, "IP fragment", "IP fragments") +
                    (fragments == 1 ? " was" : " were") +
                    " left out, and what TCP sent in " +
                    (fragments == 1 ? "it" : "them") +
                    " counts as lost: capture where packets are not "
                    "fragmented to see it.");
  }
  return notes;
}

}  // namespace host
