#include "tracking/segment_history.h"

#include <algorithm>

namespace dicom {

NumberPair NumbersOf(const TcpSegment& segment) {
  const std::uint32_t sequence = segment.SequenceNumber();
  const std::uint32_t acknowledgement = segment.AcknowledgementNumber();
  return segment.Direction() != 0 ? NumberPair(sequence, acknowledgement)
                                  : NumberPair(acknowledgement, sequence);
}

void SegmentHistory::Append(const TcpSegment& segment) {
  if (segment.Direction() != last_direction_) settled_ = entries_.size();
  last_direction_ = segment.Direction();
  entries_.push_back({segment.PacketNumber(), NumbersOf(segment)});
}

bool SegmentHistory::SettleOnDirection(std::uint8_t direction) {
  if (entries_.empty() || direction == last_direction_) return false;
  settled_ = entries_.size();
  return true;
}

bool SegmentHistory::SettleRetransmitted(const NumberPair& numbers) {
  IndexEntries();
  const auto match = newest_.find(numbers);
  if (match == newest_.end()) return false;
  const auto position = static_cast<std::size_t>(match->second - taken_);
  settled_ = std::max(settled_, position + 1);
  return true;
}

void SegmentHistory::IndexEntries() {
  indexed_ = std::max(indexed_, taken_);
  for (; indexed_ < taken_ + entries_.size(); ++indexed_) {
    const auto position = static_cast<std::size_t>(indexed_ - taken_);
    newest_[entries_[position].numbers] = indexed_;
  }
}

std::optional<std::uint32_t> SegmentHistory::TakeSettled() {
  if (!FrontIsSettled()) return std::nullopt;
  return TakeAny();
}

std::optional<std::uint32_t> SegmentHistory::TakeAny() {
  if (entries_.empty()) return std::nullopt;
  const HeldSegment front = entries_.front();
  if (taken_ < indexed_) {
    const auto newest = newest_.find(front.numbers);
    if (newest != newest_.end() && newest->second == taken_) {
      newest_.erase(newest);
    }
  }
  entries_.pop_front();
  ++taken_;
  if (settled_ > 0) --settled_;
  return front.packet_number;
}

}  // namespace dicom
