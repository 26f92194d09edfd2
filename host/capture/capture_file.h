#ifndef HOST_CAPTURE_CAPTURE_FILE_H_
#define HOST_CAPTURE_CAPTURE_FILE_H_

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

struct pcap;

namespace host {

// What became of an opening: a handle of libpcap, or why there is none.
struct OpenedCapture {
  pcap* handle = nullptr;  // close it with pcap_close
  std::string reason;      // why there is none
};

// Opens a pcap or pcapng file, with any name that the platform allows, for
// libpcap, with times in nanoseconds. Others may go on writing to it.
OpenedCapture OpenCaptureFile(const std::filesystem::path& path);

// Positions in bytes from the beginning of a file; unlike with ftell and fseek
// also behind 2 GB. Where the file stands; where it ends, to which it is moved;
// and moving it.
std::int64_t FilePosition(std::FILE* file);
std::int64_t FileEnd(std::FILE* file);
void SetFilePosition(std::FILE* file, std::int64_t position);

}  // namespace host

#endif  // HOST_CAPTURE_CAPTURE_FILE_H_
