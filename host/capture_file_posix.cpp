#include <pcap/pcap.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/capture_file.h"

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

}  // namespace host
