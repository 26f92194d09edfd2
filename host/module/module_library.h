#ifndef HOST_MODULE_MODULE_LIBRARY_H_
#define HOST_MODULE_MODULE_LIBRARY_H_

#include <filesystem>
#include <memory>

#include "interface/host_interface.h"

namespace host {

// The module's ten functions; host_interface.h says what they do.
struct ModuleFunctions {
  GetDicomDllVersionFunction version = nullptr;
  DicomRegisterParentFunction register_parent = nullptr;
  DicomPacketCaptureStartFunction capture_start = nullptr;
  RefreshDicomDecodeFunction refresh_decode = nullptr;
  DicomDeRegisterParentFunction deregister_parent = nullptr;
  GetDicomPacketListFunction packet_list = nullptr;
  DisplayDicomPacketFunction display = nullptr;
  ClearDicomDisplayFunction clear_display = nullptr;
  SaveDicomDecodeToFileFunction save_decode = nullptr;
  PrintDicomDecodeFunction print_decode = nullptr;
};

// The module's code in this process: the one place that knows how it comes in.
// On Windows it is a DLL; elsewhere it is linked in, and the program's own path
// stands for it.
// Freeing and loading it again makes it forget everything. Loading and freeing
// run code of the module, guarded; its message boxes are the caller's to
// answer.
class ModuleLibrary {
 public:
  // Loads nothing yet. `path` is that of DicomDecode.dll, absolute.
  explicit ModuleLibrary(std::filesystem::path path);
  ~ModuleLibrary();
  ModuleLibrary(const ModuleLibrary&) = delete;
  ModuleLibrary& operator=(const ModuleLibrary&) = delete;

  // Throws Failure, which says what is wrong with the file or its dictionaries;
  // nothing is loaded then.
  void Load();
  void Free();  // nothing when nothing is loaded

  const std::filesystem::path& path() const { return path_; }
  // Where the dictionaries are read from: beside the DLL; where the module is
  // linked in, beside the program or else in ../share/dicom-decode, and empty
  // when they are in neither.
  std::filesystem::path DictionaryFolder() const;
  // Valid while the library is loaded.
  const ModuleFunctions& functions() const { return functions_; }

 private:
  // Throws Failure, with the library freed, when one is not there.
  void ResolveFunctions();

  struct FreeLibraryOf {
    void operator()(void* library) const;
  };
  std::filesystem::path path_;
  std::unique_ptr<void, FreeLibraryOf> library_;
  ModuleFunctions functions_;
};

// Where the module is when nobody names another one: beside this program, or
// the program itself.
std::filesystem::path ModuleBesideProgram();

}  // namespace host

#endif  // HOST_MODULE_MODULE_LIBRARY_H_
