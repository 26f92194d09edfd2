#include <pcap/pcap.h>  // and <winsock2.h> before <windows.h>, as it has to be

#include "host/capture/capture_file.h"

namespace host {
namespace {

std::string ErrorText(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return "there is no such file";
    case ERROR_ACCESS_DENIED:
      return "access is denied, or it is a folder";
    default:
      return "Windows error " + std::to_string(error);
  }
}

}  // namespace

OpenedCapture OpenCaptureFile(const std::filesystem::path& path) {
  const HANDLE file =
      ::CreateFileW(path.c_str(), GENERIC_READ,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return {nullptr, ErrorText(::GetLastError())};
  }
  char text[PCAP_ERRBUF_SIZE] = "";
  // Takes the handle over, but leaves it open when it fails.
  pcap_t* capture = pcap_hopen_offline_with_tstamp_precision(
      reinterpret_cast<intptr_t>(file), PCAP_TSTAMP_PRECISION_NANO, text);
  if (capture == nullptr) ::CloseHandle(file);
  return {capture, text};
}

std::int64_t FilePosition(std::FILE* file) { return ::_ftelli64(file); }

std::int64_t FileEnd(std::FILE* file) {
  ::_fseeki64(file, 0, SEEK_END);
  return FilePosition(file);
}

void SetFilePosition(std::FILE* file, std::int64_t position) {
  ::_fseeki64(file, position, SEEK_SET);
}

}  // namespace host
