#ifndef HOST_CAPTURE_FILE_H_
#define HOST_CAPTURE_FILE_H_

#include <filesystem>
#include <string>

struct pcap;

namespace host {

// Opens a pcap or pcapng file, with any name that the platform allows, for
// libpcap, with times in nanoseconds. Others may go on writing to it. Null when
// it cannot be opened or read; `reason` then says why. Close with pcap_close.
pcap* OpenCaptureFile(const std::filesystem::path& path, std::string* reason);

}  // namespace host

#endif  // HOST_CAPTURE_FILE_H_
