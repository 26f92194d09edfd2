#ifndef HOST_PAGE_DATA_SECTION_H_
#define HOST_PAGE_DATA_SECTION_H_

#include <string>

#include "host/findings/scene.h"

namespace host {

// What the first messages of a connection carry, element by element, with all
// values: patients' data, for those who asked for them. HTML of a bounded
// length; empty where there is no message. Throws Failure when bytes cannot be
// read back.
std::string DataSection(const SceneConnection& at);

}  // namespace host

#endif  // HOST_PAGE_DATA_SECTION_H_
