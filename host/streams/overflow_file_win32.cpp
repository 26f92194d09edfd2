#include <windows.h>

#include <array>
#include <string>

#include "host/streams/overflow_file.h"
#include "host/text/failure.h"

namespace host {
namespace {

[[noreturn]] void Fail() {
  throw Failure(
      "The capture does not fit into memory, and the folder for temporary "
      "files cannot hold the rest (Windows error " +
      std::to_string(::GetLastError()) +
      "): make room there or open less of it.");
}

HANDLE HandleOf(std::intptr_t file) { return reinterpret_cast<HANDLE>(file); }

OVERLAPPED At(std::uint64_t offset) {
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return place;
}

}  // namespace

OverflowFile::OverflowFile() {
  std::array<wchar_t, MAX_PATH + 1> folder{};
  std::array<wchar_t, MAX_PATH + 1> name{};
  if (::GetTempPathW(MAX_PATH + 1, folder.data()) == 0 ||
      ::GetTempFileNameW(folder.data(), L"cap", 0, name.data()) == 0) {
    Fail();
  }
  file_ = reinterpret_cast<std::intptr_t>(::CreateFileW(
      name.data(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
  if (HandleOf(file_) == INVALID_HANDLE_VALUE) Fail();
}

OverflowFile::~OverflowFile() { ::CloseHandle(HandleOf(file_)); }

void OverflowFile::Write(std::uint64_t offset,
                         std::span<const std::uint8_t> bytes) {
  const auto size = static_cast<DWORD>(bytes.size());
  OVERLAPPED place = At(offset);
  DWORD written = 0;
  if (!::WriteFile(HandleOf(file_), bytes.data(), size, &written, &place) ||
      written != size) {
    Fail();
  }
}

void OverflowFile::Read(std::uint64_t offset,
                        std::span<std::uint8_t> bytes) const {
  const auto size = static_cast<DWORD>(bytes.size());
  OVERLAPPED place = At(offset);
  DWORD read = 0;
  if (!::ReadFile(HandleOf(file_), bytes.data(), size, &read, &place) ||
      read != size) {
    Fail();
  }
}

}  // namespace host
