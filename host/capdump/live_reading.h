#ifndef HOST_CAPDUMP_LIVE_READING_H_
#define HOST_CAPDUMP_LIVE_READING_H_

#include <functional>

#include "host/capdump/options.h"
#include "host/streams/capture_loader.h"

namespace host {

// Whether the capture comes from standard input.
bool IsPiped(const Options& options);

// Reads what there is and what comes, calling `look` whenever something may
// have changed: of a pipe until it has ended, of a file that grows until
// somebody ends the program. Then ends the capture. The loader was made to
// follow. Throws as CaptureLoader::Read() and `look` do.
void ReadLive(CaptureLoader& loader, bool is_pipe,
              const std::function<void()>& look);

}  // namespace host

#endif  // HOST_CAPDUMP_LIVE_READING_H_
