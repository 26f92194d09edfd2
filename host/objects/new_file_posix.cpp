#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "host/objects/new_file.h"
#include "host/text/failure.h"
#include "host/text/file_name.h"

namespace host {

NewFile::NewFile(const std::filesystem::path& folder) : folder_(folder) {
  std::string name = (folder / ".unfinishedXXXXXX").string();
  file_ = ::mkstemp(name.data());
  if (file_ < 0) Fail();
  unfinished_ = name;
  const mode_t mask = ::umask(0);
  ::umask(mask);
  // As the person's other files; mkstemp makes it for them alone.
  ::fchmod(static_cast<int>(file_), 0666 & ~mask);
}

NewFile::~NewFile() {
  if (is_open_) ::close(static_cast<int>(file_));
  if (!unfinished_.empty()) ::unlink(unfinished_.c_str());
}

void NewFile::Fail() const {
  throw Failure("The folder " + Utf8FromPath(folder_) +
                " cannot hold a file (" + std::strerror(errno) +
                "): make room there or name another folder.");
}

void NewFile::Write(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        ::write(static_cast<int>(file_), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail();
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

void NewFile::Close() {
  if (!std::exchange(is_open_, false)) return;
  if (::close(static_cast<int>(file_)) != 0) Fail();
}

// A link never replaces a file, which a renamed one would. Where a file system
// has no links the name is looked at first.
bool NewFile::KeepAs(const std::filesystem::path& name) {
  Close();
  const std::filesystem::path whole = folder_ / name;
  if (::link(unfinished_.c_str(), whole.c_str()) == 0) {
    ::unlink(unfinished_.c_str());
  } else {
    if (errno == EEXIST || ::access(whole.c_str(), F_OK) == 0) return false;
    if (::rename(unfinished_.c_str(), whole.c_str()) != 0) Fail();
  }
  unfinished_.clear();
  return true;
}

void NewFile::ReplaceAs(const std::filesystem::path& name) {
  Close();
  if (::rename(unfinished_.c_str(), (folder_ / name).c_str()) != 0) Fail();
  unfinished_.clear();
}

}  // namespace host
