#include <sys/auxv.h>

#include <array>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>

#include "host/module/guarded_call.h"
#include "host/module/module_library.h"
#include "host/text/failure.h"
#include "host/text/file_name.h"

// The module is linked into this program: what the DLL exports has the same
// names here.
extern "C" {
#define DECLARE_EXPORT(name) std::remove_pointer_t<name##Function> name
DECLARE_EXPORT(GetDicomDllVersion);
DECLARE_EXPORT(DicomRegisterParent);
DECLARE_EXPORT(DicomPacketCaptureStart);
DECLARE_EXPORT(RefreshDicomDecode);
DECLARE_EXPORT(DicomDeRegisterParent);
DECLARE_EXPORT(GetDicomPacketList);
DECLARE_EXPORT(DisplayDicomPacket);
DECLARE_EXPORT(ClearDicomDisplay);
DECLARE_EXPORT(SaveDicomDecodeToFile);
DECLARE_EXPORT(PrintDicomDecode);
#undef DECLARE_EXPORT
}

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr std::array kDictionaries = {"Data.dic", "Uid.dic"};

// The module reads Data.dic and Uid.dic while it is being loaded.
class CurrentDirectoryScope {
 public:
  explicit CurrentDirectoryScope(const fs::path& folder)
      : before_(fs::current_path(ignored_)) {
    fs::current_path(folder, ignored_);
  }
  ~CurrentDirectoryScope() { fs::current_path(before_, ignored_); }
  CurrentDirectoryScope(const CurrentDirectoryScope&) = delete;
  CurrentDirectoryScope& operator=(const CurrentDirectoryScope&) = delete;

 private:
  std::error_code ignored_;
  fs::path before_;
};

bool HoldsDictionaries(const fs::path& folder) {
  std::error_code ignored;
  for (const char* name : kDictionaries) {
    if (!fs::exists(folder / name, ignored)) return false;
  }
  return true;
}

// Beside the program, as in a copied folder, or where a package puts them.
std::array<fs::path, 2> DictionaryFolders() {
  const fs::path folder = ModuleBesideProgram().parent_path();
  return {folder, folder.parent_path() / "share" / "dicom-decode"};
}

}  // namespace

void ModuleLibrary::FreeLibraryOf::operator()(void*) const {
  Guarded([] { DllMain(nullptr, DLL_PROCESS_DETACH, nullptr); });
}

ModuleLibrary::ModuleLibrary(fs::path path) : path_(std::move(path)) {}

ModuleLibrary::~ModuleLibrary() = default;

void ModuleLibrary::Load() {
  if (path_ != ModuleBesideProgram()) {
    throw Failure("The module " + Utf8FromPath(path_) +
                  " cannot be loaded, since this program holds the module "
                  "itself: leave --module out.");
  }
  const fs::path folder = DictionaryFolder();
  if (folder.empty()) {
    const auto [beside, shared] = DictionaryFolders();
    throw Failure("The dictionaries Data.dic and Uid.dic are neither in " +
                  Utf8FromPath(beside) + " nor in " + Utf8FromPath(shared) +
                  ": copy both beside this program.");
  }
  const CurrentDirectoryScope scope(folder);
  BOOL loaded = FALSE;
  const auto failure =
      Guarded([&] { loaded = DllMain(nullptr, DLL_PROCESS_ATTACH, nullptr); });
  if (failure || !loaded) {
    throw Failure("The dictionaries Data.dic and Uid.dic in " +
                  Utf8FromPath(folder) +
                  " cannot be read: check that both are readable files.");
  }
  library_.reset(this);
  ResolveFunctions();
}

void ModuleLibrary::Free() {
  library_.reset();
  functions_ = {};
}

void ModuleLibrary::ResolveFunctions() {
  functions_ = {GetDicomDllVersion,      DicomRegisterParent,
                DicomPacketCaptureStart, RefreshDicomDecode,
                DicomDeRegisterParent,   GetDicomPacketList,
                DisplayDicomPacket,      ClearDicomDisplay,
                SaveDicomDecodeToFile,   PrintDicomDecode};
}

fs::path ModuleLibrary::DictionaryFolder() const {
  for (const fs::path& folder : DictionaryFolders()) {
    if (HoldsDictionaries(folder)) return folder;
  }
  return {};
}

// The program itself: as the system names it, or as it was started where the
// system does not tell.
fs::path ModuleBesideProgram() {
  std::error_code error;
  fs::path program = fs::read_symlink("/proc/self/exe", error);
  if (!error) return program;
  const auto* started = reinterpret_cast<const char*>(::getauxval(AT_EXECFN));
  program = started != nullptr ? started : "";
  const fs::path absolute = fs::absolute(program, error);
  return error ? program : absolute;
}

}  // namespace host
