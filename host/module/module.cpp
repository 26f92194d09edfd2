#include "host/module/module.h"

#include <utility>

#include "host/text/failure.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

std::wstring AbsolutePath(const std::wstring& path) {
  std::wstring absolute(32768, L'\0');
  const DWORD length =
      GetFullPathNameW(path.c_str(), static_cast<DWORD>(absolute.size()),
                       absolute.data(), nullptr);
  if (length == 0 || length >= absolute.size()) return path;
  absolute.resize(length);
  return absolute;
}

bool FileExists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// The module opens ".\Data.dic" and ".\Uid.dic" while it is being loaded.
class CurrentDirectoryScope {
 public:
  explicit CurrentDirectoryScope(const std::wstring& folder) {
    GetCurrentDirectoryW(static_cast<DWORD>(before_.size()), before_.data());
    SetCurrentDirectoryW(folder.c_str());
  }
  ~CurrentDirectoryScope() { SetCurrentDirectoryW(before_.c_str()); }
  CurrentDirectoryScope(const CurrentDirectoryScope&) = delete;
  CurrentDirectoryScope& operator=(const CurrentDirectoryScope&) = delete;

 private:
  std::wstring before_ = std::wstring(32768, L'\0');
};

std::string LoadFailureText(const std::wstring& path,
                            const std::wstring& folder, DWORD error) {
  const std::string name = Utf8FromWide(path);
  if (!FileExists(path)) {
    return "there is no module at " + name +
           "; put DicomDecode.dll beside this program or name it with --module";
  }
  if (error == ERROR_BAD_EXE_FORMAT) {
    return name +
           " is not a 32-bit Windows DLL; name the right file with "
           "--module";
  }
  for (const wchar_t* dictionary : {L"Data.dic", L"Uid.dic"}) {
    if (!FileExists(folder + L"\\" + dictionary)) {
      return name + " needs its dictionary " + Utf8FromWide(dictionary) +
             " in the same folder; copy it there";
    }
  }
  if (error == ERROR_DLL_INIT_FAILED) {
    return name +
           " could not read its dictionaries Data.dic and Uid.dic; check that "
           "both files in its folder can be read";
  }
  return name + " cannot be loaded (" + SystemErrorText(error) +
         "); name another file with --module";
}

}  // namespace

Module::Module(const std::wstring& path) : path_(AbsolutePath(path)) { Load(); }

Module::~Module() { Free(); }

void Module::Reload() {
  Free();
  Load();
}

std::wstring Module::Folder() const {
  return path_.substr(0, path_.find_last_of(L"\\/"));
}

void Module::Load() {
  const CurrentDirectoryScope scope(Folder());
  DWORD error = 0;
  const auto failure = Call([&] {
    library_ = LoadLibraryW(path_.c_str());
    error = GetLastError();
  });
  if (failure) {
    throw Failure(Utf8FromWide(path_) + " fails while it is loaded (" +
                  failure->text + "); name another file with --module");
  }
  if (library_ == nullptr) {
    throw Failure(LoadFailureText(path_, Folder(), error));
  }
  ResolveExports();
  ++generation_;
}

void Module::Free() {
  if (const HMODULE library = std::exchange(library_, nullptr)) {
    Call([&] { FreeLibrary(library); });
  }
}

void Module::ResolveExports() {
  const auto resolve = [this](const char* name, auto& function) {
    const FARPROC address = GetProcAddress(library_, name);
    if (address == nullptr) {
      Free();
      throw Failure(Utf8FromWide(path_) + " has no function " + name +
                    ", so it is not the DICOM decode module; name the right "
                    "file with --module");
    }
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(
        reinterpret_cast<void*>(address));
  };
  resolve("GetDicomDllVersion", get_version_);
  resolve("DicomRegisterParent", register_parent_);
  resolve("DicomPacketCaptureStart", capture_start_);
  resolve("RefreshDicomDecode", refresh_);
  resolve("DicomDeRegisterParent", deregister_parent_);
  resolve("GetDicomPacketList", get_packet_list_);
  resolve("DisplayDicomPacket", display_);
  resolve("ClearDicomDisplay", clear_display_);
  resolve("SaveDicomDecodeToFile", save_);
  resolve("PrintDicomDecode", print_);
}

std::optional<CallFailure> Module::Version(std::int32_t* version) {
  return Call([&] { *version = get_version_(); });
}

std::optional<CallFailure> Module::RegisterParent(HWND host_window) {
  const auto parent =
      static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(host_window));
  return Call([&] {
    register_parent_(parent);
    capture_start_(parent);
  });
}

std::optional<CallFailure> Module::RefreshDecode(HWND host_window) {
  return Call([&] { refresh_(host_window); });
}

std::optional<CallFailure> Module::DeRegisterParent(HWND host_window) {
  return Call([&] { deregister_parent_(host_window); });
}

std::optional<CallFailure> Module::PacketList(HWND host_window,
                                              ListRequest& request) {
  return Call([&] {
    request.answer = get_packet_list_(
        host_window, request.rows, &request.first_index, &request.row_count,
        &request.first_available, &request.last_available, request.message_view,
        request.live);
  });
}

std::optional<CallFailure> Module::Display(HWND host_window, HWND tree,
                                           std::int32_t index,
                                           const std::uint32_t* image_table,
                                           HWND hex_window,
                                           std::uint32_t message_view) {
  return Call([&] {
    display_(host_window, tree, index, image_table, hex_window, message_view);
  });
}

std::optional<CallFailure> Module::ClearDisplay(HWND tree, HWND hex_window) {
  return Call([&] { clear_display_(0, tree, hex_window); });
}

}  // namespace host
