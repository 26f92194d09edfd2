#ifndef HOST_CAPTURE_SYSTEM_FILE_H_
#define HOST_CAPTURE_SYSTEM_FILE_H_

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace host {

// A file of the system, closed with the object. Offsets are in bytes from the
// beginning. All operations throw Failure when the system refuses.
class SystemFile {
 public:
  // What became of an opening.
  struct Opened {
    std::unique_ptr<SystemFile> file;
    std::string reason;  // why there is none
  };

  // For reading, with any name that the platform allows; others may go on
  // writing to the file.
  static Opened Open(const std::filesystem::path& path);
  static Opened OpenStandardInput();
  // Made in the folder for temporary files. The system removes it when it is
  // closed, also when the program ends by a fault.
  static std::unique_ptr<SystemFile> MakeTemporary();

  ~SystemFile();
  SystemFile(const SystemFile&) = delete;
  SystemFile& operator=(const SystemFile&) = delete;

  // Whether it can be read at any place, and more than once; else it is a pipe
  // or a device, of which ReadNext() alone can be asked.
  bool IsRegular() const;
  std::uint64_t Size() const;
  // Answers how many bytes were read: fewer than asked for only at the end.
  std::size_t Read(std::uint64_t offset, std::span<std::uint8_t> to) const;
  // Waits for the bytes behind those that it answered before, and answers how
  // many they are; 0 at the end.
  std::size_t ReadNext(std::span<std::uint8_t> to);
  // For a temporary file, which grows as needed.
  void Write(std::uint64_t offset, std::span<const std::uint8_t> bytes);

 private:
  explicit SystemFile(std::intptr_t handle) : handle_(handle) {}

  std::intptr_t handle_;  // the platform's
};

}  // namespace host

#endif  // HOST_CAPTURE_SYSTEM_FILE_H_
