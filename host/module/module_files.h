#ifndef HOST_MODULE_MODULE_FILES_H_
#define HOST_MODULE_MODULE_FILES_H_

#include <string>

#include "host/module/module.h"

namespace host {

// DicomDecode.dll in this program's own folder.
std::wstring ModuleBesideProgram();

// The module's path and version and the sizes of its dictionaries, one a line.
// Throws Failure when the module does not tell its version.
std::string ModuleVersionText(Module& module);

}  // namespace host

#endif  // HOST_MODULE_MODULE_FILES_H_
