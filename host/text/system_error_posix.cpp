#include <cstring>

#include "host/text/system_error.h"

namespace host {

std::string SystemErrorText(unsigned long error) {
  return std::strerror(static_cast<int>(error));
}

}  // namespace host
