#include "host/capture/capture_file.h"

#include <pcap/pcap.h>

#include <algorithm>

#include "host/capture/link_types.h"

namespace host {
namespace {

std::unique_ptr<FrameRecords> OpenRecords(FileBytes& file,
                                          const std::filesystem::path& path) {
  const std::string name = CaptureName(path);
  std::string reason = "it begins like no capture file";
  bool is_capture = false;
  try {
    if (auto records = OpenFrameRecords(file)) return records;
    const std::string other = OtherFormatText(file.Ahead(0, 8), path);
    if (!other.empty()) throw NoCaptureError(name + other, name + other);
  } catch (const IncompleteFile& failure) {
    reason = failure.what();
    is_capture = true;
  }
  if (!file.limit().empty()) {
    throw CaptureError("Cannot read " + name + ", " + file.limit());
  }
  if (!file.damage().empty()) reason = file.damage();
  const std::string sentence = "Cannot read " + name + " (" + reason +
                               "): give the name of a pcap or pcapng file.";
  if (is_capture) throw CaptureError(sentence);
  throw NoCaptureError(sentence, name + " was skipped: " + reason + ".");
}

// Throws CaptureError unless frames of the link type can be read.
void RequireKnownLinkType(int link_type, const std::string& name) {
  if (IsLinkTypeKnown(link_type)) return;
  const char* known_as = pcap_datalink_val_to_name(link_type);
  throw CaptureError(
      "The frames of " + name + " are of link type " +
      (known_as != nullptr ? known_as : std::to_string(link_type)) +
      ", which is not read here: capture on Ethernet, loopback, raw IP or "
      "with Linux's \"any\" interface.");
}

}  // namespace

CaptureFile::CaptureFile(const std::filesystem::path& path,
                         const std::shared_ptr<TemporaryRoom>& room)
    : bytes_(OpenCaptureBytes(path, room)),
      records_(OpenRecords(*bytes_, path)) {
  RequireKnownLinkType(link_type(), CaptureName(path));
}

bool CaptureFile::Next() {
  const FrameRecords::Next answer = records_->Read();
  if (answer == FrameRecords::Next::kFrame) {
    ++frames_;
    return true;
  }
  ends_inside_frame_ = answer == FrameRecords::Next::kCut;
  damage_ = bytes_->limit().empty() ? bytes_->damage() : bytes_->limit();
  if (damage_.empty() && answer != FrameRecords::Next::kEnd) {
    damage_ = records_->reason();
  }
  return false;
}

unsigned CaptureFile::percent() const {
  const std::uint64_t size = std::max<std::uint64_t>(bytes_->known_size(), 1);
  return static_cast<unsigned>(
      std::min<std::uint64_t>(records_->position() * 100 / size, 100));
}

}  // namespace host
