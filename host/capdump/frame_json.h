#ifndef HOST_CAPDUMP_FRAME_JSON_H_
#define HOST_CAPDUMP_FRAME_JSON_H_

#include <cstdint>

#include "host/capture/frame_names.h"
#include "host/text/json_object.h"

namespace host {

// The first and the last frame of something, by their numbers; in a capture of
// several files by those in their files, which are named beside them.
inline void AddFrames(const FrameNames& names, std::uint32_t first,
                      std::uint32_t last, JsonObject& object) {
  object.Number("first_frame", names.PlaceOf(first).number);
  object.Number("last_frame", names.PlaceOf(last).number);
  if (!names.HasSeveralFiles()) return;
  object.Text("first_file", names.FileOf(first));
  object.Text("last_file", names.FileOf(last));
}

}  // namespace host

#endif  // HOST_CAPDUMP_FRAME_JSON_H_
