#ifndef HOST_TEXT_SYSTEM_ERROR_H_
#define HOST_TEXT_SYSTEM_ERROR_H_

#include <string>

namespace host {

// The system's sentence for one of its error codes (GetLastError, errno), in
// English and without a full stop, to stand in brackets: "Access is denied".
std::string SystemErrorText(unsigned long error);

}  // namespace host

#endif  // HOST_TEXT_SYSTEM_ERROR_H_
