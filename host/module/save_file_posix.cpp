#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "host/module/save_file.h"
#include "host/text/failure.h"
#include "host/text/file_name.h"
#include "host/text/system_error.h"

namespace host {

SaveFile::SaveFile(const std::filesystem::path& path, const std::string& advice)
    : file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC,
                   0666)) {
  if (file_ >= 0) return;
  throw Failure("The file " + Utf8FromPath(path) + " cannot be written (" +
                SystemErrorText(static_cast<unsigned long>(errno)) +
                "): " + advice + ".");
}

SaveFile::~SaveFile() { ::close(file_); }

}  // namespace host
