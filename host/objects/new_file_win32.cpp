#include <windows.h>

#include <atomic>
#include <string>
#include <utility>

#include "host/objects/new_file.h"
#include "host/text/failure.h"
#include "host/text/file_name.h"
#include "host/text/system_error.h"

namespace host {
namespace {

HANDLE HandleOf(std::intptr_t file) { return reinterpret_cast<HANDLE>(file); }

}  // namespace

NewFile::NewFile(const std::filesystem::path& folder) : folder_(folder) {
  static std::atomic<unsigned> made{0};
  HANDLE file = INVALID_HANDLE_VALUE;
  do {  // past the ones that another program has left behind
    unfinished_ =
        folder / (L".unfinished" + std::to_wstring(GetCurrentProcessId()) +
                  L"-" + std::to_wstring(made++));
    file = CreateFileW(unfinished_.c_str(), GENERIC_WRITE | DELETE,
                       FILE_SHARE_READ, nullptr, CREATE_NEW,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
  } while (file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS);
  if (file == INVALID_HANDLE_VALUE) Fail();
  file_ = reinterpret_cast<std::intptr_t>(file);
}

NewFile::~NewFile() {
  if (is_open_) CloseHandle(HandleOf(file_));
  if (!unfinished_.empty()) DeleteFileW(unfinished_.c_str());
}

void NewFile::Fail() const {
  throw Failure("The folder " + Utf8FromPath(folder_) +
                " cannot hold a file (" + SystemErrorText(GetLastError()) +
                "): make room there or name another folder.");
}

void NewFile::Write(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    DWORD count = 0;
    if (!WriteFile(HandleOf(file_), bytes.data(),
                   static_cast<DWORD>(bytes.size()), &count, nullptr)) {
      Fail();
    }
    bytes = bytes.subspan(count);
  }
}

void NewFile::Close() {
  if (!std::exchange(is_open_, false)) return;
  if (!CloseHandle(HandleOf(file_))) Fail();
}

bool NewFile::KeepAs(const std::filesystem::path& name) {
  Close();
  const std::filesystem::path whole = folder_ / name;
  if (!MoveFileExW(unfinished_.c_str(), whole.c_str(), 0)) {
    const DWORD error = GetLastError();
    if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS) {
      return false;
    }
    Fail();
  }
  unfinished_.clear();
  return true;
}

void NewFile::ReplaceAs(const std::filesystem::path& name) {
  Close();
  if (!MoveFileExW(unfinished_.c_str(), (folder_ / name).c_str(),
                   MOVEFILE_REPLACE_EXISTING)) {
    Fail();
  }
  unfinished_.clear();
}

}  // namespace host
