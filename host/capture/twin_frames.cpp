#include "host/capture/twin_frames.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace host {
namespace {

constexpr Nanoseconds kRemembered = 1'000'000'000;
constexpr std::size_t kMostRemembered = 65536;

std::uint64_t HashBytes(std::span<const std::uint8_t> bytes,
                        std::uint64_t hash) {
  for (const std::uint8_t byte : bytes) {  // FNV-1a
    hash = (hash ^ byte) * 0x100000001B3;
  }
  return hash;
}

}  // namespace

void TwinFrames::Age(Nanoseconds time) {
  const bool is_over =
      time >= begin_ + kRemembered || newer_.size() >= kMostRemembered;
  if (!is_over) return;
  older_ = std::exchange(newer_, {});
  begin_ = time;
}

bool TwinFrames::IsTwin(const FrameRecord& frame, std::uint32_t file) {
  Age(frame.time);
  const Key key{frame.time / 1000,
                HashBytes(frame.bytes, 0xCBF29CE484222325 ^ frame.wire_length)};
  const auto known = older_.find(key);
  std::vector<Brought>& brought =
      known != older_.end() ? known->second : newer_[key];
  std::uint32_t most = 0;  // of any file so far
  Brought* own = nullptr;
  for (Brought& one : brought) {
    most = std::max(most, one.count);
    if (one.file == file) own = &one;
  }
  if (own == nullptr) own = &brought.emplace_back(Brought{file, 0});
  return ++own->count <= most;
}

}  // namespace host
