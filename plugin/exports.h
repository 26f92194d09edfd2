#ifndef PLUGIN_EXPORTS_H_
#define PLUGIN_EXPORTS_H_

#include <cstdint>

#include "interface/host_interface.h"

// The ten exported functions; host_interface.h says what each does for a host.
extern "C" {

std::int32_t WINAPI GetDicomDllVersion();
void WINAPI DicomRegisterParent(std::uint32_t parent);
void WINAPI DicomPacketCaptureStart(std::uint32_t parent);
void WINAPI RefreshDicomDecode(HWND host_window);
void WINAPI DicomDeRegisterParent(HWND host_window);

// Catches and reports every failure of the reading.
std::uint32_t WINAPI GetDicomPacketList(HWND host_window, PacketListRow* rows,
                                        std::int32_t* first_index,
                                        std::uint32_t* row_count,
                                        std::uint32_t* first_available,
                                        std::uint32_t* last_available,
                                        std::uint32_t message_view,
                                        std::uint32_t live);

// A failure that leaves the display reaches the host as the Win32 exception
// DICOM_DECODE_EXCEPTION with the failure's text: a C++ exception would end the
// process of a host that another compiler built.
void WINAPI DisplayDicomPacket(HWND host_window, HWND tree_window,
                               std::int32_t index,
                               const std::uint32_t* image_table,
                               HWND hex_window, std::uint32_t message_view);

BOOL WINAPI ClearDicomDisplay(std::uint32_t unused, HWND tree_window,
                              HWND hex_window);
BOOL WINAPI SaveDicomDecodeToFile(HWND owner);
BOOL WINAPI PrintDicomDecode(HWND owner, std::uint32_t unused);

}  // extern "C"

namespace dicom {

// Builds the module's one state, with the dictionaries of the current
// directory; false when they cannot be read. Run once at load, before any
// export.
bool LoadModule();

// Frees it at unload. Nothing is sent to any window.
void UnloadModule();

}  // namespace dicom

#endif  // PLUGIN_EXPORTS_H_
