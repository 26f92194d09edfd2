#include "host/capture/capture_reader.h"

#include <pcap/pcap.h>

#include <cstdio>
#include <system_error>

#include "host/capture/capture_file.h"
#include "host/text/file_name.h"

namespace host {
namespace {

Nanoseconds TimeOf(const pcap_pkthdr& header) {
  // Seconds are unsigned in capture files; tv_usec holds nanoseconds here.
  return Nanoseconds{static_cast<std::uint32_t>(header.ts.tv_sec)} *
             1'000'000'000 +
         header.ts.tv_usec;
}

}  // namespace

struct CaptureReader::Pcap {
  pcap_t* handle = nullptr;
  bpf_program filter{};
  bool filtered = false;

  ~Pcap() {
    if (filtered) pcap_freecode(&filter);
    if (handle != nullptr) pcap_close(handle);
  }
};

CaptureReader::CaptureReader(const std::filesystem::path& path,
                             const std::string& filter, Mode mode)
    : pcap_(std::make_unique<Pcap>()), mode_(mode) {
  const OpenedCapture opened = OpenCaptureFile(path);
  pcap_->handle = opened.handle;
  if (pcap_->handle == nullptr) {
    throw CaptureError("Cannot read " + Utf8FromPath(path) + " (" +
                       opened.reason +
                       "): give the name of a pcap or pcapng file.");
  }
  link_type_ = pcap_datalink(pcap_->handle);
  if (!IsLinkTypeKnown(link_type_)) {
    const char* name = pcap_datalink_val_to_name(link_type_);
    throw CaptureError(
        "The frames of " + Utf8FromPath(path) + " are of link type " +
        (name != nullptr ? name : std::to_string(link_type_)) +
        ", which is not read here: capture on Ethernet, loopback, raw IP or "
        "with Linux's \"any\" interface.");
  }
  constexpr int kVersionOfPcapng = 1;  // older than any pcap file's
  is_pcapng_ = pcap_major_version(pcap_->handle) == kVersionOfPcapng;
  CompileFilter(filter);
  std::error_code ignored;
  const auto size = std::filesystem::file_size(path, ignored);
  if (!ignored) file_bytes_ = size;
}

CaptureReader::~CaptureReader() = default;

void CaptureReader::CompileFilter(const std::string& filter) {
  if (filter.empty()) return;
  if (pcap_compile(pcap_->handle, &pcap_->filter, filter.c_str(), 1,
                   PCAP_NETMASK_UNKNOWN) != 0) {
    throw FilterError("The filter \"" + filter + "\" is not understood (" +
                      pcap_geterr(pcap_->handle) +
                      "): write it as for tcpdump, for example \"port 104\".");
  }
  pcap_->filtered = true;
}

const TcpFrame* CaptureReader::Next() {
  while (const std::optional<FrameKind> kind = ReadFrame()) {
    if (kind == FrameKind::kTcp) return &frame_;
    if (kind == FrameKind::kIpFragment) ++fragments_;
  }
  return nullptr;
}

// Frames are filtered here and not by pcap_setfilter, so that they keep the
// numbers under which other tools show them.
std::optional<FrameKind> CaptureReader::ReadFrame() {
  if (mode_ == Mode::kFollow && !MayReadOn()) return {};
  const std::int64_t start = FilePosition(pcap_file(pcap_->handle));
  pcap_pkthdr* header = nullptr;
  const u_char* bytes = nullptr;
  const int answer = pcap_next_ex(pcap_->handle, &header, &bytes);
  if (answer != 1) {
    NoteEnd(answer, start);
    return {};
  }
  damage_.clear();
  ++frames_;
  if (pcap_->filtered &&
      pcap_offline_filter(&pcap_->filter, header, bytes) == 0) {
    return FrameKind::kOther;
  }
  const ParsedFrame parsed =
      ParseFrame(link_type_, {bytes, header->caplen}, header->len);
  frame_ = parsed.frame;
  frame_.number = frames_;
  frame_.time = TimeOf(*header);
  return parsed.kind;
}

void CaptureReader::NoteEnd(int answer, std::int64_t start) {
  if (answer == PCAP_ERROR) {
    NoteDamage(pcap_geterr(pcap_->handle));
    ends_inside_frame_ = std::feof(pcap_file(pcap_->handle)) != 0;
  }
  if (mode_ != Mode::kFollow) return;
  is_over_ = answer == PCAP_ERROR && is_pcapng_;  // its blocks were whole
  SetFilePosition(pcap_file(pcap_->handle), start);
}

bool CaptureReader::MayReadOn() {
  if (is_over_) return false;
  std::FILE* file = pcap_file(pcap_->handle);
  std::clearerr(file);  // the file may have grown since its end was met
  if (!is_pcapng_) return true;
  const auto next = scanner_.Look(file, FilePosition(file));
  if (next == BlockScanner::Next::kCut) NoteDamage("a block is cut");
  ends_inside_frame_ = next == BlockScanner::Next::kCut;
  if (next == BlockScanner::Next::kEnd) damage_.clear();
  return next == BlockScanner::Next::kPacket ||
         next == BlockScanner::Next::kDamaged;
}

void CaptureReader::NoteDamage(const std::string& reason) {
  damage_ = "The capture file is damaged or breaks off after frame " +
            std::to_string(frames_) + " (" + reason +
            "); what comes before is shown.";
}

std::uint64_t CaptureReader::bytes_read() const {
  const std::int64_t position = FilePosition(pcap_file(pcap_->handle));
  return position > 0 ? static_cast<std::uint64_t>(position) : 0;
}

}  // namespace host
