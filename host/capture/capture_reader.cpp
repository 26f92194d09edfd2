#include "host/capture/capture_reader.h"

namespace host {

CaptureReader::CaptureReader(const std::vector<CaptureInput>& inputs,
                             const std::string& filter,
                             std::optional<std::uint64_t> most_temporary)
    : series_(inputs, *store_, most_temporary),
      filter_(filter, series_.link_type()) {}

const TcpFrame* CaptureReader::Next() {
  while (series_.Next()) {
    const FrameKind kind = ReadFrame();
    if (kind == FrameKind::kTcp) return &frame_;
    if (kind == FrameKind::kIpFragment) ++fragments_;
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
  if (parsed.kind != FrameKind::kTcp) return parsed.kind;
  frame_ = parsed.frame;
  frame_.number = series_.number();
  frame_.time = record.time;
  frame_.stored =
      series_.stored() +
      static_cast<std::uint64_t>(frame_.tcp.data() - record.bytes.data());
  return parsed.kind;
}

}  // namespace host
