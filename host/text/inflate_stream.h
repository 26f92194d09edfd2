#ifndef HOST_TEXT_INFLATE_STREAM_H_
#define HOST_TEXT_INFLATE_STREAM_H_

#include <zlib.h>

#include <string>

#include "host/text/failure.h"

namespace host {

// zlib's state of one decompression, given back at the end.
class InflateStream {
 public:
  // `window_bits` as inflateInit2() has them. Throws Failure with the sentence
  // when there is not enough memory.
  InflateStream(int window_bits, const std::string& no_memory) {
    if (inflateInit2(&state, window_bits) != Z_OK) throw Failure(no_memory);
  }
  ~InflateStream() { inflateEnd(&state); }
  InflateStream(const InflateStream&) = delete;
  InflateStream& operator=(const InflateStream&) = delete;

  z_stream state{};
};

}  // namespace host

#endif  // HOST_TEXT_INFLATE_STREAM_H_
