#ifndef HOST_CAPTURE_CAPTURE_SOURCE_H_
#define HOST_CAPTURE_CAPTURE_SOURCE_H_

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "host/capture/file_bytes.h"

namespace host {

// Where captures come from: files, compressed files and pipes.

// The name that stands for standard input.
inline constexpr std::string_view kStandardInput = "-";

// What a capture is called in a sentence: its file's name, in UTF-8.
std::string CaptureName(const std::filesystem::path& path);

// Room for `most` bytes; without that number for half of what is left in the
// folder for temporary files.
std::shared_ptr<TemporaryRoom> MakeTemporaryRoom(
    std::optional<std::uint64_t> most);

// The bytes of a capture, whatever has to be done to get at them. What cannot
// be read twice, a pipe or a compressed file, is kept in a temporary file.
// Throws CaptureError when there are none.
std::shared_ptr<FileBytes> OpenCaptureBytes(
    const std::filesystem::path& path,
    const std::shared_ptr<TemporaryRoom>& room);

// What a file is that begins like this and is no capture that we can read, and
// what to do with it, as a sentence without its beginning: " is compressed with
// xz: ...". Empty when it is not known.
std::string OtherFormatText(std::span<const std::uint8_t> first_bytes,
                            const std::filesystem::path& path);

}  // namespace host

#endif  // HOST_CAPTURE_CAPTURE_SOURCE_H_
