#include "host/capture/frame_names.h"

#include <algorithm>

namespace host {

void FrameNames::Note(std::uint32_t frame, Place place) {
  File& file = files_[place.file];
  if (file.first == 0) file.first = frame;
  file.last = frame;
  if (!runs_.empty()) {
    const Run& run = runs_.back();
    const bool goes_on = run.place.file == place.file &&
                         place.number - run.place.number == frame - run.first;
    if (goes_on) return;
  }
  runs_.push_back({frame, place});
}

FrameNames::Place FrameNames::PlaceOf(std::uint32_t frame) const {
  const auto behind = std::ranges::upper_bound(runs_, frame, {}, &Run::first);
  if (behind == runs_.begin()) return {0, frame};
  const Run& run = *std::prev(behind);
  return {run.place.file, run.place.number + (frame - run.first)};
}

std::string FrameNames::FileOf(std::uint32_t frame) const {
  if (frame == 0 || !HasSeveralFiles()) return {};
  return files_[PlaceOf(frame).file].name;
}

std::string FrameNames::Text(std::uint32_t frame) const {
  const std::string file = FileOf(frame);
  const std::string number = std::to_string(PlaceOf(frame).number);
  return file.empty() ? number : file + ":" + number;
}

std::string FrameNames::Text(std::uint32_t first, std::uint32_t last) const {
  if (first == last) return Text(first);
  const Place begin = PlaceOf(first), end = PlaceOf(last);
  const bool one_file = begin.file == end.file;
  return Text(first) + "-" +
         (one_file ? std::to_string(end.number) : Text(last));
}

bool FrameNames::EndsBefore(std::uint32_t one, std::uint32_t other) const {
  return files_[one].last < files_[other].first;
}

}  // namespace host
