#ifndef HOST_MODULE_MODULE_VERSION_H_
#define HOST_MODULE_MODULE_VERSION_H_

#include <string>

#include "host/module/module.h"

namespace host {

// What a person is asked for when something is wrong: the module's path and
// version, and the lines of each of its dictionaries. One line each, UTF-8.
// Throws Failure when the module does not tell its version.
std::string ModuleVersionText(Module& module);

}  // namespace host

#endif  // HOST_MODULE_MODULE_VERSION_H_
