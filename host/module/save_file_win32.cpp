#include <windows.h>

#include "host/module/save_file.h"
#include "host/text/failure.h"
#include "host/text/file_name.h"
#include "host/text/system_error.h"

namespace host {

static_assert(sizeof(HANDLE) == sizeof(std::int32_t));

SaveFile::SaveFile(const std::filesystem::path& path,
                   const std::string& advice) {
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                  CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    throw Failure("The file " + Utf8FromPath(path) + " cannot be written (" +
                  SystemErrorText(GetLastError()) + "): " + advice + ".");
  }
  file_ = static_cast<std::int32_t>(reinterpret_cast<std::intptr_t>(file));
}

SaveFile::~SaveFile() {
  CloseHandle(reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(file_)));
}

}  // namespace host
