#define _FILE_OFFSET_BITS 64

#include <pcap/pcap.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/capture/capture_file.h"

namespace host {

OpenedCapture OpenCaptureFile(const std::filesystem::path& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return {nullptr, std::strerror(errno)};
  char text[PCAP_ERRBUF_SIZE] = "";
  pcap_t* capture = pcap_fopen_offline_with_tstamp_precision(
      file, PCAP_TSTAMP_PRECISION_NANO, text);
  if (capture == nullptr) std::fclose(file);
  return {capture, text};
}

std::int64_t FilePosition(std::FILE* file) { return ::ftello(file); }

std::int64_t FileEnd(std::FILE* file) {
  ::fseeko(file, 0, SEEK_END);
  return FilePosition(file);
}

void SetFilePosition(std::FILE* file, std::int64_t position) {
  ::fseeko(file, position, SEEK_SET);
}

}  // namespace host
