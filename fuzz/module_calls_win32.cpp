// The module's exports under their own names, from the real DLL: what is
// compiled against plugin/exports.h then calls it as a host does.
#include "plugin/exports.h"

namespace {

HMODULE library;

template <class Function>
Function Export(const char* name) {
  return reinterpret_cast<Function>(
      reinterpret_cast<void*>(::GetProcAddress(library, name)));
}

}  // namespace

namespace dicom {

bool LoadModule() {
  library = ::LoadLibraryA("DicomDecode.dll");
  return library != nullptr;
}
void UnloadModule() { ::FreeLibrary(library); }

}  // namespace dicom

void WINAPI RefreshDicomDecode(HWND host_window) {
  Export<RefreshDicomDecodeFunction>("RefreshDicomDecode")(host_window);
}

void WINAPI DicomDeRegisterParent(HWND host_window) {
  Export<DicomDeRegisterParentFunction>("DicomDeRegisterParent")(host_window);
}

std::uint32_t WINAPI GetDicomPacketList(HWND host_window, PacketListRow* rows,
                                        std::int32_t* first_index,
                                        std::uint32_t* row_count,
                                        std::uint32_t* first_available,
                                        std::uint32_t* last_available,
                                        std::uint32_t message_view,
                                        std::uint32_t live) {
  return Export<GetDicomPacketListFunction>("GetDicomPacketList")(
      host_window, rows, first_index, row_count, first_available,
      last_available, message_view, live);
}

void WINAPI DisplayDicomPacket(HWND host_window, HWND tree_window,
                               std::int32_t index,
                               const std::uint32_t* image_table,
                               HWND hex_window, std::uint32_t message_view) {
  Export<DisplayDicomPacketFunction>("DisplayDicomPacket")(
      host_window, tree_window, index, image_table, hex_window, message_view);
}

BOOL WINAPI ClearDicomDisplay(std::uint32_t unused, HWND tree_window,
                              HWND hex_window) {
  return Export<ClearDicomDisplayFunction>("ClearDicomDisplay")(
      unused, tree_window, hex_window);
}

BOOL WINAPI SaveDicomDecodeToFile(HWND owner) {
  return Export<SaveDicomDecodeToFileFunction>("SaveDicomDecodeToFile")(owner);
}
