#include "plugin/exports.h"

#include <exception>
#include <memory>
#include <string_view>

#include "dimse/dicom_dictionary.h"
#include "plugin/display_driver.h"
#include "plugin/host_context.h"
#include "plugin/list_driver.h"
#include "tree/tree_lines.h"

namespace dicom {
namespace {

constexpr std::int32_t kMajorVersion = 1;
constexpr std::int32_t kMinorVersion = 1;

// Everything that all host windows share.
struct ModuleState {
  DicomDictionary dictionary;
  HostContexts contexts;
  ListDriver list_driver{contexts};
  DisplayDriver display_driver{contexts, dictionary};
};

std::unique_ptr<ModuleState> module_state;

// The text of the failure that left the display, for as long as the host looks
// at it: the failure itself is gone by then.
char failure_text[256];

// Deliberate: the caption is one blank.
BOOL RefuseInThisVersion(HWND owner) {
  ::MessageBoxA(owner, "Not supported in this Version!", " ", MB_OK);
  return ::MessageBeep(0);
}

void KeepFailureText(const char* text) {
  const std::size_t kept =
      std::string_view(text).copy(failure_text, sizeof(failure_text) - 1);
  failure_text[kept] = '\0';
}

// False when a failure left the display; its text is then kept.
bool DisplayOrKeepFailure(const DisplayRequest& request) {
  try {
    module_state->display_driver.Display(request);
    return true;
  } catch (const std::exception& failure) {
    KeepFailureText(failure.what());
  }
  return false;
}

}  // namespace

bool LoadModule() {
  try {
    module_state = std::make_unique<ModuleState>();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void UnloadModule() { module_state.reset(); }

}  // namespace dicom

std::int32_t WINAPI GetDicomDllVersion() {
  return (dicom::kMajorVersion << 8) + dicom::kMinorVersion;
}

// Deliberate: both do nothing; a context comes with the first list call.
void WINAPI DicomRegisterParent(std::uint32_t) {}
void WINAPI DicomPacketCaptureStart(std::uint32_t) {}

void WINAPI RefreshDicomDecode(HWND host_window) {
  dicom::module_state->contexts.Remove(host_window);
}

void WINAPI DicomDeRegisterParent(HWND host_window) {
  dicom::module_state->contexts.Remove(host_window);
}

std::uint32_t WINAPI GetDicomPacketList(HWND host_window, PacketListRow* rows,
                                        std::int32_t* first_index,
                                        std::uint32_t* row_count,
                                        std::uint32_t* first_available,
                                        std::uint32_t* last_available,
                                        std::uint32_t message_view,
                                        std::uint32_t live) {
  return dicom::module_state->list_driver.List(
      {host_window, rows, first_index, row_count, first_available,
       last_available, message_view != 0, live != 0});
}

void WINAPI DisplayDicomPacket(HWND host_window, HWND tree_window,
                               std::int32_t index,
                               const std::uint32_t* image_table,
                               HWND hex_window, std::uint32_t message_view) {
  if (dicom::DisplayOrKeepFailure({{host_window, tree_window, image_table},
                                   hex_window,
                                   index,
                                   message_view != 0})) {
    return;
  }
  // Raised from the outermost frame, where nothing is left to be destroyed: the
  // frames below a structured exception are not unwound.
  const auto text = reinterpret_cast<ULONG_PTR>(dicom::failure_text);
  ::RaiseException(DICOM_DECODE_EXCEPTION, 0, 1, &text);
}

BOOL WINAPI ClearDicomDisplay(std::uint32_t, HWND tree_window,
                              HWND hex_window) {
  dicom::ClearTree(tree_window);
  return ::SetWindowTextA(hex_window, "");
}

BOOL WINAPI SaveDicomDecodeToFile(HWND owner) {
  return dicom::RefuseInThisVersion(owner);
}

BOOL WINAPI PrintDicomDecode(HWND owner, std::uint32_t) {
  return dicom::RefuseInThisVersion(owner);
}
