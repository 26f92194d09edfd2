#ifndef HOST_MODULE_MODULE_H_
#define HOST_MODULE_MODULE_H_

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "host/module/guarded_call.h"
#include "host/module/message_box_answers.h"
#include "host/module/module_library.h"
#include "host/rows/decoded_row.h"
#include "interface/host_interface.h"

namespace host {

// The windows that a decode is shown in.
struct DecodeWindows {
  HWND tree = nullptr;  // a tree view
  HWND hex = nullptr;   // any window whose text can be set
};

// The decode module, loaded. Every call into it is guarded: what goes wrong
// inside comes back as a CallFailure, and nothing of it reaches the caller
// otherwise. After a failure of Display the module refuses further displays
// until Reload(). Message boxes that the module shows are answered and kept.
// All calls come from the thread that owns the windows.
class Module {
 public:
  // `path` is that of DicomDecode.dll and may be relative to the current
  // directory. Throws Failure.
  explicit Module(const std::filesystem::path& path);
  ~Module();
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  // Loads the module anew: it then knows nothing of any host window. Throws
  // Failure; the module must not be called then but for another Reload().
  void Reload();

  // Differs after each Reload, by whomever.
  unsigned Generation() const { return generation_; }
  const std::filesystem::path& path() const { return library_.path(); }
  std::filesystem::path DictionaryFolder() const {
    return library_.DictionaryFolder();
  }

  // Major number in the upper 24 bits. Throws Failure.
  std::int32_t Version();

  // Makes a new host window known, as an analyzer does.
  std::optional<CallFailure> RegisterParent(HWND host_window);
  // Forgets what was read of the host window; the next list call begins anew.
  std::optional<CallFailure> RefreshDecode(HWND host_window);
  std::optional<CallFailure> DeRegisterParent(HWND host_window);

  // The arguments of GetDicomPacketList: what is asked for, and in the same
  // places what comes back. Not to be looked at when the call failed.
  struct ListRequest {
    ListKind list = ListKind::kPdus;
    bool live = false;              // the capture may still grow
    PacketListRow* rows = nullptr;  // room for as many as one call delivers
    std::int32_t first_index = 0;   // in and out
    std::uint32_t row_count = 0;    // in and out
    std::uint32_t first_available = 0;
    std::uint32_t last_available = 0;
    std::uint32_t answer = 0;  // the function's
  };
  std::optional<CallFailure> PacketList(HWND host_window, ListRequest& request);

  std::optional<CallFailure> Display(HWND host_window, RowRef row,
                                     const DecodeWindows& windows);
  // Empties both windows; needed while the module that filled them is loaded.
  std::optional<CallFailure> ClearDisplay(const DecodeWindows& windows);

  // Message boxes since the last call.
  std::vector<MessageBoxText> TakeMessageBoxes() { return boxes_.Take(); }

 private:
  // Guards one call and answers the boxes that it shows.
  template <class Function>
  std::optional<CallFailure> Call(Function&& function) {
    const MessageBoxAnswers::Scope scope(boxes_);
    return Guarded(function);
  }
  // Both as ModuleLibrary has them, with boxes answered.
  void Load();
  void Free();

  MessageBoxAnswers boxes_;
  ModuleLibrary library_;
  unsigned generation_ = 0;
};

}  // namespace host

#endif  // HOST_MODULE_MODULE_H_
