#include "host/capture/capture_reader.h"

#include <algorithm>

#include "host/text/number_text.h"

namespace host {

CaptureReader::CaptureReader(const std::vector<CaptureInput>& inputs,
                             const std::string& filter,
                             std::optional<std::uint64_t> most_temporary)
    : series_(inputs, *store_, most_temporary),
      filter_(filter, series_.link_type()) {}

bool CaptureReader::Read() {
  has_segment_ = false;
  if (!series_.Next()) return false;
  has_segment_ = ReadFrame() == FrameKind::kTcp;
  return true;
}

const TcpFrame* CaptureReader::Next() {
  while (Read()) {
    if (has_segment_) return &frame_;
  }
  return nullptr;
}

// Frames that do not pass the filter are counted, so that all keep the numbers
// under which other tools show them.
FrameKind CaptureReader::ReadFrame() {
  const FrameRecord& record = series_.record();
  if (!filter_.Passes(record)) return FrameKind::kOther;
  const ParsedFrame parsed =
      ParseFrame(record.link_type, record.bytes, record.wire_length);
  if (parsed.kind == FrameKind::kIpFragment) {
    return ReadFragment(parsed.fragment);
  }
  if (parsed.kind != FrameKind::kTcp) return parsed.kind;
  frame_ = parsed.frame;
  frame_.number = series_.number();
  frame_.time = record.time;
  frame_.stored =
      series_.stored() +
      static_cast<std::uint64_t>(frame_.tcp.data() - record.bytes.data());
  return parsed.kind;
}

// A packet that is whole may be a fragment of another one that was wrapped in
// it, and shorter.
FrameKind CaptureReader::ReadFragment(const IpFragment& fragment) {
  ParsedFrame parsed{FrameKind::kIpFragment, {}, fragment};
  const WholePacket* packet = nullptr;
  while (parsed.kind == FrameKind::kIpFragment) {
    packet = fragments_.Add(parsed.fragment, series_.number(),
                            series_.record().time);
    if (packet == nullptr) return parsed.kind;
    parsed = ParseWholePacket(packet->name, packet->bytes, packet->wire_length);
  }
  if (parsed.kind != FrameKind::kTcp) return parsed.kind;
  frame_ = parsed.frame;
  frame_.number = series_.number();
  frame_.time = series_.record().time;
  frame_.stored = store_->Append(frame_.tcp);
  SetParts(*packet);
  return parsed.kind;
}

void CaptureReader::SetParts(const WholePacket& packet) {
  const auto begin =
      static_cast<std::size_t>(frame_.tcp.data() - packet.bytes.data());
  const std::size_t end = begin + frame_.tcp.size();
  parts_.clear();
  std::size_t at = 0;
  for (const FramePart& part : packet.parts) {
    const std::size_t from = std::max(at, begin);
    at += part.length;
    const std::size_t to = std::min(at, end);
    if (from >= to) continue;
    parts_.push_back(
        {static_cast<std::uint32_t>(to - from), part.frame, part.time});
  }
  frame_.parts = parts_;
}

std::vector<std::string> CaptureReader::Notes() const {
  std::vector<std::string> notes = series_.Notes();
  if (const auto count = fragments_.left_out(); count != 0) {
    notes.push_back(CountText(count, "IP fragment was", "IP fragments were") +
                    " left out, since others of the same packet are not in "
                    "the capture; what TCP sent in " +
                    (count == 1 ? "it" : "them") + " counts as lost.");
  }
  if (const auto count = fragments_.overlaps(); count != 0) {
    notes.push_back(
        CountText(count, "IP fragment overlaps", "IP fragments overlap") +
        " others of the same packet: the first copy of each byte counts.");
  }
  return notes;
}

}  // namespace host
