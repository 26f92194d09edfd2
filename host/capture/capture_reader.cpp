#include "host/capture/capture_reader.h"

#include <pcap/pcap.h>

#include "host/capture/capture_source.h"

namespace host {
namespace {

std::unique_ptr<FrameRecords> OpenRecords(FileBytes& file,
                                          const std::filesystem::path& path) {
  const std::string name = CaptureName(path);
  std::string reason = "it begins like no capture file";
  try {
    if (auto records = OpenFrameRecords(file)) return records;
    const std::string other = OtherFormatText(file.Ahead(0, 8), path);
    if (!other.empty()) throw CaptureError(name + other);
  } catch (const IncompleteFile& failure) {
    reason = failure.what();
  }
  if (!file.damage().empty()) reason = file.damage();
  throw CaptureError("Cannot read " + name + " (" + reason +
                     "): give the name of a pcap or pcapng file.");
}

}  // namespace

CaptureReader::CaptureReader(const std::filesystem::path& path,
                             const std::string& filter,
                             std::optional<std::uint64_t> most_temporary)
    : file_(OpenCaptureBytes(path, most_temporary)),
      file_begin_(store_->AddFile(file_)),
      records_(OpenRecords(*file_, path)) {
  RequireKnownLinkType(CaptureName(path));
  filter_.emplace(filter, *records_->link_type());
}

void CaptureReader::RequireKnownLinkType(const std::string& name) const {
  const int link_type = *records_->link_type();
  if (IsLinkTypeKnown(link_type)) return;
  const char* known_as = pcap_datalink_val_to_name(link_type);
  throw CaptureError(
      "The frames of " + name + " are of link type " +
      (known_as != nullptr ? known_as : std::to_string(link_type)) +
      ", which is not read here: capture on Ethernet, loopback, raw IP or "
      "with Linux's \"any\" interface.");
}

const TcpFrame* CaptureReader::Next() {
  while (const std::optional<FrameKind> kind = ReadFrame()) {
    if (kind == FrameKind::kTcp) return &frame_;
    if (kind == FrameKind::kIpFragment) ++fragments_;
  }
  return nullptr;
}

// Frames that do not pass the filter are counted, so that all keep the numbers
// under which other tools show them.
std::optional<FrameKind> CaptureReader::ReadFrame() {
  const FrameRecords::Next answer = records_->Read();
  if (answer != FrameRecords::Next::kFrame) {
    NoteEnd(answer);
    return {};
  }
  ++frames_;
  const FrameRecord& record = records_->record();
  if (!filter_->Passes(record)) return FrameKind::kOther;
  const ParsedFrame parsed =
      ParseFrame(record.link_type, record.bytes, record.wire_length);
  if (parsed.kind != FrameKind::kTcp) return parsed.kind;
  frame_ = parsed.frame;
  frame_.number = frames_;
  frame_.time = record.time;
  frame_.stored =
      file_begin_ + record.offset +
      static_cast<std::uint64_t>(frame_.tcp.data() - record.bytes.data());
  return parsed.kind;
}

void CaptureReader::NoteEnd(FrameRecords::Next answer) {
  ends_inside_frame_ = answer == FrameRecords::Next::kCut;
  damage_.clear();
  const std::string& reason =
      file_->damage().empty() ? records_->reason() : file_->damage();
  if (answer == FrameRecords::Next::kEnd && file_->damage().empty()) return;
  damage_ = "The capture file is damaged or breaks off after frame " +
            std::to_string(frames_) + " (" + reason +
            "); what comes before is shown.";
}

}  // namespace host
