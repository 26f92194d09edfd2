#include <windows.h>

#include <string>
#include <type_traits>
#include <utility>

#include "host/module/guarded_call.h"
#include "host/module/module_library.h"
#include "host/text/failure.h"
#include "host/text/file_name.h"
#include "host/text/system_error.h"

namespace host {
namespace {

constexpr std::size_t kLongestPath = 32768;
constexpr const char* kNameAnother = "): name another file with --module.";

// The module reads Data.dic and Uid.dic while it is being loaded.
class CurrentDirectoryScope {
 public:
  explicit CurrentDirectoryScope(const std::filesystem::path& folder) {
    GetCurrentDirectoryW(static_cast<DWORD>(before_.size()), before_.data());
    SetCurrentDirectoryW(folder.c_str());
  }
  ~CurrentDirectoryScope() { SetCurrentDirectoryW(before_.c_str()); }
  CurrentDirectoryScope(const CurrentDirectoryScope&) = delete;
  CurrentDirectoryScope& operator=(const CurrentDirectoryScope&) = delete;

 private:
  std::wstring before_ = std::wstring(kLongestPath, L'\0');
};

bool FileExists(const std::filesystem::path& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string LoadFailureText(const std::filesystem::path& path, DWORD error) {
  const std::string name = Utf8FromPath(path);
  if (!FileExists(path)) {
    return "There is no module at " + name +
           ": put DicomDecode.dll beside this program or name it with "
           "--module.";
  }
  if (error == ERROR_BAD_EXE_FORMAT) {
    return "The module " + name +
           " is not a 32-bit Windows DLL: name the right file with --module.";
  }
  for (const char* dictionary : {"Data.dic", "Uid.dic"}) {
    if (!FileExists(path.parent_path() / dictionary)) {
      return "The module " + name + " needs its dictionary " + dictionary +
             " in the same folder: copy it there.";
    }
  }
  if (error == ERROR_DLL_INIT_FAILED) {
    return "The module " + name +
           " could not read its dictionaries Data.dic and Uid.dic: check that "
           "both files in its folder can be read.";
  }
  return "The module " + name + " cannot be loaded (" + SystemErrorText(error) +
         kNameAnother;
}

}  // namespace

void ModuleLibrary::FreeLibraryOf::operator()(void* library) const {
  Guarded([library] { FreeLibrary(static_cast<HMODULE>(library)); });
}

ModuleLibrary::ModuleLibrary(std::filesystem::path path)
    : path_(std::move(path)) {}

ModuleLibrary::~ModuleLibrary() = default;

void ModuleLibrary::Load() {
  const CurrentDirectoryScope scope(path_.parent_path());
  HMODULE library = nullptr;
  DWORD error = 0;
  const auto failure = Guarded([&] {
    library = LoadLibraryW(path_.c_str());
    error = GetLastError();
  });
  if (failure) {
    throw Failure("The module " + Utf8FromPath(path_) +
                  " fails while it is loaded (" + failure->text + kNameAnother);
  }
  if (library == nullptr) throw Failure(LoadFailureText(path_, error));
  library_.reset(library);
  ResolveFunctions();
}

void ModuleLibrary::Free() {
  library_.reset();
  functions_ = {};
}

void ModuleLibrary::ResolveFunctions() {
  const auto resolve = [this](const char* name, auto& function) {
    const FARPROC address =
        GetProcAddress(static_cast<HMODULE>(library_.get()), name);
    if (address == nullptr) {
      Free();
      throw Failure("The file " + Utf8FromPath(path_) + " has no function " +
                    name +
                    ", so it is not the DICOM decode module: name the right "
                    "file with --module.");
    }
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(
        reinterpret_cast<void*>(address));
  };
  resolve("GetDicomDllVersion", functions_.version);
  resolve("DicomRegisterParent", functions_.register_parent);
  resolve("DicomPacketCaptureStart", functions_.capture_start);
  resolve("RefreshDicomDecode", functions_.refresh_decode);
  resolve("DicomDeRegisterParent", functions_.deregister_parent);
  resolve("GetDicomPacketList", functions_.packet_list);
  resolve("DisplayDicomPacket", functions_.display);
  resolve("ClearDicomDisplay", functions_.clear_display);
  resolve("SaveDicomDecodeToFile", functions_.save_decode);
  resolve("PrintDicomDecode", functions_.print_decode);
}

std::filesystem::path ModuleLibrary::DictionaryFolder() const {
  return path_.parent_path();
}

std::filesystem::path ModuleBesideProgram() {
  std::wstring program(kLongestPath, L'\0');
  program.resize(GetModuleFileNameW(nullptr, program.data(),
                                    static_cast<DWORD>(program.size())));
  return std::filesystem::path(program).parent_path() / "DicomDecode.dll";
}

}  // namespace host
