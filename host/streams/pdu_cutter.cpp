#include "host/streams/pdu_cutter.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "host/capture/frame_parser.h"

namespace host {
namespace {

constexpr std::uint32_t kMaxOtherPdu = 1u << 20;

// How many PDUs in a row have to look right before a start is believed.
constexpr int kChainLength = 4;
// PDV items that are looked at in one PDU: more say nothing new, and a stream
// made to look right everywhere must not cost more than a few steps a byte.
constexpr int kItemsLookedAt = 16;
// Lost bytes are filled up to this much more than was captured, so that a few
// segments far apart do not become gigabytes of zeros.
constexpr std::uint64_t kFillAtLeast = 1u << 20;
constexpr std::uint64_t kFillPerCapturedByte = 100;

constexpr std::size_t kSearchWindow = 1u << 16;

struct Header {
  std::uint8_t type = 0;
  std::uint8_t reserved = 0;
  std::uint32_t length = 0;
};

Header HeaderAt(const StreamAssembler& stream, StreamPosition at) {
  std::array<std::uint8_t, kPduHeaderBytes> bytes;
  stream.Copy(at, bytes.size(), bytes.data());
  return {bytes[0], bytes[1], Word32At(bytes, 2)};
}

}  // namespace

void PduCutter::Advance(StreamPosition final_until, bool over,
                        std::vector<CutPdu>* pdus) {
  final_until_ =
      over ? std::numeric_limits<StreamPosition>::max() : final_until;
  end_is_final_ = over || stream_.closed();
  pdus_ = pdus;
  while (Step()) {
  }
}

// One step on; false when there is nothing more to do for now.
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
  return at + kPduHeaderBytes + HeaderAt(stream_, at).length;
}

bool PduCutter::StepInStep() {
  if (cursor_ >= stream_.end()) return false;
  if (!HasHeader(cursor_)) return HeaderInHole();
  const Header header = HeaderAt(stream_, cursor_);
  if (!IsTypeTaken(header.type, header.length)) {
    not_dicom_from_ = cursor_;
    state_ = State::kNotDicom;
    return false;
  }
  const StreamPosition pdu_end = PduEnd(cursor_);
  if (stream_.PresentUntil(cursor_) < pdu_end) return StepIncomplete(pdu_end);
  Deliver(pdu_end, 0);
  return true;
}

bool PduCutter::HeaderInHole() {
  const StreamPosition hole = stream_.PresentUntil(cursor_);
  if (hole == stream_.end()) return Stop();
  if (Waits(hole)) return false;
  Search(cursor_);
  return true;
}

// The stream goes no further for now; at its end the PDU stays unfinished.
bool PduCutter::Stop() {
  if (end_is_final_) unfinished_ = cursor_;
  return false;
}

bool PduCutter::IsTypeTaken(std::uint8_t type, std::uint32_t length) const {
  if (type >= 1 && type <= 7) return true;
  return pdus_delivered_ != 0 && length <= kMaxOtherPdu;
}

bool PduCutter::StepIncomplete(StreamPosition pdu_end) {
  if (stream_.PresentUntil(cursor_) == stream_.end()) return Stop();
  switch (MayFill(pdu_end)) {
    case Answer::kWait:
      return false;
    case Answer::kYes: {
      const auto all = static_cast<std::uint64_t>(pdu_end - cursor_);
      Deliver(pdu_end, all - stream_.PresentBytes(cursor_, pdu_end));
      return true;
    }
    case Answer::kNo:
      break;
  }
  Search(cursor_ + 1);
  return true;
}

// Whether the holes in the PDU at the cursor may become zeros.
PduCutter::Answer PduCutter::MayFill(StreamPosition pdu_end) {
  checked_until_ = std::max(checked_until_, cursor_);
  while (checked_until_ < std::min(pdu_end, stream_.end())) {
    const StreamPosition hole = stream_.PresentUntil(checked_until_);
    if (hole < pdu_end && Waits(hole)) return Answer::kWait;
    if (hole >= pdu_end) break;
    checked_until_ = stream_.NextPresent(hole);
  }
  if (pdu_end > stream_.end())
    return end_is_final_ ? Answer::kNo : Answer::kWait;
  const Answer follows = MayFollow(pdu_end);
  if (follows != Answer::kYes) return follows;
  const auto all = static_cast<std::uint64_t>(pdu_end - cursor_);
  const std::uint64_t lost = all - stream_.PresentBytes(cursor_, pdu_end);
  const std::uint64_t most =
      kFillAtLeast + kFillPerCapturedByte * stream_.payload_bytes();
  return filled_ + lost <= most ? Answer::kYes : Answer::kNo;
}

// Whether what is at `at` may come after a PDU: a PDU, a hole or the end.
PduCutter::Answer PduCutter::MayFollow(StreamPosition at) const {
  if (HasHeader(at)) return IsPlausible(at) ? Answer::kYes : Answer::kNo;
  const StreamPosition hole = stream_.PresentUntil(at);
  const bool at_end = hole >= stream_.end();
  if (at_end ? !end_is_final_ : Waits(hole)) return Answer::kWait;
  if (hole <= at) return Answer::kYes;
  std::uint8_t type;
  stream_.Copy(at, 1, &type);
  return type >= 1 && type <= 7 ? Answer::kYes : Answer::kNo;
}

void PduCutter::Deliver(StreamPosition pdu_end, std::uint64_t lost) {
  CutPdu pdu;
  pdu.position = cursor_;
  pdu.length = static_cast<std::uint64_t>(pdu_end - cursor_);
  pdu.type = HeaderAt(stream_, cursor_).type;
  pdu.lost = lost;
  const auto before = static_cast<std::uint64_t>(cursor_ - delivered_until_);
  pdu.skipped = stream_.PresentBytes(delivered_until_, cursor_);
  pdu.lost_before = before - pdu.skipped;
  pdu.frames = stream_.Frames(cursor_, pdu_end);
  complete_frame_ =
      std::max({complete_frame_, stream_.Frames(delivered_until_, cursor_).last,
                pdu.frames.last});
  pdu.complete_frame = complete_frame_;
  pdus_->push_back(pdu);
  filled_ += lost;
  ++pdus_delivered_;
  cursor_ = delivered_until_ = pdu_end;
  stream_.Seal(pdu_end);
}

// Searches a PDU from `from` on.
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
  const StreamPosition last = present - kPduHeaderBytes + 1;
  switch (CandidateIn(cursor_, last)) {
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

// Moves the cursor to the first start of a chain in [from, to), or to the end
// of what one window shows.
PduCutter::Answer PduCutter::CandidateIn(StreamPosition from,
                                         StreamPosition to) {
  to = std::min(to, from + static_cast<StreamPosition>(kSearchWindow));
  std::vector<std::uint8_t> window(static_cast<std::size_t>(to - from) + 1);
  stream_.Copy(from, window.size(), window.data());
  for (std::size_t i = 0; i + 1 < window.size(); ++i) {
    if (window[i] < 1 || window[i] > 7 || window[i + 1] != 0) continue;
    cursor_ = from + static_cast<StreamPosition>(i);
    const Answer answer = IsStartOfChain(cursor_);
    if (answer != Answer::kNo) return answer;
  }
  cursor_ = to;
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
  const Header header = HeaderAt(stream_, at);
  if (header.reserved != 0) return false;
  switch (header.type) {
    case 1:
    case 2: {
      if (header.length < 68 || header.length > 1u << 24) return false;
      const StreamPosition version_end = at + kPduHeaderBytes + 2;
      if (stream_.PresentUntil(at) < version_end) return true;
      std::array<std::uint8_t, 2> version;
      stream_.Copy(at + kPduHeaderBytes, 2, version.data());
      return Word16At(version, 0) == 1;
    }
    case 3:
    case 5:
    case 6:
    case 7:
      return header.length == 4;
    case kPDataTf:
      return header.length >= 6 && header.length <= 1u << 29 &&
             HasPlausibleItems(at + kPduHeaderBytes, PduEnd(at));
    default:
      return false;
  }
}

// Whether the PDV items from `at` on, as far as they are there, are well formed
// and end where the PDU ends.
bool PduCutter::HasPlausibleItems(StreamPosition at,
                                  StreamPosition pdu_end) const {
  const StreamPosition present = stream_.PresentUntil(at);
  for (int i = 0; i < kItemsLookedAt && at < pdu_end; ++i) {
    if (pdu_end - at < kItemHeaderBytes) return false;
    if (present - at < kItemHeaderBytes) return true;
    std::array<std::uint8_t, kItemHeaderBytes> item;
    stream_.Copy(at, item.size(), item.data());
    const std::uint32_t length = Word32At(item, 0);
    if (length < 2 || item[4] % 2 == 0 || item[5] > 3) return false;
    at += StreamPosition{4} + length;
  }
  return at <= pdu_end;
}

}  // namespace host
