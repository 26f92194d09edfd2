#ifndef HOST_MODULE_MODULE_H_
#define HOST_MODULE_MODULE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/module/guarded_call.h"
#include "host/module/message_box_answers.h"
#include "interface/host_interface.h"

namespace host {

// DicomDecode.dll, loaded, with its ten exports. Every call into it is guarded:
// what goes wrong inside comes back as a CallFailure. After a failure of
// DisplayDicomPacket the module refuses further displays until Reload().
// Message boxes that the module shows are answered and kept.
class Module {
 public:
  // `path` may be relative to the current directory. The dictionaries are read
  // from the DLL's own folder. Throws Failure.
  explicit Module(const std::wstring& path);
  ~Module();
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  // Frees the DLL and loads it again: the module then knows nothing of any host
  // window. Throws Failure.
  void Reload();

  // Differs after each Reload, by whomever.
  unsigned Generation() const { return generation_; }

  const std::wstring& Path() const { return path_; }  // absolute
  std::wstring Folder() const;                        // without backslash

  // The exports. The answer of a call that failed is not to be looked at.
  std::optional<CallFailure> Version(std::int32_t* version);
  // DicomRegisterParent and DicomPacketCaptureStart, as an analyzer calls them
  // for a new window.
  std::optional<CallFailure> RegisterParent(HWND host_window);
  std::optional<CallFailure> RefreshDecode(HWND host_window);
  std::optional<CallFailure> DeRegisterParent(HWND host_window);
  struct ListRequest {  // the arguments of GetDicomPacketList
    PacketListRow* rows = nullptr;
    std::int32_t first_index = 0;
    std::uint32_t row_count = 0;
    std::uint32_t first_available = 0;
    std::uint32_t last_available = 0;
    std::uint32_t message_view = 0;
    std::uint32_t live = 0;
    std::uint32_t answer = 0;
  };
  std::optional<CallFailure> PacketList(HWND host_window, ListRequest& request);
  std::optional<CallFailure> Display(HWND host_window, HWND tree,
                                     std::int32_t index,
                                     const std::uint32_t* image_table,
                                     HWND hex_window,
                                     std::uint32_t message_view);
  std::optional<CallFailure> ClearDisplay(HWND tree, HWND hex_window);

  // Message boxes since the last call.
  std::vector<MessageBoxText> TakeMessageBoxes() { return boxes_.Take(); }

 private:
  // Guards one call and answers the boxes that it shows.
  template <class Function>
  std::optional<CallFailure> Call(Function&& function) {
    const MessageBoxAnswers::Scope scope(boxes_);
    return Guarded(function);
  }
  void Load();
  void Free();
  void ResolveExports();

  std::wstring path_;
  unsigned generation_ = 0;
  HMODULE library_ = nullptr;
  MessageBoxAnswers boxes_;
  GetDicomDllVersionFunction get_version_ = nullptr;
  DicomRegisterParentFunction register_parent_ = nullptr;
  DicomPacketCaptureStartFunction capture_start_ = nullptr;
  RefreshDicomDecodeFunction refresh_ = nullptr;
  DicomDeRegisterParentFunction deregister_parent_ = nullptr;
  GetDicomPacketListFunction get_packet_list_ = nullptr;
  DisplayDicomPacketFunction display_ = nullptr;
  ClearDicomDisplayFunction clear_display_ = nullptr;
  SaveDicomDecodeToFileFunction save_ = nullptr;
  PrintDicomDecodeFunction print_ = nullptr;
};

}  // namespace host

#endif  // HOST_MODULE_MODULE_H_
