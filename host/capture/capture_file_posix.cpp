#define _FILE_OFFSET_BITS 64

#include <pcap/pcap.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/capture/capture_file.h"

namespace host {

pcap* OpenCaptureFile(const std::filesystem::path& path, std::string* reason) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    *reason = std::strerror(errno);
    return nullptr;
  }
  char text[PCAP_ERRBUF_SIZE] = "";
  pcap_t* capture = pcap_fopen_offline_with_tstamp_precision(
      file, PCAP_TSTAMP_PRECISION_NANO, text);
  if (capture == nullptr) {
    std::fclose(file);
    *reason = text;
  }
  return capture;
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
