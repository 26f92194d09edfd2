#ifndef HOST_CAPDUMP_PAGE_FILE_H_
#define HOST_CAPDUMP_PAGE_FILE_H_

#include <functional>
#include <string>

#include "host/capdump/report.h"

namespace host {

// Writes a page under this name, UTF-8, which has to end in .html or .htm: an
// older page of that name is replaced, and nobody's capture by mistake. The
// name is given to the page once it is whole; `write` hands it to the sink in
// pieces. Throws UsageError for another name, Failure when the file cannot be
// written.
void WritePageFile(const std::string& name,
                   const std::function<void(const Sink&)>& write);

}  // namespace host

#endif  // HOST_CAPDUMP_PAGE_FILE_H_
