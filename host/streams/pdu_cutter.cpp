#include "host/streams/pdu_cutter.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "host/capture/wire_bytes.h"

namespace host {
namespace {

// How many PDUs in a row have to look right before a start is believed.
constexpr int kChainLength = 4;
// PDV items that are looked at in one PDU: more say nothing new, and a stream
// made to look right everywhere must not cost more than a few steps a byte.
constexpr int kItemsLookedAt = 16;
// Lost bytes are filled up to this much more than was captured, so that a few
// segments far apart do not become gigabytes of zeros.
constexpr std::uint64_t kFillAtLeast = 1u << 20;
constexpr std::uint64_t kFillPerCapturedByte = 100;

constexpr StreamPosition kSearchWindow = 1 << 14;

}  // namespace

std::vector<CutPdu> PduCutter::Advance(StreamPosition final_until, bool over) {
  final_until_ =
      over ? std::numeric_limits<StreamPosition>::max() : final_until;
  end_is_final_ = over || stream_.closed();
  while (Step()) {
  }
  if (over || state_ != State::kSearching) window_ = {};
  return std::exchange(found_, {});
}

bool PduCutter::Step() {
  switch (state_) {
    case State::kNotBegun:
      if (!stream_.has_payload()) return false;
      cursor_ = delivered_until_ = stream_.begin();
      state_ = State::kInStep;
      // A connection that is captured from its middle on rarely begins with a
      // PDU.
      if (!stream_.began_with_syn()) Search(cursor_);
      return true;
    case State::kInStep:
      return StepInStep();
    case State::kSearching:
      return StepSearching();
    case State::kNotDicom:
      return false;
  }
  return false;
}

bool PduCutter::HasHeader(StreamPosition at) const {
  return stream_.PresentUntil(at) - at >= kPduHeaderBytes;
}

StreamPosition PduCutter::PduEnd(StreamPosition at) const {
  return at + kPduHeaderBytes + PduHeaderAt(stream_, at).length;
}

bool PduCutter::StepInStep() {
  if (cursor_ >= stream_.end()) return false;
  if (!HasHeader(cursor_)) return StepHeaderless();
  const PduHeader header = PduHeaderAt(stream_, cursor_);
  if (!IsTaken(header)) {
    not_dicom_from_ = cursor_;
    state_ = State::kNotDicom;
    return false;
  }
  const StreamPosition pdu_end = cursor_ + kPduHeaderBytes + header.length;
  if (stream_.PresentUntil(cursor_) < pdu_end) return StepIncomplete(header);
  Deliver(header, 0);
  return true;
}

bool PduCutter::StepHeaderless() {
  const StreamPosition hole = stream_.PresentUntil(cursor_);
  if (hole == stream_.end()) return Stop();
  if (Waits(hole)) return false;
  Search(cursor_);
  return true;
}

bool PduCutter::Stop() {
  if (end_is_final_) unfinished_ = cursor_;
  return false;
}

bool PduCutter::IsTaken(const PduHeader& header) const {
  return header.HasKnownType() ||
         (pdus_delivered_ != 0 && header.length <= kMostBytesOfUnknownType);
}

bool PduCutter::StepIncomplete(const PduHeader& header) {
  if (stream_.PresentUntil(cursor_) == stream_.end()) return Stop();
  const StreamPosition pdu_end = cursor_ + kPduHeaderBytes + header.length;
  switch (MayFill(pdu_end)) {
    case Answer::kWait:
      return false;
    case Answer::kYes:
      Deliver(header, MissingBytes(pdu_end));
      return true;
    case Answer::kNo:
      Search(cursor_ + 1);
      return true;
  }
  return false;
}

std::uint64_t PduCutter::MissingBytes(StreamPosition pdu_end) const {
  return static_cast<std::uint64_t>(pdu_end - cursor_) -
         stream_.PresentBytes(cursor_, pdu_end);
}

PduCutter::Answer PduCutter::MayFill(StreamPosition pdu_end) {
  checked_until_ = std::max(checked_until_, cursor_);
  while (checked_until_ < std::min(pdu_end, stream_.end())) {
    const StreamPosition hole = stream_.PresentUntil(checked_until_);
    if (hole < pdu_end && Waits(hole)) return Answer::kWait;
    if (hole >= pdu_end) break;
    checked_until_ = stream_.NextPresent(hole);
  }
  if (pdu_end > stream_.end()) {
    return end_is_final_ ? Answer::kNo : Answer::kWait;
  }
  const Answer follows = MayFollow(pdu_end);
  if (follows != Answer::kYes) return follows;
  const std::uint64_t most =
      kFillAtLeast + kFillPerCapturedByte * stream_.payload_bytes();
  const bool is_too_much = filled_ + MissingBytes(pdu_end) > most;
  return is_too_much ? Answer::kNo : Answer::kYes;
}

PduCutter::Answer PduCutter::MayFollow(StreamPosition at) const {
  if (HasHeader(at)) return IsPlausible(at) ? Answer::kYes : Answer::kNo;
  const StreamPosition hole = stream_.PresentUntil(at);
  const bool at_end = hole >= stream_.end();
  if (at_end ? !end_is_final_ : Waits(hole)) return Answer::kWait;
  if (hole <= at) return Answer::kYes;
  return PduHeaderAt(stream_, at).HasKnownType() ? Answer::kYes : Answer::kNo;
}

void PduCutter::Deliver(const PduHeader& header, std::uint64_t lost) {
  CutPdu pdu;
  pdu.position = cursor_;
  pdu.header = header;
  pdu.lost = lost;
  const auto before = static_cast<std::uint64_t>(cursor_ - delivered_until_);
  pdu.skipped = stream_.PresentBytes(delivered_until_, cursor_);
  pdu.lost_before = before - pdu.skipped;
  pdu.frames = stream_.Frames(cursor_, pdu.end());
  complete_.Include(stream_.Frames(delivered_until_, cursor_));
  complete_.Include(pdu.frames);
  pdu.complete_frame = complete_.last;
  pdu.complete_time = complete_.time;
  found_.push_back(pdu);
  filled_ += lost;
  ++pdus_delivered_;
  cursor_ = delivered_until_ = pdu.end();
  stream_.Seal(cursor_);
}

void PduCutter::Search(StreamPosition from) {
  state_ = State::kSearching;
  cursor_ = from;
}

bool PduCutter::StepSearching() {
  const StreamPosition present = stream_.PresentUntil(cursor_);
  if (present - cursor_ < kPduHeaderBytes) {  // on behind the next hole
    if (present >= stream_.end() || Waits(present)) return false;
    cursor_ = stream_.NextPresent(present);
    return true;
  }
  switch (FindStart(present - kPduHeaderBytes + 1)) {
    case Answer::kYes:
      state_ = State::kInStep;
      return true;
    case Answer::kNo:
      return true;
    case Answer::kWait:
      break;
  }
  return false;
}

PduCutter::Answer PduCutter::FindStart(StreamPosition until) {
  const auto at = [this](StreamPosition position) {
    return window_[static_cast<std::size_t>(position - window_begin_)];
  };
  auto end = window_begin_ + static_cast<StreamPosition>(window_.size());
  if (cursor_ < window_begin_ || cursor_ + 1 >= end) {
    window_begin_ = cursor_;
    end = cursor_ + std::min(until - cursor_, kSearchWindow) + 1;
    window_.resize(static_cast<std::size_t>(end - cursor_));
    stream_.Copy(cursor_, window_);
  }
  for (; cursor_ < until && cursor_ + 1 < end; ++cursor_) {
    const bool seems_a_header = at(cursor_) >= kAssociateRq &&
                                at(cursor_) <= kAbort && at(cursor_ + 1) == 0;
    if (!seems_a_header) continue;
    const Answer answer = IsStartOfChain(cursor_);
    if (answer != Answer::kNo) return answer;
  }
  return Answer::kNo;
}

PduCutter::Answer PduCutter::IsStartOfChain(StreamPosition at) const {
  for (int i = 0; i < kChainLength; ++i) {
    if (!HasHeader(at)) return i == 0 ? Answer::kNo : MayFollow(at);
    if (!IsPlausible(at)) return Answer::kNo;
    const StreamPosition pdu_end = PduEnd(at);
    const StreamPosition present = stream_.PresentUntil(at);
    if (present < pdu_end) {
      const bool at_end = present == stream_.end();
      if (at_end ? !end_is_final_ : Waits(present)) return Answer::kWait;
      return i == 0 ? Answer::kNo : Answer::kYes;
    }
    at = pdu_end;
  }
  return Answer::kYes;
}

bool PduCutter::IsPlausible(StreamPosition at) const {
  const PduHeader header = PduHeaderAt(stream_, at);
  if (header.reserved != 0 || !header.HasPossibleLength()) return false;
  const StreamPosition body = at + kPduHeaderBytes;
  switch (header.type) {
    case kAssociateRq:
    case kAssociateAc:
      return HasPlausibleVersion(body);
    case kPDataTf:
      return HasPlausibleItems(body, body + header.length);
    default:
      return true;
  }
}

bool PduCutter::HasPlausibleVersion(StreamPosition at) const {
  std::array<std::uint8_t, 2> version;
  if (stream_.PresentUntil(at) - at < 2) return true;
  stream_.Copy(at, version);
  return WireReader(version).Word16() == 1;
}

bool PduCutter::HasPlausibleItems(StreamPosition at,
                                  StreamPosition pdu_end) const {
  const StreamPosition present = stream_.PresentUntil(at);
  for (int i = 0; i < kItemsLookedAt && at < pdu_end; ++i) {
    if (pdu_end - at < kPdvHeaderBytes) return false;
    if (present - at < kPdvHeaderBytes) return true;
    const PdvHeader item = PdvHeaderAt(stream_, at);
    if (!item.IsPlausible()) return false;
    at += StreamPosition{kPdvLengthBytes} + item.length;
  }
  return at <= pdu_end;
}

}  // namespace host
