#define _FILE_OFFSET_BITS 64

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "host/capture/system_file.h"
#include "host/text/failure.h"

namespace host {
namespace {

int DescriptorOf(std::intptr_t handle) { return static_cast<int>(handle); }

// Why a file cannot be opened, in the words of the other system's.
std::string ErrorText(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return "there is no such file";
    case EACCES:
    case EISDIR:
      return "access is denied, or it is a folder";
    default:
      return std::strerror(error);
  }
}

// A ring may have more files than a process may keep open unless it asks.
bool RaiseLimitOfOpenFiles() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return false;
  if (limit.rlim_cur == limit.rlim_max) return false;
  limit.rlim_cur = limit.rlim_max;
  return ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

[[noreturn]] void FailReading() {
  throw Failure(std::string("The capture file cannot be read any more (") +
                std::strerror(errno) + "): see that it stays where it is.");
}

[[noreturn]] void FailKeeping() {
  throw Failure(
      std::string("The folder for temporary files cannot hold what has to be "
                  "kept of the capture (") +
      std::strerror(errno) +
      "): make room there or name another folder with TMPDIR.");
}

}  // namespace

SystemFile::Opened SystemFile::Open(const std::filesystem::path& path) {
  int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0 && errno == EMFILE && RaiseLimitOfOpenFiles()) {
    descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  }
  if (descriptor < 0) return {nullptr, ErrorText(errno)};
  return {std::unique_ptr<SystemFile>(new SystemFile(descriptor)), {}};
}

SystemFile::Opened SystemFile::OpenStandardInput() {
  const int descriptor = ::dup(STDIN_FILENO);
  if (descriptor < 0) return {nullptr, std::strerror(errno)};
  return {std::unique_ptr<SystemFile>(new SystemFile(descriptor)), {}};
}

std::unique_ptr<SystemFile> SystemFile::MakeTemporary() {
  std::error_code failed;
  const auto folder = std::filesystem::temp_directory_path(failed);
  constexpr std::string_view kUnique = "XXXXXX";
  std::string name = folder / "capture";
  name += kUnique;
  int descriptor = ::mkstemp(name.data());
  if (descriptor < 0 && errno == EMFILE && RaiseLimitOfOpenFiles()) {
    name.replace(name.size() - kUnique.size(), kUnique.size(), kUnique);
    descriptor = ::mkstemp(name.data());
  }
  if (descriptor < 0) FailKeeping();
  ::unlink(name.c_str());
  return std::unique_ptr<SystemFile>(new SystemFile(descriptor));
}

SystemFile::~SystemFile() { ::close(DescriptorOf(handle_)); }

bool SystemFile::IsRegular() const {
  struct stat state {};
  return ::fstat(DescriptorOf(handle_), &state) == 0 && S_ISREG(state.st_mode);
}

std::uint64_t SystemFile::Size() const {
  struct stat state {};
  if (::fstat(DescriptorOf(handle_), &state) != 0) FailReading();
  return static_cast<std::uint64_t>(state.st_size);
}

std::size_t SystemFile::Read(std::uint64_t offset,
                             std::span<std::uint8_t> to) const {
  std::size_t done = 0;
  while (done < to.size()) {
    const ssize_t count =
        ::pread(DescriptorOf(handle_), to.data() + done, to.size() - done,
                static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) FailReading();
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

std::size_t SystemFile::ReadNext(std::span<std::uint8_t> to) {
  while (true) {
    const ssize_t count = ::read(DescriptorOf(handle_), to.data(), to.size());
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) FailReading();
  }
}

void SystemFile::Write(std::uint64_t offset,
                       std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::pwrite(DescriptorOf(handle_), bytes.data(),
                                   bytes.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) FailKeeping();
    offset += static_cast<std::size_t>(count);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

}  // namespace host
