#include <windows.h>

#include "plugin/exports.h"

// The dictionaries are read here and not by a static constructor: what a static
// constructor throws ends the host, while a FALSE makes LoadLibrary fail with
// ERROR_DLL_INIT_FAILED.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  switch (reason) {
    case DLL_PROCESS_ATTACH:
      ::DisableThreadLibraryCalls(instance);
      return dicom::LoadModule() ? TRUE : FALSE;
    case DLL_PROCESS_DETACH:
      dicom::UnloadModule();
      return TRUE;
    default:
      return TRUE;
  }
}
