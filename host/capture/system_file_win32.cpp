#include <windows.h>

#include <array>
#include <string>

#include "host/capture/system_file.h"
#include "host/text/failure.h"

namespace host {
namespace {

HANDLE HandleOf(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

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

[[noreturn]] void FailReading() {
  throw Failure("The capture file cannot be read any more (" +
                ErrorText(::GetLastError()) +
                "): see that it stays where it is.");
}

[[noreturn]] void FailKeeping() {
  throw Failure(
      "The folder for temporary files cannot hold what has to be kept of the "
      "capture (" +
      ErrorText(::GetLastError()) +
      "): make room there or name another folder with TMP.");
}

OVERLAPPED At(std::uint64_t offset) {
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return place;
}

}  // namespace

SystemFile::Opened SystemFile::Open(const std::filesystem::path& path) {
  const HANDLE file =
      ::CreateFileW(path.c_str(), GENERIC_READ,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return {nullptr, ErrorText(::GetLastError())};
  }
  return {std::unique_ptr<SystemFile>(
              new SystemFile(reinterpret_cast<std::intptr_t>(file))),
          {}};
}

SystemFile::Opened SystemFile::OpenStandardInput() {
  const HANDLE process = ::GetCurrentProcess();
  HANDLE file = nullptr;
  if (!::DuplicateHandle(process, ::GetStdHandle(STD_INPUT_HANDLE), process,
                         &file, 0, FALSE, DUPLICATE_SAME_ACCESS)) {
    return {nullptr, ErrorText(::GetLastError())};
  }
  return {std::unique_ptr<SystemFile>(
              new SystemFile(reinterpret_cast<std::intptr_t>(file))),
          {}};
}

std::unique_ptr<SystemFile> SystemFile::MakeTemporary() {
  std::array<wchar_t, MAX_PATH + 1> folder{};
  std::array<wchar_t, MAX_PATH + 1> name{};
  if (::GetTempPathW(MAX_PATH + 1, folder.data()) == 0 ||
      ::GetTempFileNameW(folder.data(), L"cap", 0, name.data()) == 0) {
    FailKeeping();
  }
  const HANDLE file = ::CreateFileW(
      name.data(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (file == INVALID_HANDLE_VALUE) FailKeeping();
  return std::unique_ptr<SystemFile>(
      new SystemFile(reinterpret_cast<std::intptr_t>(file)));
}

SystemFile::~SystemFile() { ::CloseHandle(HandleOf(handle_)); }

bool SystemFile::IsRegular() const {
  return ::GetFileType(HandleOf(handle_)) == FILE_TYPE_DISK;
}

std::uint64_t SystemFile::Size() const {
  LARGE_INTEGER size{};
  if (!::GetFileSizeEx(HandleOf(handle_), &size)) FailReading();
  return static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t SystemFile::Read(std::uint64_t offset,
                             std::span<std::uint8_t> to) const {
  std::size_t done = 0;
  while (done < to.size()) {
    OVERLAPPED place = At(offset + done);
    DWORD count = 0;
    if (!::ReadFile(HandleOf(handle_), to.data() + done,
                    static_cast<DWORD>(to.size() - done), &count, &place) &&
        ::GetLastError() != ERROR_HANDLE_EOF) {
      FailReading();
    }
    if (count == 0) break;
    done += count;
  }
  return done;
}

std::size_t SystemFile::ReadNext(std::span<std::uint8_t> to) {
  DWORD count = 0;
  if (!::ReadFile(HandleOf(handle_), to.data(), static_cast<DWORD>(to.size()),
                  &count, nullptr) &&
      ::GetLastError() != ERROR_BROKEN_PIPE &&
      ::GetLastError() != ERROR_HANDLE_EOF) {
    FailReading();
  }
  return count;
}

void SystemFile::Write(std::uint64_t offset,
                       std::span<const std::uint8_t> bytes) {
  const auto size = static_cast<DWORD>(bytes.size());
  OVERLAPPED place = At(offset);
  DWORD written = 0;
  if (!::WriteFile(HandleOf(handle_), bytes.data(), size, &written, &place) ||
      written != size) {
    FailKeeping();
  }
}

}  // namespace host
