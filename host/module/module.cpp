#include "host/module/module.h"

#include <array>
#include <system_error>

#include "host/text/failure.h"
#include "host/text/file_name.h"

namespace host {
namespace {

// The image of each line by its kind; the host shows none.
constexpr std::array<std::uint32_t, DICOM_IMAGE_TABLE_ENTRIES> kNoImages{};

std::filesystem::path AbsolutePath(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute;
}

std::uint32_t ListArgument(ListKind list) {
  return list == ListKind::kMessages ? 1 : 0;
}

}  // namespace

Module::Module(const std::filesystem::path& path)
    : library_(AbsolutePath(path)) {
  Load();
}

Module::~Module() { Free(); }

void Module::Reload() {
  ++generation_;  // also when loading fails: nothing is known then either
  Free();
  Load();
}

void Module::Load() {
  const MessageBoxAnswers::Scope scope(boxes_);
  library_.Load();
}

void Module::Free() {
  const MessageBoxAnswers::Scope scope(boxes_);
  library_.Free();
}

std::int32_t Module::Version() {
  std::int32_t version = 0;
  if (const auto failure =
          Call([&] { version = library_.functions().version(); })) {
    throw Failure("The module " + Utf8FromPath(path()) +
                  " does not tell its version (" + failure->text +
                  "): name another file with --module.");
  }
  return version;
}

std::optional<CallFailure> Module::RegisterParent(HWND host_window) {
  const auto parent =
      static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(host_window));
  return Call([&] {
    library_.functions().register_parent(parent);
    library_.functions().capture_start(parent);
  });
}

std::optional<CallFailure> Module::RefreshDecode(HWND host_window) {
  return Call([&] { library_.functions().refresh_decode(host_window); });
}

std::optional<CallFailure> Module::DeRegisterParent(HWND host_window) {
  return Call([&] { library_.functions().deregister_parent(host_window); });
}

std::optional<CallFailure> Module::PacketList(HWND host_window,
                                              ListRequest& request) {
  return Call([&] {
    request.answer = library_.functions().packet_list(
        host_window, request.rows, &request.first_index, &request.row_count,
        &request.first_available, &request.last_available,
        ListArgument(request.list), request.live ? 1 : 0);
  });
}

std::optional<CallFailure> Module::Display(HWND host_window, RowRef row,
                                           const DecodeWindows& windows) {
  return Call([&] {
    library_.functions().display(
        host_window, windows.tree, static_cast<std::int32_t>(row.index),
        kNoImages.data(), windows.hex, ListArgument(row.list));
  });
}

std::optional<CallFailure> Module::ClearDisplay(const DecodeWindows& windows) {
  return Call([&] {
    library_.functions().clear_display(0, windows.tree, windows.hex);
  });
}

}  // namespace host
