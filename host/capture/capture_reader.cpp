#include "host/capture/capture_reader.h"

#include <pcap/pcap.h>

#include <utility>

#include "host/text/file_name.h"

namespace host {
namespace {

[[noreturn]] void RefuseFile(const std::string& name,
                             const std::string& reason) {
  throw CaptureError("Cannot read " + name + " (" + reason +
                     "): give the name of a pcap or pcapng file.");
}

std::shared_ptr<FileBytes> OpenFile(const std::filesystem::path& path) {
  SystemFile::Opened opened = SystemFile::Open(path);
  if (!opened.file) RefuseFile(Utf8FromPath(path), opened.reason);
  return std::make_shared<FileBytes>(std::move(opened.file));
}

std::unique_ptr<FrameRecords> OpenRecords(FileBytes& file,
                                          const std::string& name) {
  std::unique_ptr<FrameRecords> records;
  try {
    records = OpenFrameRecords(file);
  } catch (const CaptureError& failure) {
    RefuseFile(name, failure.what());
  }
  if (!records) RefuseFile(name, "it begins like no capture file");
  return records;
}

}  // namespace

CaptureReader::CaptureReader(const std::filesystem::path& path,
                             const std::string& filter)
    : file_(OpenFile(path)),
      file_begin_(store_->AddFile(file_)),
      records_(OpenRecords(*file_, Utf8FromPath(path))) {
  RequireKnownLinkType(Utf8FromPath(path));
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
  if (answer == FrameRecords::Next::kEnd) return;
  damage_ = "The capture file is damaged or breaks off after frame " +
            std::to_string(frames_) + " (" + records_->reason() +
            "); what comes before is shown.";
}

}  // namespace host
