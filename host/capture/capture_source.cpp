#include "host/capture/capture_source.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "host/capture/byte_inflow.h"
#include "host/capture/capture_error.h"
#include "host/text/file_name.h"

namespace host {
namespace {

constexpr std::size_t kBytesThatTell = 8;

struct OtherFormat {
  std::string_view begins;
  std::string_view text;
};

constexpr OtherFormat kOtherFormats[] = {
    {"GMBU",
     " is a Network Monitor capture: editcap -F pcapng IN OUT makes a "
     "capture of it that is read here."},
    {"\x28\xB5\x2F\xFD",
     " is compressed with zstd: decompress it with zstd -d."},
    {std::string_view("\xFD"
                      "7zXZ",
                      5),
     " is compressed with xz: decompress it with unxz."},
    {"BZh", " is compressed with bzip2: decompress it with bunzip2."},
    {"PK\x03\x04", " is a ZIP archive: give the capture that is in it."},
    {"7z\xBC\xAF", " is a 7z archive: give the capture that is in it."},
    {"snoop",
     " is a snoop capture: editcap -F pcapng IN OUT makes a capture of "
     "it that is read here."},
};

std::uint64_t HalfOfTheRoom() {
  std::error_code failed;
  const auto folder = std::filesystem::temp_directory_path(failed);
  const auto space = std::filesystem::space(folder, failed);
  return failed ? std::numeric_limits<std::uint64_t>::max()
                : space.available / 2;
}

}  // namespace

std::string CaptureName(const std::filesystem::path& path) {
  return path == kStandardInput ? "standard input" : Utf8FromPath(path);
}

std::shared_ptr<TemporaryRoom> MakeTemporaryRoom(
    std::optional<std::uint64_t> most) {
  return std::make_shared<TemporaryRoom>(
      TemporaryRoom{most ? *most : HalfOfTheRoom()});
}

std::shared_ptr<FileBytes> OpenCaptureBytes(
    const std::filesystem::path& path,
    const std::shared_ptr<TemporaryRoom>& room) {
  SystemFile::Opened opened = path == kStandardInput
                                  ? SystemFile::OpenStandardInput()
                                  : SystemFile::Open(path);
  if (!opened.file) {
    throw CaptureError("Cannot read " + CaptureName(path) + " (" +
                       opened.reason +
                       "): give the name of a pcap or pcapng file.");
  }
  if (path != kStandardInput && opened.file->IsRegular()) {
    auto bytes = std::make_shared<FileBytes>(std::move(opened.file));
    if (!GzipInflow::IsGzip(bytes->Ahead(0, kBytesThatTell))) return bytes;
    opened = SystemFile::Open(path);
    if (!opened.file) return bytes;
  }
  auto file = std::make_unique<FileInflow>(std::move(opened.file));
  const bool is_gzip = GzipInflow::IsGzip(file->Peek(2));
  std::unique_ptr<ByteInflow> inflow = std::move(file);
  if (is_gzip) inflow = std::make_unique<GzipInflow>(std::move(inflow));
  return std::make_shared<FileBytes>(std::move(inflow), room);
}

std::string OtherFormatText(std::span<const std::uint8_t> first_bytes,
                            const std::filesystem::path& path) {
  const std::string_view begin(
      reinterpret_cast<const char*>(first_bytes.data()), first_bytes.size());
  for (const OtherFormat& format : kOtherFormats) {
    if (begin.starts_with(format.begins)) return std::string(format.text);
  }
  // Event traces begin with nothing that tells them.
  if (path.extension() == ".etl" || path.extension() == ".ETL") {
    return " is a Windows event trace: pktmon etl2pcap, or etl2pcapng for one "
           "of netsh trace, makes a capture of it that is read here.";
  }
  return {};
}

}  // namespace host
